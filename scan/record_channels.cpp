#include "scan/record_channels.h"

#include "platform/message_queue.h"
#include "platform/window.h"
#include "shell/shell_state.h"

namespace {

constexpr int WriteTries = 3;
constexpr DWORD WriteWait = 10;  // ms

// The queue holds one record, the newest. A consumer that never reads must not stop the next scan, so what
// lies there is taken out; the other reader's thread can fill the queue again before the write.
bool QueueRecord(const DecodeRecord& record) {
    const HANDLE writer = ShellState.QueueWriter;
    if (writer == nullptr) {
        return false;
    }
    for (int tries = 0; tries < WriteTries; ++tries) {
        DecodeRecord unread;
        DWORD read = 0;
        DWORD flags = 0;
        ReadMsgQueue(ShellState.QueueReader, &unread, sizeof unread, &read, 0, &flags);
        if (WriteMsgQueue(writer, const_cast<DecodeRecord*>(&record), sizeof record, WriteWait, 0)) {
            return true;
        }
    }
    return false;
}

}  // namespace

void SendRecord(const DecodeRecord& record, bool withEvent, bool withMessages) {
    if (!QueueRecord(record)) {
        return;
    }
    if (withEvent) {
        EventModify(ShellState.DecodeEventHandle, EVENT_SET);
    }
    if (withMessages) {
        const HWND sender = ShellState.MainWindow;
        const UINT decode = ShellState.MsgDecode;
        COPYDATASTRUCT copy{};
        copy.dwData = decode;
        copy.cbData = sizeof record;
        copy.lpData = const_cast<DecodeRecord*>(&record);
        SendMessageW(HWND_BROADCAST, WM_COPYDATA, reinterpret_cast<WPARAM>(sender),
                     reinterpret_cast<LPARAM>(&copy));
        SendMessageW(HWND_BROADCAST, decode, record.source, 0);
    }
}
