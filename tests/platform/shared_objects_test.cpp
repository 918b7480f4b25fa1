// The event, the queue and their names between programs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mqueue.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "tests/support/child_process.h"
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

class Program : public ChildProcess {
  public:
    Program() : ChildProcess({KERNEL_CHILD}) {}
    std::string Ask(const std::string& command) {
        WriteLine(command);
        return ReadLine().value_or("no answer");
    }
    void Open() {
        EXPECT_EQ(Ask("event"), "ok");
        EXPECT_EQ(Ask("queue"), "ok");
    }
    void End() {
        WriteLine("end");
        EXPECT_EQ(Wait(), 0);
    }
};

TEST_F(SharedObjects, TheLastUserTakesTheNamesAway) {
    Program stays;
    stays.Open();
    for (int start = 0; start < 3; ++start) {
        Program comes;
        comes.Open();
        EXPECT_EQ(comes.Ask("write record"), "ok");
        EXPECT_EQ(comes.Ask("write another"), "failed") << "room for one";
        EXPECT_EQ(comes.Ask("set"), "ok");
        EXPECT_EQ(comes.Ask("set"), "ok");
        comes.End();
        EXPECT_EQ(stays.Ask("wait 0"), "set") << start;
        EXPECT_EQ(stays.Ask("wait 0"), "timeout") << "an event counts nothing";
        EXPECT_EQ(stays.Ask("read 0"), "record") << start;
    }
    EXPECT_TRUE(EventExists());
    EXPECT_TRUE(QueueExists());
    stays.End();
    EXPECT_FALSE(EventExists());
    EXPECT_FALSE(QueueExists());
}

TEST_F(SharedObjects, AfterAKillTheNextStartBeginsAnew) {
    for (int start = 0; start < 3; ++start) {
        Program killed;
        killed.Open();
        EXPECT_EQ(killed.Ask("wait 0"), "timeout");
        EXPECT_EQ(killed.Ask("read 0"), "nothing");
        EXPECT_EQ(killed.Ask("write stale"), "ok");
        EXPECT_EQ(killed.Ask("set"), "ok");
        killed.Signal(SIGKILL);
        EXPECT_EQ(killed.Wait(), 128 + SIGKILL);
    }
    EXPECT_TRUE(EventExists());
    // One that uses only the event clears the queue away as well.
    Program next;
    EXPECT_EQ(next.Ask("event"), "ok");
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
    Program system;
    system.Open();
    EXPECT_EQ(system.Ask("write record"), "ok");
    EXPECT_TRUE(mq_getattr(foreign, &attributes) == 0 && attributes.mq_curmsgs == 0);
    EXPECT_EQ(system.Ask("read 0"), "record");
    EXPECT_EQ(system.Ask("set"), "ok");
    EXPECT_EQ(system.Ask("wait 0"), "set");
    system.End();
    EXPECT_FALSE(EventExists());
    EXPECT_FALSE(QueueExists());
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
        MSGQUEUEOPTIONS options{sizeof options, 0, 1, 4232, TRUE};
        testing::internal::CaptureStderr();
        EXPECT_EQ(CreateMsgQueue(TEXT("TestQueue"), &options), nullptr) << each.Mode;
        EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, TEXT("TestEvent")), nullptr) << each.Mode;
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_NE(said.find("queue " + QueueName + " belongs to another user"), said.npos);
        EXPECT_NE(said.find("-TestEvent belongs to another user"), said.npos);
        mq_close(queue);
        mq_unlink(QueueName.c_str());
        unlink(EventFile.c_str());
    }
}

TEST_F(SharedObjects, TheVibratorIsOffAtTheEnd) {
    Program system;
    EXPECT_EQ(system.Ask("vibrate"), "ok");
    while (ReadWholeFile(Terminal.Path("VIBRATOR")) != "1") {
    }
    system.End();
    EXPECT_EQ(ReadWholeFile(Terminal.Path("VIBRATOR")), "0");
}

TEST_F(SharedObjects, QueueEndsRefuseWhatTheyCannotDo) {
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, 16, TRUE};
    const HANDLE reads = CreateMsgQueue(TEXT("Small"), &options);
    options.bReadAccess = FALSE;
    const HANDLE writes = CreateMsgQueue(TEXT("Small"), &options);
    std::array<char, 17> bytes{};
    DWORD size = 9;
    DWORD flags = 9;
    EXPECT_FALSE(WriteMsgQueue(writes, bytes.data(), 17, 0, 0));
    EXPECT_FALSE(WriteMsgQueue(reads, bytes.data(), 16, 0, 0));
    EXPECT_TRUE(WriteMsgQueue(writes, bytes.data(), 16, 0, 0));
    EXPECT_FALSE(ReadMsgQueue(writes, bytes.data(), 16, &size, 0, &flags));
    EXPECT_FALSE(ReadMsgQueue(reads, bytes.data(), 15, &size, 0, &flags)) << "too small: it stays";
    EXPECT_EQ(size, 0u);
    EXPECT_TRUE(ReadMsgQueue(reads, bytes.data(), 17, &size, 0, &flags));
    EXPECT_EQ(size, 16u);
    EXPECT_TRUE(CloseMsgQueue(reads));
    EXPECT_FALSE(CloseMsgQueue(reads));
    EXPECT_TRUE(CloseMsgQueue(writes));

    const std::u16string tooLong(65, u'x');
    for (const char16_t* name : {u"", u"a/b", u"a\\b", u"..\u00E9", u"a b", tooLong.c_str()}) {
        EXPECT_EQ(CreateMsgQueue(name, &options), nullptr);
    }
    EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, tooLong.c_str()), nullptr);
}

}  // namespace
