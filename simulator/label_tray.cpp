#include "simulator/label_tray.h"

namespace readers {

void LabelTray::Consume() {
    if (!Hold && !Waiting.empty()) {
        Waiting.pop_front();
    }
}

bool LabelTray::Command(std::string_view word, std::string_view rest, std::string& problem, bool& added) {
    added = false;
    if (word == "clear") {
        Waiting.clear();
        return true;
    }
    if (word == "hold") {
        if (rest != "on" && rest != "off") {
            problem = "hold on|off";
        }
        Hold = rest == "on";
        return true;
    }
    if (word != "label") {
        return false;
    }
    const auto words = WordsOf(rest);
    const auto type = words.empty() ? std::nullopt : TypeOf(words.front());
    auto data = BytesFromArgument(RestAfter(rest, 1));
    if (!type) {
        problem = "label TYPE DATA: no such type on this reader";
    } else if (!data) {
        problem = "label TYPE DATA: the data cannot be read";
    } else {
        Waiting.push_back({*type, std::move(*data)});
        added = true;
    }
    return true;
}

std::string LabelTray::State() const {
    return "labels=" + std::to_string(Waiting.size()) + (Hold ? " hold=on" : " hold=off");
}

}  // namespace readers
