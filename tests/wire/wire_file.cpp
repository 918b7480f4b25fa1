#include "tests/wire/wire_file.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>

namespace {

using Words = std::vector<std::string>;

// Texts in quotes and other words, up to a comment.
Words Split(const std::string& line) {
    Words words;
    std::size_t end = 0;
    for (std::size_t at; (at = line.find_first_not_of(" \t", end)) != std::string::npos && line[at] != '#';) {
        end = std::min(line.find_first_of(" \t", at), line.size());
        if (line[at] == '"') {
            for (end = at + 1; end < line.size() && line[end] != '"'; ++end)
                end += line[end] == '\\' ? 1 : 0;
            if (end++ >= line.size())
                throw std::runtime_error("a text has no end");
        }
        words.push_back(line.substr(at, end - at));
    }
    return words;
}

std::string Unescape(const std::string& quoted) {
    std::string text;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        if (quoted[i] != '\\') {
            text += quoted[i];
            continue;
        }
        const char c = quoted[++i];
        text += c == 'r' ? '\r' : c == 'n' ? '\n' : c == '0' ? '\0' : c;
    }
    return text;
}

DWORD Number(const std::string& word, int base = 10) {
    std::size_t used = 0;
    const unsigned long value = std::stoul(word, &used, base);
    if (used != word.size())
        throw std::runtime_error("not a number: " + word);
    return static_cast<DWORD>(value);
}

bool On(const std::string& word) {
    if (word != "on" && word != "off")
        throw std::runtime_error("neither on nor off: " + word);
    return word == "on";
}

// `~ 50ms`, `~ 2000..2100ms`
void ReadTime(const std::string& word, WireStep& step) {
    std::string text = word;
    if (text.size() < 3 || text.substr(text.size() - 2) != "ms")
        throw std::runtime_error("not a time: " + word);
    text.resize(text.size() - 2);
    const std::size_t dots = text.find("..");
    step.Least = Number(text.substr(0, dots));
    step.Most = dots == std::string::npos ? step.Least : Number(text.substr(dots + 2));
    step.Timed = true;
}

WireStep ReadAct(char sign, const Words& words) {
    WireStep step;
    std::string text(1, sign);
    for (std::size_t i = 1; i < words.size(); ++i)
        text += " " + words[i];
    for (const WireActForm& form : WireActForms) {
        if (text != form.Words && (form.Value == WireActForm::None || !text.starts_with(form.Words + " ")))
            continue;
        step.Act = form.Act;
        if (form.Value == WireActForm::OnOff)
            step.Value = On(words.at(2));
        else if (form.Value != WireActForm::None)
            step.Value = words.at(2) == "max"
                             ? MAXDWORD
                             : Number(words[2], form.Value == WireActForm::Decimal ? 10 : 16);
        return step;
    }
    if (sign != '<' && sign != '>')
        throw std::runtime_error("unknown act: " + text);
    step.Act = sign == '<' ? WireAct::Receive : WireAct::Write;
    step.Bytes = ReadWireBytes(words, 1);
    return step;
}

// `<`, or `2<` for another port.
bool IsSign(const std::string& word) {
    const bool numbered = word.size() == 2 && std::isdigit(static_cast<unsigned char>(word[0]));
    return word.size() == 1u + numbered && std::string("<>!^@~").find(word.back()) != std::string::npos;
}

// A line's commands and acts: `a b; c d, e > 01 < 02` is a b / c d / c e / > 01 / < 02.
std::vector<Words> Parts(const Words& line) {
    std::vector<Words> parts;
    bool open = false;
    for (std::string word : line) {
        const bool ends = word.back() == ',' || word.back() == ';';
        const char end = ends ? word.back() : ' ';
        if (ends)
            word.pop_back();
        if (!open || IsSign(word))
            parts.emplace_back();
        if (!word.empty())
            parts.back().push_back(word);
        open = !ends;
        if (end == ',') {
            parts.push_back({Words(parts.back())[0]});
            open = true;
        }
    }
    return parts;
}

class Reader {
  public:
    explicit Reader(std::string path) : path_(std::move(path)) {}

    std::vector<WireCase> Read() {
        std::ifstream file(path_);
        if (!file)
            throw std::runtime_error(path_ + ": cannot be read");
        std::string text;
        for (line_ = 1; std::getline(file, text); ++line_) {
            try {
                TakeLine(Split(text));
            } catch (const std::exception& problem) {
                throw std::runtime_error(path_ + ":" + std::to_string(line_) + ": " + problem.what());
            }
        }
        EndWait();
        return cases_;
    }

  private:
    void TakeLine(const Words& words) {
        if (words.empty())
            return;
        if (!IsSign(words[0]) && words[0] != "do")
            defining_.clear();
        if (!defining_.empty()) {
            named_[defining_].push_back(words);
        } else if (words[0] == "case") {
            EndWait();
            Begin(words);
        } else {
            for (const Words& part : Parts(words))
                TakePart(part);
        }
    }

    void TakePart(const Words& words) {
        if (words[0] == "do") {
            for (DWORD times = words.size() > 2 ? Number(words[2]) : 1; times > 0; --times) {
                for (const auto& line : named_.at(words.at(1)))
                    TakeLine(line);
            }
            return;
        }
        if (!IsSign(words[0]) || words[0] == "~")
            EndWait();
        if (!IsSign(words[0])) {
            Command(words);
        } else if (words[0] == "~") {
            wait_.emplace().Line = line_;
            ReadTime(words.at(1), *wait_);
        } else {
            WireStep step = ReadAct(words[0].back(), words);
            step.Port = words[0].size() == 2 ? words[0][0] - '0' : port_;
            step.Line = line_;
            if (wait_) {
                step.Timed = true;
                step.Least = wait_->Least;
                step.Most = wait_->Most;
                wait_.reset();
            }
            AddStep(step);
        }
    }

    void Begin(const Words& words) {
        WireCase added;
        added.File = path_;
        added.Line = line_;
        for (std::size_t i = 1; i < words.size(); ++i)
            added.Name += (i > 1 ? "_" : "") + words[i];
        std::erase_if(added.Name,
                      [](char c) { return c != '_' && !std::isalnum(static_cast<unsigned char>(c)); });
        added.Commands = common_;
        cases_.push_back(added);
    }

    void Command(const Words& words) {
        if (words[0] == "steps") {
            defining_ = words.at(1);
            named_[defining_].clear();
        } else if (words[0] == "port") {
            port_ = static_cast<int>(Number(words.at(1)));
        } else {
            Commands().push_back({words, {}, line_});
        }
    }

    std::vector<WireCommand>& Commands() { return cases_.empty() ? common_ : cases_.back().Commands; }

    void AddStep(const WireStep& step) {
        if (Commands().empty())
            throw std::runtime_error("an act without a call");
        Commands().back().Steps.push_back(step);
    }

    // A time with nothing after it: nothing happens for so long.
    void EndWait() {
        if (wait_)
            AddStep(*wait_);
        wait_.reset();
    }

    const std::string path_;
    int line_ = 0;
    int port_ = 1;
    std::vector<WireCommand> common_;
    std::vector<WireCase> cases_;
    std::optional<WireStep> wait_;
    std::string defining_;  // the steps that are being named
    std::map<std::string, std::vector<Words>> named_;
};

}  // namespace

std::vector<BYTE> ReadWireBytes(const std::vector<std::string>& words, std::size_t first) {
    std::vector<BYTE> bytes;
    for (std::size_t i = first; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word[0] == '"') {
            const std::string text = Unescape(word);
            bytes.insert(bytes.end(), text.begin(), text.end());
        } else if (word == "sum") {
            unsigned sum = 0;
            for (const BYTE byte : bytes)
                sum += byte;
            sum = 0x10000 - sum % 0x10000;
            bytes.push_back(static_cast<BYTE>(sum >> 8));
            bytes.push_back(static_cast<BYTE>(sum));
        } else {
            const std::size_t star = word.find('*');
            const DWORD byte = Number(word.substr(0, star), 16);
            const DWORD count = star == std::string::npos ? 1 : Number(word.substr(star + 1));
            if (byte > 0xFF)
                throw std::runtime_error("not a byte: " + word);
            bytes.insert(bytes.end(), count, static_cast<BYTE>(byte));
        }
    }
    return bytes;
}

std::vector<WireCase> ReadWireFile(const std::string& path) {
    return Reader(path).Read();
}
