#include "platform/kernel.h"

#include <fcntl.h>
#include <mqueue.h>
#include <poll.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/shared_names.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

// A message queue's descriptor is a file descriptor on this host, which poll can wait for.
class QueueEnd : public Object {
  public:
    QueueEnd(std::shared_ptr<SharedNames> names, mqd_t queue, DWORD maxMessage, bool reads)
        : names_(std::move(names)), queue_(queue), max_message_(maxMessage), reads_(reads) {}
    ~QueueEnd() override { mq_close(queue_); }

    BOOL Read(void* buffer, DWORD size, DWORD& read, DWORD milliseconds) {
        // The host hands out a message only to a buffer that takes the longest, and cannot put one back.
        if (!reads_ || size < max_message_) {
            return FALSE;
        }
        ssize_t length = -1;
        const bool done = WhenReady(POLLIN, milliseconds, [&, this] {
            length = mq_receive(queue_, static_cast<char*>(buffer), size, nullptr);
            return length >= 0;
        });
        read = done ? static_cast<DWORD>(length) : 0;
        return done;
    }

    BOOL Write(const void* message, DWORD size, DWORD milliseconds) {
        if (reads_ || size > max_message_) {
            return FALSE;
        }
        return WhenReady(POLLOUT, milliseconds, [&, this] {
            return mq_send(queue_, static_cast<const char*>(message), size, 0) == 0;
        });
    }

  private:
    // Does the work as soon as the queue lets it, at most until the time is over.
    template <class Work>
    bool WhenReady(short ready, DWORD milliseconds, Work work) {
        Clock& clock = CurrentClock();
        const std::uint64_t deadline = clock.DeadlineAfter(milliseconds);
        for (;;) {
            std::array<pollfd, 1> files{{{queue_, ready, 0}}};
            if (!clock.PollUntil(files, deadline)) {
                return false;
            }
            // Another end may have been quicker; else the queue is broken.
            if (const bool done = work(); done || (errno != EAGAIN && errno != EINTR)) {
                return done;
            }
        }
    }

    const std::shared_ptr<SharedNames> names_;
    const mqd_t queue_;
    const DWORD max_message_;
    const bool reads_;
};

constexpr mqd_t NoQueue = static_cast<mqd_t>(-1);

bool HasShape(mqd_t queue, const mq_attr& wanted) {
    mq_attr attributes{};
    return mq_getattr(queue, &attributes) == 0 && attributes.mq_maxmsg == wanted.mq_maxmsg &&
           attributes.mq_msgsize == wanted.mq_msgsize;
}

// Opens the queue, or makes it anew when what has the name is of another shape.
mqd_t OpenQueue(const std::string& name, const MSGQUEUEOPTIONS& options) {
    mq_attr attributes{};
    attributes.mq_maxmsg = static_cast<long>(options.dwMaxMessages);
    attributes.mq_msgsize = static_cast<long>(options.cbMaxMessage);
    const int flags = (options.bReadAccess ? O_RDONLY : O_WRONLY) | O_CREAT | O_NONBLOCK | O_CLOEXEC;
    for (int tries = 0; tries < 3; ++tries) {
        const mqd_t queue = mq_open(name.c_str(), flags, 0600, &attributes);
        if (queue == NoQueue) {
            Say(LogPriority::Error, "message queue %s: %s (limits: /proc/sys/fs/mqueue, RLIMIT_MSGQUEUE)",
                name.c_str(), std::strerror(errno));
            return NoQueue;
        }
        struct stat status {};
        const bool ours = fstat(queue, &status) == 0 && IsOursAlone(status, "message queue", name);
        if (ours && HasShape(queue, attributes)) {
            return queue;
        }
        mq_close(queue);
        if (!ours) {
            return NoQueue;
        }
        mq_unlink(name.c_str());
    }
    return NoQueue;
}

bool Sensible(const MSGQUEUEOPTIONS& options) {
    constexpr DWORD most = 1u << 24;
    return options.dwSize >= sizeof(MSGQUEUEOPTIONS) && options.dwMaxMessages >= 1 &&
           options.dwMaxMessages <= most && options.cbMaxMessage >= 1 && options.cbMaxMessage <= most;
}

}  // namespace

}  // namespace layer

HANDLE CreateMsgQueue(LPCWSTR name, MSGQUEUEOPTIONS* options) {
    layer::ParkAtEnd();
    if (name == nullptr || options == nullptr || !layer::Sensible(*options)) {
        return nullptr;
    }
    std::shared_ptr<layer::SharedNames> names = layer::JoinSharedNames();
    const std::string host = names != nullptr ? names->Enter(layer::QueueKind, name) : std::string();
    if (host.empty()) {
        return nullptr;
    }
    const mqd_t queue = layer::OpenQueue(host, *options);
    if (queue == layer::NoQueue) {
        return nullptr;
    }
    return layer::NewHandle(std::make_shared<layer::QueueEnd>(std::move(names), queue, options->cbMaxMessage,
                                                              options->bReadAccess != FALSE));
}

BOOL ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD size, LPDWORD read, DWORD milliseconds, DWORD* flags) {
    layer::ParkAtEnd();
    *read = 0;
    *flags = 0;
    const auto end = layer::FindObjectAs<layer::QueueEnd>(queue);
    return end != nullptr && buffer != nullptr ? end->Read(buffer, size, *read, milliseconds) : FALSE;
}

BOOL WriteMsgQueue(HANDLE queue, LPVOID message, DWORD size, DWORD milliseconds, DWORD) {
    layer::ParkAtEnd();
    const auto end = layer::FindObjectAs<layer::QueueEnd>(queue);
    return end != nullptr && message != nullptr ? end->Write(message, size, milliseconds) : FALSE;
}

BOOL CloseMsgQueue(HANDLE queue) {
    layer::ParkAtEnd();
    return layer::FindObjectAs<layer::QueueEnd>(queue) != nullptr && layer::ReleaseHandle(queue) ? TRUE
                                                                                                 : FALSE;
}
