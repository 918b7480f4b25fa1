// Any bytes as a line, or an answer, from another program's socket: only messages that others may send are
// taken, with no more bytes than were sent, and what is taken means the same when it is written and read
// again.
#include "platform/linux/windows/window_message.h"
#include "tests/fuzz/require.h"

using layer::WindowLine;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    std::string reason;
    const auto line = layer::ReadLine(text, reason);
    Require(line.has_value() == reason.empty());
    if (!line) {
        const layer::AnswerLine refused{.Refusal = reason};
        Require(layer::WriteAnswer(refused, WindowLine::Kind::Message).starts_with("{\"error\":"));
    } else {
        const bool message = line->What == WindowLine::Kind::Message;
        Require(!message || line->Message == WM_COPYDATA || line->Message == layer::OpenSettingsRequest ||
                (line->Message == 0 && !line->Name.empty()));
        Require(line->Data.size() <= size * 3 / 4 && line->Name.size() <= size);
        const std::string written = layer::WriteLine(*line);
        Require(written.find('\n') == written.size() - 1);
        const auto again = layer::ReadLine(written, reason);
        Require(again && again->What == line->What && again->Message == line->Message);
        Require(again->ClassName == line->ClassName && again->Title == line->Title);
        if (message) {
            Require(again->Window == line->Window && again->Name == line->Name);
            Require(again->wParam == line->wParam && again->lParam == line->lParam);
        }
        if (line->Message == WM_COPYDATA) {
            Require(again->Data == line->Data && again->DataNumber == line->DataNumber);
            Require(again->DataName == line->DataName);
        }
    }
    const layer::AnswerLine answer = layer::ReadAnswer(text);
    const auto same =
        layer::ReadAnswer(layer::WriteAnswer({.Result = answer.Result}, WindowLine::Kind::Message));
    Require(same.Result == answer.Result && same.Window == 0);
    return 0;
}
