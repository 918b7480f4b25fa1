#include "app/command_line.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::array<std::pair<std::string_view, bool CommandLine::*>, 4> Options{{
    {"--settings", &CommandLine::Settings},
    {"--verbose", &CommandLine::Verbose},
    {"--version", &CommandLine::Version},
    {"--help", &CommandLine::Help},
}};

}  // namespace

CommandLine ReadCommandLine(std::string_view text) {
    CommandLine line;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
        const std::string_view word = text.substr(0, text.find_first_of(" \t"));
        if (word.empty()) {
            return line;
        }
        text.remove_prefix(word.size());
        const auto* option = std::ranges::find(Options, word, &decltype(Options)::value_type::first);
        if (option != Options.end()) {
            line.*option->second = true;
        } else if (line.Unknown.empty()) {
            line.Unknown = word;
        }
    }
}
