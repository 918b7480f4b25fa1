// Reads the files of wire conversations; README.md tells what they hold.
#pragma once

#include <string>
#include <vector>

#include "tests/support/conversation.h"

struct WireCommand {
    std::vector<std::string> Words;  // words, and texts in quotes with the quotes
    std::vector<WireStep> Steps;     // what is to happen on the wires meanwhile
    int Line = 0;
};

struct WireCase {
    std::string File, Name;
    int Line = 0;
    std::vector<WireCommand> Commands;  // those before the file's first case among them
};

// All cases of the file; throws std::runtime_error with file and line for what it cannot read.
std::vector<WireCase> ReadWireFile(const std::string& path);

// Bytes of words: hexadecimal bytes, `FF*30`, "text" with \r \n \0 \\ \", and `sum` for the checksum that a
// scan engine's packet of the bytes before has.
std::vector<BYTE> ReadWireBytes(const std::vector<std::string>& words, std::size_t first);
