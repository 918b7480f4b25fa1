// The lines that programs send each other: one JSON object a line, as docs/window-messages.md has it. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/window.h"

namespace layer {

// The one private message that other programs may send: a second start asks the first for its settings.
inline constexpr UINT OpenSettingsRequest = WM_USER + 4;

// A question for a window, or a message for one.
struct WindowLine {
    enum class Kind { Find, Message } What = Kind::Message;
    // Which windows: a number, or those that the names fit; all top-level ones when nothing is said.
    std::uint64_t Window = 0;
    std::optional<std::u16string> ClassName, Title;

    UINT Message = 0;     // WM_COPYDATA, OpenSettingsRequest, or 0 for a registered one
    std::u16string Name;  // of a registered message
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    std::uint64_t DataNumber = 0;  // dwData of WM_COPYDATA
    std::u16string DataName;       // the registered message of that number, if there is one
    std::vector<BYTE> Data;        // its bytes
};

// The line with its end.
std::string WriteLine(const WindowLine& line);
// Nothing, and the reason, for anything that is not such a line.
std::optional<WindowLine> ReadLine(std::string_view text, std::string& reason);

struct AnswerLine {
    std::uint64_t Window = 0;  // of a question
    std::int64_t Result = 0;   // of a message
    std::string Refusal;       // not empty: the message is refused
};
std::string WriteAnswer(const AnswerLine& answer, WindowLine::Kind kind);
// Programs may answer anything; what is not there, or makes no sense, is 0.
AnswerLine ReadAnswer(std::string_view text);

}  // namespace layer
