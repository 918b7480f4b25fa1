// A consumer of the message queue: waits for the event, then takes the record.
#include <array>
#include <cstdio>

#include "platform/kernel.h"
#include "tools/record_json.h"
#include "tools/watch.h"

namespace {

// Prints what lies in the queue and counts it; false when it cannot be written.
bool PrintRecords(HANDLE queue, DWORD& seen) {
    std::array<BYTE, RecordSize> record;
    DWORD read = 0;
    DWORD flags = 0;
    while (ReadMsgQueue(queue, record.data(), RecordSize, &read, 0, &flags)) {
        if (!PrintLine(RecordJson("event", std::span(record).first(read)))) {
            return false;
        }
        ++seen;
    }
    return true;
}

}  // namespace

int WatchEvent(const WatchOptions& options) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, TEXT("DecodeEvent"));
    MSGQUEUEOPTIONS shape{};
    shape.dwSize = sizeof shape;
    shape.dwMaxMessages = 1;
    shape.cbMaxMessage = RecordSize;
    shape.bReadAccess = TRUE;
    const HANDLE queue = CreateMsgQueue(TEXT("QuenraDataQueue"), &shape);
    if (event == nullptr || queue == nullptr) {
        std::fputs("vantrel-watch: the event or the message queue of the terminal cannot be opened\n",
                   stderr);
        return 1;
    }
    const DWORD wait = options.TimeoutSeconds == 0 ? INFINITE : options.TimeoutSeconds * 1000;
    DWORD seen = 0;
    while (options.Count == 0 || seen < options.Count) {
        if (WaitForSingleObject(event, wait) != WAIT_OBJECT_0) {
            std::fputs("vantrel-watch: no scan came in time\n", stderr);
            return 1;
        }
        if (!PrintRecords(queue, seen)) {
            return 1;
        }
    }
    CloseMsgQueue(queue);
    CloseHandle(event);
    return 0;
}
