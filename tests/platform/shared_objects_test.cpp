// The event, the queue and their names between programs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mqueue.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>

#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "tests/support/temporary_terminal.h"

namespace {

class SharedObjects : public testing::Test {
  protected:
    TemporaryTerminal Terminal;
    const std::string EventFile = "/dev/shm/sem.vantrel-" + layer::TerminalIdentity() + "-TestEvent";
    const std::string QueueName = "/vantrel-" + layer::TerminalIdentity() + "-TestQueue";

    bool EventExists() const {
        struct stat status {};
        return stat(EventFile.c_str(), &status) == 0;
    }
    bool QueueExists() const {
        const mqd_t queue = mq_open(QueueName.c_str(), O_RDONLY);
        return queue != static_cast<mqd_t>(-1) && mq_close(queue) == 0;
    }
};

// This program's ends of the event and the queue.
struct Objects {
    const HANDLE Event = CreateEventW(nullptr, FALSE, FALSE, TEXT("TestEvent"));
    const HANDLE Reader = Queue(TRUE), Writer = Queue(FALSE);

    ~Objects() { EXPECT_TRUE(CloseHandle(Event) && CloseMsgQueue(Reader) && CloseMsgQueue(Writer)); }
    static HANDLE Queue(BOOL reads) {
        MSGQUEUEOPTIONS options{sizeof options, 0, 1, 4232, reads};
        return CreateMsgQueue(TEXT("TestQueue"), &options);
    }
    bool Set() const { return EventModify(Event, EVENT_SET); }
    bool IsSet() const { return WaitForSingleObject(Event, 0) == WAIT_OBJECT_0; }
    bool Put(const std::string& text) const {
        std::array<char, 4232> record{};
        text.copy(record.data(), record.size());
        return WriteMsgQueue(Writer, record.data(), record.size(), 0, 0);
    }
    std::string Take() const {
        std::array<char, 4232> record{};
        DWORD size = 0, flags = 1;
        const BOOL read = ReadMsgQueue(Reader, record.data(), record.size(), &size, 0, &flags);
        return read && size == record.size() && flags == 0 ? record.data() : "nothing";
    }
};

// Another program of the terminal. Make it before this one uses what it shares with others.
class Program {
  public:
    explicit Program(const std::function<bool()>& work) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_), 0);
        id_ = fork();
        if (id_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            layer::SetMainThread();
            for (char byte = 0; read(ends_[1], &byte, 1) == 1 && byte != 'e';) {
                byte = work() ? 'y' : 'n';
                static_cast<void>(write(ends_[1], &byte, 1) == 1);
            }
            layer::BeginEnd();
            _exit(0);
        }
    }
    ~Program() {
        close(ends_[0]);
        close(ends_[1]);
    }
    // Whether it could do its work.
    bool Works() {
        char byte = 'w';
        return write(ends_[0], &byte, 1) == 1 && read(ends_[0], &byte, 1) == 1 && byte == 'y';
    }
    void End() { EXPECT_TRUE(write(ends_[0], "e", 1) == 1 && Status() == 0); }
    void Kill() { EXPECT_TRUE(kill(id_, SIGKILL) == 0 && Status() == SIGKILL); }

  private:
    int Status() const {
        int status = -1;
        waitpid(id_, &status, 0);
        return status;
    }
    int ends_[2];
    pid_t id_;
};

TEST_F(SharedObjects, TheLastUserTakesTheNamesAway) {
    const auto work = [] {
        const auto& objects = *new Objects;
        return objects.Put("record") && !objects.Put("no room for two") && objects.Set() && objects.Set();
    };
    Program programs[] = {Program(work), Program(work), Program(work)};
    {
        const Objects stays;
        for (Program& comes : programs) {
            EXPECT_TRUE(comes.Works());
            comes.End();
            EXPECT_TRUE(stays.IsSet());
            EXPECT_FALSE(stays.IsSet()) << "an event counts nothing";
            EXPECT_EQ(stays.Take(), "record");
        }
        EXPECT_TRUE(EventExists() && QueueExists());
    }
    EXPECT_FALSE(EventExists() || QueueExists());
}

TEST_F(SharedObjects, AfterAKillTheNextStartBeginsAnew) {
    for (int start = 0; start < 3; ++start) {
        Program killed([] {
            const auto& objects = *new Objects;
            return !objects.IsSet() && objects.Take() == "nothing" && objects.Put("stale") && objects.Set();
        });
        EXPECT_TRUE(killed.Works()) << start;
        killed.Kill();
    }
    EXPECT_TRUE(EventExists());
    // One that uses only the event clears the queue away as well.
    Program next([] { return CreateEventW(nullptr, FALSE, FALSE, TEXT("TestEvent")) != nullptr; });
    EXPECT_TRUE(next.Works());
    EXPECT_FALSE(QueueExists());
    next.End();
    EXPECT_FALSE(EventExists());
}

TEST_F(SharedObjects, WhatIsBrokenIsReplaced) {
    mq_attr attributes{};
    attributes.mq_maxmsg = 1;
    attributes.mq_msgsize = 100;
    const mqd_t foreign = mq_open(QueueName.c_str(), O_RDWR | O_CREAT, 0600, &attributes);
    ASSERT_NE(foreign, static_cast<mqd_t>(-1));
    WriteWholeFile(EventFile, "short");
    chmod(EventFile.c_str(), 0600);
    WriteWholeFile(Terminal.Path("shared-objects"), std::string("event /../../etc\nqueue\n\0\xFF junk", 30));
    {
        const Objects objects;
        EXPECT_TRUE(objects.Put("record") && objects.Set());
        EXPECT_TRUE(mq_getattr(foreign, &attributes) == 0 && attributes.mq_curmsgs == 0);
        EXPECT_EQ(objects.Take(), "record");
        EXPECT_TRUE(objects.IsSet());
    }
    EXPECT_FALSE(EventExists() || QueueExists());
    mq_close(foreign);
}

// Whoever else can write such an object could take the scans, or cut it short under the program.
TEST_F(SharedObjects, WhatIsOpenToOthersIsRefusedWithAMessage) {
    mq_attr attributes{};
    attributes.mq_maxmsg = 1;
    attributes.mq_msgsize = 4232;
    const struct {
        mode_t Mode;
        uid_t Owner;
    } cases[] = {{0620, geteuid()}, {0602, geteuid()}, {0600, geteuid() == 0 ? 12345 : geteuid()}};
    for (const auto& each : cases) {
        if (each.Mode == 0600 && each.Owner == geteuid()) {
            continue;  // only root can make what is another user's
        }
        const mqd_t queue = mq_open(QueueName.c_str(), O_RDWR | O_CREAT, 0600, &attributes);
        ASSERT_EQ(fchmod(queue, each.Mode) | fchown(queue, each.Owner, static_cast<gid_t>(-1)), 0);
        WriteWholeFile(EventFile, std::string(32, '\0'));
        ASSERT_EQ(chmod(EventFile.c_str(), each.Mode) |
                      chown(EventFile.c_str(), each.Owner, static_cast<gid_t>(-1)),
                  0);
        testing::internal::CaptureStderr();
        EXPECT_EQ(Objects::Queue(TRUE), nullptr) << each.Mode;
        EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, TEXT("TestEvent")), nullptr) << each.Mode;
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_NE(said.find("queue " + QueueName + " belongs to another user"), said.npos);
        EXPECT_NE(said.find("-TestEvent belongs to another user"), said.npos);
        mq_close(queue);
        mq_unlink(QueueName.c_str());
        unlink(EventFile.c_str());
    }
}

// However hard another thread holds it on.
TEST_F(SharedObjects, TheVibratorIsOffAtTheEnd) {
    Program system([] {
        const auto vibrate = [](LPVOID) -> DWORD {
            for (DWORD on = 1;;) {
                KernelIoControl(0x24321015, &on, sizeof on, nullptr, 0, nullptr);
            }
        };
        return CreateThread(nullptr, 0, vibrate, nullptr, 0, nullptr) != nullptr;
    });
    EXPECT_TRUE(system.Works());
    while (ReadWholeFile(Terminal.Path("VIBRATOR")) != "1") {
    }
    system.End();
    EXPECT_EQ(ReadWholeFile(Terminal.Path("VIBRATOR")), "0");
}

TEST_F(SharedObjects, NamesThatCannotBeSharedAreRefused) {
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, 16, TRUE};
    const std::u16string tooLong(65, u'x');
    for (const char16_t* name : {u"", u"a/b", u"a\\b", u"..\u00E9", u"a b", tooLong.c_str()}) {
        EXPECT_EQ(CreateMsgQueue(name, &options), nullptr);
    }
    EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, tooLong.c_str()), nullptr);
}

}  // namespace
