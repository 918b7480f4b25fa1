#include "platform/linux/windows/listener.h"
#include "platform/linux/windows/registered_messages.h"
#include "platform/linux/windows/user_window.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

LRESULT SendData(WindowObject& window, const WindowLine& line) {
    // The bytes are the receiver's for the time of the call, and it may write into them.
    std::vector<BYTE> bytes = line.Data;
    const UINT number = RegisteredNumber(line.DataName);
    COPYDATASTRUCT data{};
    data.dwData = number != 0 ? number : static_cast<ULONG_PTR>(line.DataNumber);
    data.cbData = static_cast<DWORD>(bytes.size());
    data.lpData = bytes.empty() ? nullptr : bytes.data();
    // A window number of another program means nothing here.
    return window.Message(WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
}

}  // namespace

AnswerLine DeliverLine(const WindowLine& line) {
    AnswerLine answer;
    const UINT message = line.Message != 0 ? line.Message : RegisteredNumber(line.Name);
    if (message == 0) {
        // No window of this program waits for a name that the program has not registered.
        return answer;
    }
    if (message == OpenSettingsRequest && line.Window == 0 && !line.ClassName) {
        answer.Refusal = "this message needs a window";
        return answer;
    }
    for (const HWND handle : OwnTopLevelWindows(line.ClassName, line.Title)) {
        const WindowPtr window = FindWindowObject(handle);
        if (window == nullptr ||
            (line.Window != 0 && line.Window != reinterpret_cast<std::uintptr_t>(handle))) {
            continue;
        }
        if (message == WM_COPYDATA) {
            answer.Result = SendData(*window, line);
        } else if (message != OpenSettingsRequest || dynamic_cast<UserWindow*>(window.get()) != nullptr) {
            answer.Result = window->Message(message, line.wParam, line.lParam);
        }
    }
    return answer;
}

}  // namespace layer
