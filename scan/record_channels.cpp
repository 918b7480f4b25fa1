#include "scan/record_channels.h"

#include "link/reading.h"
#include "platform/message_queue.h"
#include "platform/window.h"
#include "shell/log.h"
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
        if (ReadMsgQueue(ShellState.QueueReader, &unread, sizeof unread, &read, 0, &flags)) {
            Log(LogPriority::Info, TEXT("a record that nobody has taken was replaced"));
        }
        if (WriteMsgQueue(writer, const_cast<DecodeRecord*>(&record), sizeof record, WriteWait, 0)) {
            return true;
        }
    }
    return false;
}

bool PutRecord(const DecodeRecord& record, bool withEvent) {
    const ReadingStep step;
    if (!step || !QueueRecord(record)) {
        return false;
    }
    if (withEvent) {
        EventModify(ShellState.DecodeEventHandle, EVENT_SET);
    }
    return true;
}

}  // namespace

void SendRecord(const DecodeRecord& record, bool withEvent, bool withMessages) {
    if (!PutRecord(record, withEvent)) {
        if (ReadingLasts()) {
            Log(LogPriority::Warning, TEXT("a record found no room in the queue"));
        }
        return;
    }
    if (withMessages && ReadingLasts()) {
        const HWND sender = ShellState.MainWindow;
        const UINT decode = ShellState.MsgDecode;
        COPYDATASTRUCT copy{};
        copy.dwData = decode;
        copy.cbData = sizeof record;
        copy.lpData = const_cast<DecodeRecord*>(&record);
        SendMessageW(HWND_BROADCAST, WM_COPYDATA, reinterpret_cast<WPARAM>(sender),
                     reinterpret_cast<LPARAM>(&copy));
        if (ReadingLasts()) {
            SendMessageW(HWND_BROADCAST, decode, record.source, 0);
        }
    }
}
