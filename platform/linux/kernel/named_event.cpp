#include "platform/linux/kernel/named_event.h"

#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <mutex>
#include <string>
#include <vector>

#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/event.h"
#include "platform/linux/kernel/shared_names.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

// Nothing but a post or a signal ends a wait on a semaphore, and a post could wake a waiter of another
// program in place of ours. The signal does nothing; it only interrupts.
int WakeSignal() {
    static const int signal = [] {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGRTMIN + 3, &action, nullptr);
        return SIGRTMIN + 3;
    }();
    return signal;
}

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

    void Reset() override {
        while (sem_trywait(semaphore_) == 0) {
        }
    }

    DWORD Wait(DWORD milliseconds) override {
        Clock& clock = CurrentClock();
        const std::uint64_t deadline = clock.DeadlineAfter(milliseconds);
        const Waiting waiting(*this);
        for (;;) {
            if (Closed()) {
                return WAIT_FAILED;
            }
            bool taken = sem_trywait(semaphore_) == 0;
            errno = 0;
            if (!taken && !Closed()) {
                taken = clock.TakeUntil(*semaphore_, deadline);
            }
            const bool timedOut = !taken && errno != EINTR && clock.Now() >= deadline;
            if (taken) {
                return WAIT_OBJECT_0;
            }
            if (timedOut) {
                return WAIT_TIMEOUT;
            }
        }
    }

    bool Close() override {
        {
            std::scoped_lock lock(waiters_mutex_);
            closed_ = true;
        }
        // A signal that comes just before the wait begins is lost, so it is sent until nobody waits.
        for (;;) {
            {
                std::scoped_lock lock(waiters_mutex_);
                if (waiters_.empty()) {
                    return true;
                }
                for (const pthread_t waiter : waiters_) {
                    pthread_kill(waiter, WakeSignal());
                }
            }
            const timespec pause{0, 1'000'000};
            nanosleep(&pause, nullptr);
        }
    }

  private:
    // Notes the calling thread as one that waits.
    class Waiting {
      public:
        explicit Waiting(NamedEvent& event) : event_(event) {
            WakeSignal();
            std::scoped_lock lock(event_.waiters_mutex_);
            event_.waiters_.push_back(pthread_self());
        }
        ~Waiting() {
            std::scoped_lock lock(event_.waiters_mutex_);
            for (pthread_t& waiter : event_.waiters_) {
                if (pthread_equal(waiter, pthread_self()) != 0) {
                    waiter = event_.waiters_.back();
                    event_.waiters_.pop_back();
                    return;
                }
            }
        }
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;

      private:
        NamedEvent& event_;
    };

    bool Closed() {
        std::scoped_lock lock(waiters_mutex_);
        return closed_;
    }

    const std::shared_ptr<SharedNames> names_;
    sem_t* const semaphore_;
    std::mutex waiters_mutex_;
    std::vector<pthread_t> waiters_;
    bool closed_ = false;
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

}  // namespace

std::shared_ptr<Object> OpenNamedEvent(LPCWSTR name, bool set) {
    std::shared_ptr<SharedNames> names = JoinSharedNames();
    if (names == nullptr) {
        return nullptr;
    }
    const std::string host = names->Enter(SharedKind::Event, name);
    if (host.empty()) {
        return nullptr;
    }
    sem_t* semaphore = SEM_FAILED;
    if (UsableSemaphore(host)) {
        semaphore = sem_open(host.c_str(), O_CREAT, 0600, set ? 1u : 0u);
    }
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
