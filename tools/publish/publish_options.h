// What vantrel-publish is told by its configuration file (TOML).
#pragma once

#include <cstdint>
#include <string>

struct PublishOptions {
    std::string Terminal;  // its name in topics and messages; the machine's by default
    std::string Topic;     // below it: scans, status; "vantrel/NAME" by default
    std::string Host = "localhost";
    int Port = 0;        // 1883, or 8883 with certificates
    int KeepAlive = 30;  // seconds after which a silent connection is given up
    std::string User, PasswordFile;
    std::string AuthorityFile, CertificateFile, KeyFile;  // TLS
    std::string Store;                  // the SQLite file; in the terminal folder by default
    std::int64_t MostBytes = 64 << 20;  // of it
};

// Reads the file; what it leaves out has its default. Empty, or what is wrong, with the line.
std::string ReadPublishOptions(const std::string& file, PublishOptions& options);
