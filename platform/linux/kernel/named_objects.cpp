// Events and mutexes that programs share by name.
//
// A named event is a POSIX named semaphore that holds 0 or 1. A named mutex is a lock on a file of the
// terminal folder: the kernel gives it back whatever ends the program.
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <mutex>
#include <string>

#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/posix.h"
#include "platform/linux/kernel/shared_names.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

// Reading the value and posting are two steps; of all handles on all names only one does them at a time.
constinit std::mutex SetMutex;

class NamedEvent : public Object, public Event {
  public:
    NamedEvent(std::shared_ptr<SharedNames> names, sem_t* semaphore)
        : names_(std::move(names)), semaphore_(semaphore) {}
    ~NamedEvent() override { sem_close(semaphore_); }

    void Set() override {
        std::scoped_lock lock(SetMutex);
        int value = 0;
        if (sem_getvalue(semaphore_, &value) == 0 && value == 0) {
            sem_post(semaphore_);
        }
    }

    DWORD Wait(DWORD milliseconds) override {
        Clock& clock = CurrentClock();
        const std::uint64_t deadline = clock.DeadlineAfter(milliseconds);
        do {
            if (sem_trywait(semaphore_) == 0 || clock.TakeUntil(*semaphore_, deadline)) {
                return WAIT_OBJECT_0;
            }
        } while (clock.Now() < deadline);  // else a signal came
        return WAIT_TIMEOUT;
    }

  private:
    const std::shared_ptr<SharedNames> names_;
    sem_t* const semaphore_;
};

// Whether the semaphore, if there is one, can be used. The C library maps its file without looking at the
// size, and one that is cut short would end the program at the first access: such a one of ours is removed.
bool UsableSemaphore(const std::string& name) {
    struct stat status {};
    const std::string file = "/dev/shm/sem." + name.substr(1);
    if (lstat(file.c_str(), &status) != 0) {
        return true;
    }
    if (!IsOursAlone(status, "event", name)) {
        return false;
    }
    if (!S_ISREG(status.st_mode) || status.st_size < static_cast<off_t>(sizeof(sem_t))) {
        sem_unlink(name.c_str());
    }
    return true;
}

class NamedMutex : public Object {
  public:
    explicit NamedMutex(Descriptor file) : file_(std::move(file)) {}

    DWORD Wait(DWORD milliseconds) override {
        const bool had = LockFile(file_.Number(), LOCK_EX, std::chrono::milliseconds(milliseconds));
        return had ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }

  private:
    const Descriptor file_;
};

}  // namespace

std::shared_ptr<Object> OpenNamedEvent(LPCWSTR name, bool set) {
    std::shared_ptr<SharedNames> names = JoinSharedNames();
    const std::string host = names != nullptr ? names->Enter(EventKind, name) : std::string();
    if (host.empty() || !UsableSemaphore(host)) {
        return nullptr;
    }
    sem_t* semaphore = sem_open(host.c_str(), O_CREAT, 0600, set ? 1u : 0u);
    if (semaphore == SEM_FAILED) {
        return nullptr;
    }
    // Somebody may have been quicker with the name.
    if (!UsableSemaphore(host)) {
        sem_close(semaphore);
        return nullptr;
    }
    int value = 0;
    while (sem_getvalue(semaphore, &value) == 0 && value > 1 && sem_trywait(semaphore) == 0) {
    }
    return std::make_shared<NamedEvent>(std::move(names), semaphore);
}

}  // namespace layer

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) {
    layer::ParkAtEnd();
    const std::string narrow = name != nullptr ? layer::ToUtf8(name) : std::string();
    if (initialOwner || narrow.empty() || narrow.find('/') != std::string::npos) {
        return nullptr;
    }
    const std::string path = layer::TerminalFolder() + "/" + narrow + ".lock";
    layer::Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    return file ? layer::NewHandle(std::make_shared<layer::NamedMutex>(std::move(file))) : nullptr;
}
