#include "tests/e2e/readers.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/e2e/program.h"

namespace {

bool Contains(const std::string& line, std::string_view text) {
    return line.find(text) != std::string::npos;
}

}  // namespace

Readers::Readers(const std::vector<std::string>& options) {
    std::vector<std::string> words = {"--terminal", std::getenv("VANTREL_TERMINAL")};
    words.insert(words.end(), options.begin(), options.end());
    process_ = StartProgram("vantrel-readers", words);
    if (!Saw("ready ")) {
        ADD_FAILURE() << "the simulated readers do not start";
    }
}

bool Readers::TakeLine(int milliseconds) {
    auto line = process_->ReadLine(milliseconds);
    if (!line) {
        return false;
    }
    lines_.push_back(std::move(*line));
    return true;
}

std::vector<std::string> Readers::Command(const std::string& command) {
    while (TakeLine(0)) {
    }
    const std::size_t first = lines_.size();
    process_->WriteLine(command);
    const Moment until = In(5000);
    while (TakeLine(LeftUntil(until))) {
        const std::string& line = lines_.back();
        if (line == "ok") {
            return {lines_.begin() + static_cast<std::ptrdiff_t>(first), lines_.end() - 1};
        }
        if (line.starts_with("error ")) {
            break;
        }
    }
    ADD_FAILURE() << "readers: " << command << ": " << (lines_.empty() ? "no answer" : lines_.back());
    return {};
}

bool Readers::Saw(std::string_view text, int milliseconds) {
    const Moment until = In(milliseconds);
    for (std::size_t at = from_; at < lines_.size() || TakeLine(LeftUntil(until)); ++at) {
        if (Contains(lines_[at], text)) {
            return true;
        }
    }
    return false;
}

int Readers::Count(std::string_view text) {
    while (TakeLine(0)) {
    }
    return static_cast<int>(std::count_if(lines_.begin() + static_cast<std::ptrdiff_t>(from_), lines_.end(),
                                          [&](const std::string& line) { return Contains(line, text); }));
}

void Readers::Forget() {
    while (TakeLine(0)) {
    }
    from_ = lines_.size();
}

std::string Readers::Log() const {
    std::string text;
    for (const std::string& line : lines_) {
        text += line + "\n";
    }
    return text;
}
