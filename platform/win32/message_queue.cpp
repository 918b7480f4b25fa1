// Message queues: a mapping that all programs of the terminal share, with a mutex around it and two events.
// Those that the system has hold one message. docs/windows.md describes it to programs that bring their own
// code.
#include "platform/kernel.h"

#include <algorithm>
#include <cstring>

#include "platform/win32/terminal.h"

// The names are the terminal's already.
#undef CreateEventW
#undef CreateMutexW

namespace {

constexpr DWORD LongestMessage = 1 << 20;  // bytes

struct QueueContent {
    DWORD Longest;  // bytes of the longest message; 0 until the queue has been laid out
    DWORD Size;     // of the message, which follows; 0 when there is none
};

struct Queue {
    HANDLE Mapping = nullptr;
    HANDLE Mutex = nullptr;
    HANDLE Filled = nullptr;   // automatic reset: set by who puts a message in,
    HANDLE Emptied = nullptr;  // and by who takes one out
    QueueContent* Content = nullptr;
    DWORD Longest = 0;
    bool Reads = false;

    BYTE* Message() const { return reinterpret_cast<BYTE*>(Content + 1); }

    // A program that died inside leaves the queue as it was before its call, or after it: the size says
    // which.
    template <class Work>
    bool Locked(Work work) const {
        WaitForSingleObject(Mutex, INFINITE);
        const bool done = work();
        ReleaseMutex(Mutex);
        return done;
    }

    // Tries until it has worked or the time is over. `ready` is set whenever a try could work.
    template <class Try>
    BOOL Within(DWORD milliseconds, HANDLE ready, Try attempt) const {
        const std::int64_t end = layer::Milliseconds() + milliseconds;
        while (!Locked(attempt)) {
            const std::int64_t left = milliseconds == INFINITE ? INFINITE : end - layer::Milliseconds();
            if (left <= 0 || WaitForSingleObject(ready, static_cast<DWORD>(left)) == WAIT_FAILED) {
                return FALSE;
            }
        }
        return TRUE;
    }
};

}  // namespace

HANDLE CreateMsgQueue(LPCWSTR name, MSGQUEUEOPTIONS* options) {
    if (name == nullptr || options == nullptr || options->dwMaxMessages != 1 || options->cbMaxMessage == 0 ||
        options->cbMaxMessage > LongestMessage) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* const queue = new Queue;
    queue->Reads = options->bReadAccess;
    queue->Longest = options->cbMaxMessage;
    const std::wstring shared = layer::SharedName(name);
    const DWORD size = static_cast<DWORD>(sizeof(QueueContent)) + queue->Longest;
    queue->Mutex = CreateMutexW(nullptr, FALSE, (shared + L"-mutex").c_str());
    queue->Filled = CreateEventW(nullptr, FALSE, FALSE, (shared + L"-filled").c_str());
    queue->Emptied = CreateEventW(nullptr, FALSE, FALSE, (shared + L"-emptied").c_str());
    queue->Mapping =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, shared.c_str());
    queue->Content =
        static_cast<QueueContent*>(MapViewOfFile(queue->Mapping, FILE_MAP_ALL_ACCESS, 0, 0, size));
    const bool opened = queue->Mutex != nullptr && queue->Filled != nullptr && queue->Emptied != nullptr &&
                        queue->Content != nullptr && queue->Locked([=] {
                            DWORD& longest = queue->Content->Longest;
                            longest = longest == 0 ? queue->Longest : longest;
                            return longest == queue->Longest;
                        });
    if (!opened) {
        CloseMsgQueue(queue);
        return nullptr;
    }
    return queue;
}

BOOL ReadMsgQueue(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read, DWORD milliseconds, DWORD* flags) {
    auto* const queue = static_cast<Queue*>(handle);
    if (queue == nullptr || !queue->Reads || size < queue->Longest) {
        return FALSE;
    }
    *flags = 0;
    return queue->Within(milliseconds, queue->Filled, [=] {
        *read = std::min(queue->Content->Size, queue->Longest);
        if (*read == 0) {
            return false;
        }
        std::memcpy(buffer, queue->Message(), *read);
        SetEvent(queue->Emptied);
        queue->Content->Size = 0;
        return true;
    });
}

BOOL WriteMsgQueue(HANDLE handle, LPVOID message, DWORD size, DWORD milliseconds, DWORD) {
    auto* const queue = static_cast<Queue*>(handle);
    if (queue == nullptr || queue->Reads || size == 0 || size > queue->Longest) {
        return FALSE;
    }
    return queue->Within(milliseconds, queue->Emptied, [=] {
        if (queue->Content->Size != 0) {
            return false;
        }
        std::memcpy(queue->Message(), message, size);
        SetEvent(queue->Filled);
        queue->Content->Size = size;
        return true;
    });
}

BOOL CloseMsgQueue(HANDLE handle) {
    auto* const queue = static_cast<Queue*>(handle);
    if (queue == nullptr) {
        return FALSE;
    }
    UnmapViewOfFile(queue->Content);
    for (const HANDLE opened : {queue->Mapping, queue->Mutex, queue->Filled, queue->Emptied}) {
        CloseHandle(opened);
    }
    delete queue;
    return TRUE;
}
