// The words behind the program's name.
#pragma once

#include <string_view>

struct CommandLine {
    bool Settings = false;     // "--settings": the sheet opens whatever the readers answer
    bool Verbose = false;      // "--verbose": the diary's debug lines
    bool Version = false;      // "--version"
    bool Help = false;         // "--help"
    std::string_view Unknown;  // the first word that is none of these
};

// Reads words between blanks. What it returns lives as long as the text.
CommandLine ReadCommandLine(std::string_view text);
