// A terminal folder of its own for one test.
#pragma once

#include <string>
#include <string_view>

class TemporaryTerminal {
  public:
    // Makes the folder, lays it out and makes it the one in use, here and (by the environment) in every
    // program that is started.
    TemporaryTerminal();
    // Removes it with all that lies in it.
    ~TemporaryTerminal();
    TemporaryTerminal(const TemporaryTerminal&) = delete;
    TemporaryTerminal& operator=(const TemporaryTerminal&) = delete;

    const std::string& Folder() const { return folder_; }
    // The host path of something in the folder.
    std::string Path(std::string_view name) const { return folder_ + "/" + std::string(name); }

  private:
    std::string folder_;
};

// A file's whole content; empty when there is none.
std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, std::string_view content);
