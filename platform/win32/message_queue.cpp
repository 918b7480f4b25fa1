// Message queues: a mapping that all programs of the terminal share, with a mutex around it and two events.
// docs/windows.md describes it to programs that bring their own code.
#include "platform/message_queue.h"

#include <cstring>
#include <string>

#include "platform/win32/terminal.h"

namespace {

constexpr DWORD LargestQueue = 1 << 20;  // bytes

struct QueueHead {
    DWORD Slots;     // messages that fit; 0 until the queue has been laid out
    DWORD SlotSize;  // bytes of the longest message
    DWORD First;     // slot of the oldest message
    DWORD Count;
    // Slots follow, each with its message's size in front.
};

struct Queue {
    HANDLE Mapping = nullptr;
    HANDLE Mutex = nullptr;
    HANDLE Filled = nullptr;   // set while there is a message, and perhaps when there is none
    HANDLE Emptied = nullptr;  // set while there is room, and perhaps when there is none
    QueueHead* Head = nullptr;
    bool Reads = false;
};

// A program that died inside leaves the queue as it was before its call, or after it: the count says which.
class Locked {
  public:
    explicit Locked(const Queue& queue) : mutex_(queue.Mutex) { WaitForSingleObject(mutex_, INFINITE); }
    ~Locked() { ReleaseMutex(mutex_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    HANDLE mutex_;
};

BYTE* SlotAt(const Queue& queue, DWORD number) {
    return reinterpret_cast<BYTE*>(queue.Head + 1) +
           std::size_t{number % queue.Head->Slots} * (sizeof(DWORD) + queue.Head->SlotSize);
}

void Release(Queue* queue) {
    if (queue->Head != nullptr) {
        UnmapViewOfFile(queue->Head);
    }
    for (const HANDLE handle : {queue->Mapping, queue->Mutex, queue->Filled, queue->Emptied}) {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }
    delete queue;
}

bool OpenObjects(Queue& queue, const std::wstring& name, DWORD size) {
    queue.Mutex = CreateMutexW(nullptr, FALSE, (name + L"-mutex").c_str());
    queue.Filled = CreateEventW(nullptr, TRUE, FALSE, (name + L"-filled").c_str());
    queue.Emptied = CreateEventW(nullptr, TRUE, TRUE, (name + L"-emptied").c_str());
    queue.Mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name.c_str());
    if (queue.Mutex == nullptr || queue.Filled == nullptr || queue.Emptied == nullptr ||
        queue.Mapping == nullptr) {
        return false;
    }
    queue.Head = static_cast<QueueHead*>(MapViewOfFile(queue.Mapping, FILE_MAP_ALL_ACCESS, 0, 0, size));
    return queue.Head != nullptr;
}

// Tries until it has worked or the time is over. `ready` is set whenever a try could work.
template <class Try>
BOOL Within(DWORD milliseconds, HANDLE ready, Try attempt) {
    const std::int64_t end = layer::Milliseconds() + milliseconds;
    while (!attempt()) {
        DWORD left = INFINITE;
        if (milliseconds != INFINITE) {
            const std::int64_t rest = end - layer::Milliseconds();
            if (rest <= 0) {
                return FALSE;
            }
            left = static_cast<DWORD>(rest);
        }
        if (WaitForSingleObject(ready, left) == WAIT_FAILED) {
            return FALSE;
        }
    }
    return TRUE;
}

}  // namespace

HANDLE CreateMsgQueue(LPCWSTR name, MSGQUEUEOPTIONS* options) {
    if (name == nullptr || options == nullptr || options->dwMaxMessages == 0 || options->cbMaxMessage == 0 ||
        options->dwMaxMessages > LargestQueue ||
        options->cbMaxMessage > LargestQueue / options->dwMaxMessages) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* queue = new Queue;
    queue->Reads = options->bReadAccess;
    const DWORD size = static_cast<DWORD>(sizeof(QueueHead)) +
                       options->dwMaxMessages * (static_cast<DWORD>(sizeof(DWORD)) + options->cbMaxMessage);
    const std::wstring shared = L"Local\\vantrel-" + layer::TerminalIdentity() + L"-" + name;
    if (!OpenObjects(*queue, shared, size)) {
        Release(queue);
        return nullptr;
    }
    bool fits = true;
    {
        const Locked locked(*queue);
        if (queue->Head->Slots == 0) {
            queue->Head->SlotSize = options->cbMaxMessage;
            queue->Head->Slots = options->dwMaxMessages;
        }
        fits = queue->Head->Slots == options->dwMaxMessages && queue->Head->SlotSize == options->cbMaxMessage;
    }
    if (!fits) {
        Release(queue);
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return queue;
}

BOOL ReadMsgQueue(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read, DWORD milliseconds, DWORD* flags) {
    auto* const queue = static_cast<Queue*>(handle);
    if (queue == nullptr || !queue->Reads || size < queue->Head->SlotSize) {
        return FALSE;
    }
    *flags = 0;
    return Within(milliseconds, queue->Filled, [=] {
        const Locked locked(*queue);
        QueueHead& head = *queue->Head;
        if (head.Count == 0) {
            ResetEvent(queue->Filled);
            return false;
        }
        const BYTE* slot = SlotAt(*queue, head.First);
        DWORD length;
        std::memcpy(&length, slot, sizeof length);
        *read = length < head.SlotSize ? length : head.SlotSize;
        std::memcpy(buffer, slot + sizeof length, *read);
        SetEvent(queue->Emptied);
        head.First = (head.First + 1) % head.Slots;
        if (--head.Count == 0) {
            ResetEvent(queue->Filled);
        }
        return true;
    });
}

BOOL WriteMsgQueue(HANDLE handle, LPVOID message, DWORD size, DWORD milliseconds, DWORD) {
    auto* const queue = static_cast<Queue*>(handle);
    if (queue == nullptr || queue->Reads || size > queue->Head->SlotSize) {
        return FALSE;
    }
    return Within(milliseconds, queue->Emptied, [=] {
        const Locked locked(*queue);
        QueueHead& head = *queue->Head;
        if (head.Count >= head.Slots) {
            ResetEvent(queue->Emptied);
            return false;
        }
        BYTE* slot = SlotAt(*queue, head.First + head.Count);
        std::memcpy(slot, &size, sizeof size);
        std::memcpy(slot + sizeof size, message, size);
        SetEvent(queue->Filled);
        if (++head.Count == head.Slots) {
            ResetEvent(queue->Emptied);
        }
        return true;
    });
}

BOOL CloseMsgQueue(HANDLE handle) {
    if (handle == nullptr) {
        return FALSE;
    }
    Release(static_cast<Queue*>(handle));
    return TRUE;
}
