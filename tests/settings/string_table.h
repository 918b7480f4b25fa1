// The texts of the string table, read from the resource script itself.
#pragma once

#include <map>
#include <string>

// Number to text of every string in the script, whose numbers are defined in the header.
std::map<unsigned, std::string> ReadStringTable(const std::string& scriptPath, const std::string& headerPath);
