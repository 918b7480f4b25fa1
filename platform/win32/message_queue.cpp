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
};

// A program that died inside leaves the queue as it was before its call, or after it: the size says which.
class Locked {
  public:
    explicit Locked(const Queue& queue) : mutex_(queue.Mutex) { WaitForSingleObject(mutex_, INFINITE); }
    ~Locked() { ReleaseMutex(mutex_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    HANDLE mutex_;
};

BYTE* MessageOf(const Queue& queue) {
    return reinterpret_cast<BYTE*>(queue.Content + 1);
}

bool Open(Queue& queue, LPCWSTR name) {
    const std::wstring shared = layer::SharedName(name);
    const DWORD size = static_cast<DWORD>(sizeof(QueueContent)) + queue.Longest;
    queue.Mutex = CreateMutexW(nullptr, FALSE, (shared + L"-mutex").c_str());
    queue.Filled = CreateEventW(nullptr, FALSE, FALSE, (shared + L"-filled").c_str());
    queue.Emptied = CreateEventW(nullptr, FALSE, FALSE, (shared + L"-emptied").c_str());
    queue.Mapping =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, shared.c_str());
    if (queue.Mutex == nullptr || queue.Filled == nullptr || queue.Emptied == nullptr ||
        queue.Mapping == nullptr) {
        return false;
    }
    queue.Content = static_cast<QueueContent*>(MapViewOfFile(queue.Mapping, FILE_MAP_ALL_ACCESS, 0, 0, size));
    if (queue.Content == nullptr) {
        return false;
    }
    const Locked locked(queue);
    if (queue.Content->Longest == 0) {
        queue.Content->Longest = queue.Longest;
    }
    return queue.Content->Longest == queue.Longest;
}

// Tries until it has worked or the time is over. `ready` is set whenever a try could work.
template <class Try>
BOOL Within(DWORD milliseconds, HANDLE ready, Try attempt) {
    const std::int64_t end = layer::Milliseconds() + milliseconds;
    while (!attempt()) {
        const std::int64_t left = milliseconds == INFINITE ? INFINITE : end - layer::Milliseconds();
        if (left <= 0 || WaitForSingleObject(ready, static_cast<DWORD>(left)) == WAIT_FAILED) {
            return FALSE;
        }
    }
    return TRUE;
}

}  // namespace

HANDLE CreateMsgQueue(LPCWSTR name, MSGQUEUEOPTIONS* options) {
    if (name == nullptr || options == nullptr || options->dwMaxMessages != 1 || options->cbMaxMessage == 0 ||
        options->cbMaxMessage > LongestMessage) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* queue = new Queue;
    queue->Reads = options->bReadAccess;
    queue->Longest = options->cbMaxMessage;
    if (!Open(*queue, name)) {
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
    return Within(milliseconds, queue->Filled, [=] {
        const Locked locked(*queue);
        *read = std::min(queue->Content->Size, queue->Longest);
        if (*read == 0) {
            return false;
        }
        std::memcpy(buffer, MessageOf(*queue), *read);
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
    return Within(milliseconds, queue->Emptied, [=] {
        const Locked locked(*queue);
        if (queue->Content->Size != 0) {
            return false;
        }
        std::memcpy(MessageOf(*queue), message, size);
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
    if (queue->Content != nullptr) {
        UnmapViewOfFile(queue->Content);
    }
    for (const HANDLE opened : {queue->Mapping, queue->Mutex, queue->Filled, queue->Emptied}) {
        if (opened != nullptr) {
            CloseHandle(opened);
        }
    }
    delete queue;
    return TRUE;
}
