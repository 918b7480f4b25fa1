// SendMessageW: to a window of this program, to one of another program, to all.
#include <atomic>
#include <memory>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/window_object.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

// The most that a line takes once the bytes are written in base 64.
constexpr DWORD MostData = 90 * 1024;

// The message as it travels; false for one that does not leave the program.
bool MakeLine(UINT message, WPARAM wParam, LPARAM lParam, WindowLine& line) {
    line.wParam = wParam;
    if (message == WM_COPYDATA) {
        const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        if (data == nullptr || data->cbData > MostData || (data->cbData != 0 && data->lpData == nullptr)) {
            return false;
        }
        line.Message = WM_COPYDATA;
        line.DataNumber = data->dwData;
        line.DataName = RegisteredName(static_cast<UINT>(data->dwData));
        const auto* bytes = static_cast<const BYTE*>(data->lpData);
        line.Data.assign(bytes, bytes + data->cbData);
        return true;
    }
    line.lParam = lParam;
    if (message == OpenSettingsRequest) {
        line.Message = message;
        return true;
    }
    line.Name = RegisteredName(message);
    return !line.Name.empty();
}

LRESULT SendToOther(const RemoteWindow& window, UINT message, WPARAM wParam, LPARAM lParam) {
    WindowLine line;
    line.Window = window.Window;
    if (!MakeLine(message, wParam, lParam, line)) {
        return 0;
    }
    return static_cast<LRESULT>(ReadAnswer(AskProgram(window.Program, WriteLine(line), LongestSend)).Result);
}

// This program's own windows get a broadcast too, and count as one program more: when the main thread has not
// come to the last one yet, they are left out. What rings when they have it, or null.
std::shared_ptr<Waker> DeliverHere(const WindowLine& line) {
    static std::atomic<bool> owing{false};
    if (OnMainThread()) {
        DeliverLine(line);
        return nullptr;
    }
    if (owing.exchange(true)) {
        return nullptr;
    }
    auto done = std::make_shared<Waker>();
    PostToMainThread([line, done] {
        owing = false;
        DeliverLine(line);
        done->Wake();
    });
    return done;
}

LRESULT Broadcast(UINT message, WPARAM wParam, LPARAM lParam) {
    WindowLine line;
    if (message == OpenSettingsRequest || !MakeLine(message, wParam, lParam, line)) {
        return FALSE;
    }
    const auto own = DeliverHere(line);
    AskOtherPrograms(
        WriteLine(line), LongestSend, [](const auto&, const auto&) { return false; },
        own != nullptr ? own->Number() : -1);
    return TRUE;
}

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

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    layer::ParkAtEnd();
    layer::RemoteWindow other;
    LRESULT result;
    if (window == HWND_BROADCAST) {
        result = layer::Broadcast(message, wParam, lParam);
    } else if (layer::FindRemoteWindow(window, other)) {
        result = layer::SendToOther(other, message, wParam, lParam);
    } else {
        return layer::OnMain([=] { return layer::Send(window, message, wParam, lParam); });
    }
    layer::ParkAtEnd();
    return result;
}
