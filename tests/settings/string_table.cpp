#include "tests/settings/string_table.h"

#include <fstream>
#include <regex>

namespace {

std::map<std::string, unsigned> ReadNumbers(const std::string& path) {
    std::map<std::string, unsigned> numbers;
    std::ifstream file(path);
    const std::regex define(R"(#define (\w+) (\d+))");
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (std::regex_search(line, match, define))
            numbers[match[1]] = static_cast<unsigned>(std::stoul(match[2]));
    }
    return numbers;
}

}  // namespace

std::map<unsigned, std::string> ReadStringTable(const std::string& scriptPath,
                                                const std::string& headerPath) {
    const std::map<std::string, unsigned> numbers = ReadNumbers(headerPath);
    std::map<unsigned, std::string> texts;
    std::ifstream file(scriptPath);
    const std::regex entry(R"re(^\s*(\w+)(?: \+ (\d+))?\s+"(.*)"\s*$)re");
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("STRINGTABLE"))
            inside = true;
        else if (line.starts_with("END"))
            inside = false;
        std::smatch match;
        if (!inside || !std::regex_match(line, match, entry))
            continue;
        const auto number = numbers.find(match[1]);
        if (number == numbers.end())
            continue;
        const unsigned offset = match[2].matched ? static_cast<unsigned>(std::stoul(match[2])) : 0;
        texts[number->second + offset] = match[3];
    }
    return texts;
}
