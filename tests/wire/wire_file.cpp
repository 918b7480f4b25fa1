#include "tests/wire/wire_file.h"

#include <cctype>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>

namespace {

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> words;
    std::size_t i = 0;
    while (i < line.size() && line[i] != '#') {
        if (std::isspace(static_cast<unsigned char>(line[i]))) {
            ++i;
            continue;
        }
        std::string word(1, line[i++]);
        if (word == "\"") {
            while (i < line.size() && line[i] != '"') {
                if (line[i] == '\\' && i + 1 < line.size())
                    word += line[i++];
                word += line[i++];
            }
            if (i++ >= line.size())
                throw std::runtime_error("a text has no end");
            word += '"';
        } else {
            while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i])))
                word += line[i++];
        }
        words.push_back(word);
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

WireStep ReadAct(char sign, const std::vector<std::string>& words) {
    WireStep step;
    const std::string what = words.size() > 1 ? words[1] : "";
    const std::string value = words.size() > 2 ? words[2] : "";
    if (sign == '<') {
        step.Act = WireAct::Receive;
        step.Bytes = ReadWireBytes(words, 1);
    } else if (sign == '>' && what == "fails") {
        step.Act = WireAct::FailWrite;
    } else if (sign == '>') {
        step.Act = WireAct::Write;
        step.Bytes = ReadWireBytes(words, 1);
    } else if (sign == '!' && (what == "break" || what == "unplugged")) {
        step.Act = what == "break" ? WireAct::ReceiveBreak : WireAct::Unplug;
    } else if (sign == '^' && (what == "rts" || what == "dtr" || what == "break")) {
        step.Act = what == "rts" ? WireAct::Rts : what == "dtr" ? WireAct::Dtr : WireAct::LineBreak;
        step.Value = On(value);
    } else if (sign == '@' && what == "rate") {
        step.Act = WireAct::Rate;
        step.Value = Number(value);
    } else if (sign == '@' && what == "purge") {
        step.Act = WireAct::Purge;
        step.Value = Number(value);
    } else if (sign == '@' && what == "interval") {
        step.Act = WireAct::Interval;
        step.Value = value == "max" ? MAXDWORD : Number(value);
    } else if (sign == '@' && what == "mask") {
        step.Act = WireAct::Mask;
        step.Value = Number(value, 16);
    } else if (sign == '@' && what == "open") {
        step.Act = value == "fails" ? WireAct::FailOpen : WireAct::Open;
    } else if (sign == '@' && what == "close") {
        step.Act = WireAct::Close;
    } else {
        throw std::runtime_error(std::string("unknown act: ") + sign + " " + what);
    }
    return step;
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
    void TakeLine(std::vector<std::string> words) {
        if (words.empty())
            return;
        int port = port_;
        std::string first = words[0];
        if (first.size() == 2 && std::isdigit(static_cast<unsigned char>(first[0]))) {
            port = first[0] - '0';
            first.erase(0, 1);
        }
        const bool act = first.size() == 1 && std::string("<>!^@").find(first) != std::string::npos;
        if (!act && first != "~" && first != "do") {
            defining_.clear();
        } else if (!defining_.empty()) {
            named_[defining_].push_back(words);
            return;
        }
        if (first == "do") {
            for (DWORD times = words.size() > 2 ? Number(words[2]) : 1; times > 0; --times) {
                for (const auto& line : named_.at(words.at(1)))
                    TakeLine(line);
            }
        } else if (first == "~") {
            EndWait();
            WireStep wait;
            ReadTime(words.at(1), wait);
            wait.Line = line_;
            wait_ = wait;
        } else if (act) {
            WireStep step = ReadAct(first[0], words);
            step.Port = port;
            step.Line = line_;
            if (wait_) {
                step.Timed = true;
                step.Least = wait_->Least;
                step.Most = wait_->Most;
                wait_.reset();
            }
            AddStep(step);
        } else {
            EndWait();
            Command(words);
        }
    }

    void Command(const std::vector<std::string>& words) {
        if (words[0] == "case") {
            WireCase added;
            added.File = path_;
            added.Line = line_;
            for (std::size_t i = 1; i < words.size(); ++i)
                added.Name += (i > 1 ? "_" : "") + words[i];
            std::erase_if(added.Name,
                          [](char c) { return c != '_' && !std::isalnum(static_cast<unsigned char>(c)); });
            added.Commands = common_;
            cases_.push_back(added);
        } else if (words[0] == "steps") {
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
    std::map<std::string, std::vector<std::vector<std::string>>> named_;
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
