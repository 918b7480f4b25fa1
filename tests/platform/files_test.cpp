#include "platform/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/linux/kernel/terminal.h"
#include "tests/support/temporary_terminal.h"

namespace {

using namespace std::chrono_literals;

constexpr DWORD Both = GENERIC_READ | GENERIC_WRITE;

class Files : public testing::Test {
  protected:
    TemporaryTerminal Terminal;

    static HANDLE Open(const std::u16string& name, DWORD disposition, DWORD share = 0, DWORD access = Both) {
        return CreateFileW(name.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    static bool Opens(const std::u16string& name, DWORD disposition = OPEN_EXISTING, DWORD share = 0) {
        const HANDLE file = Open(name, disposition, share);
        return file != INVALID_HANDLE_VALUE && CloseHandle(file);
    }
    static bool Put(HANDLE file, std::string_view text) {
        DWORD written = 0;
        return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
               written == text.size();
    }
};

const std::u16string Settings = u"\\DiskOnChip\\X.ini";

TEST_F(Files, PathsStayInTheTerminal) {
    mkdir(Terminal.Path("DiskOnChip/Sub").c_str(), 0700);
    WriteWholeFile(Terminal.Path("DiskOnChip/Sub/A.shx"), "x");
    WriteWholeFile(Terminal.Path("DiskOnChip/b.shx"), "lower");
    WriteWholeFile(Terminal.Path("DiskOnChip/B.SHX"), "upper");
    const struct {
        std::u16string Platform;
        std::string Host;  // within the terminal folder; "-" when it is refused
    } cases[] = {
        {u"\\DISKONCHIP\\sub\\a.SHX", "/DiskOnChip/Sub/A.shx"},
        {u"DiskOnChip\\Sub", "/DiskOnChip/Sub"},
        {u"\\", ""},
        {u"\\DiskOnChip\\b.shx", "/DiskOnChip/b.shx"},
        {u"\\DiskOnChip\\b.Shx", "/DiskOnChip/B.SHX"},
        {u"\\DiskOnChip\\\u00FC.ini", "/DiskOnChip/\xC3\xBC.ini"},
        {u"\\DiskOnChip\\..x", "/DiskOnChip/..x"},
        {u"", "-"},
        {u"\\..", "-"},
        {u"\\DiskOnChip\\..\\..\\etc\\passwd", "-"},
        {u"..\\..\\etc\\passwd", "-"},
        {u"\\DiskOnChip\\.\\X", "-"},
        {u"\\\\server\\share", "-"},
        {u"\\DiskOnChip\\\\X", "-"},
        {u"\\\\.\\COM1", "-"},
        {u"C:\\X", "-"},
        {u"\\DiskOnChip\\a\nb", "-"},
        {u"\\DiskOnChip\\\xD800", "-"},
        {u"\\" + std::u16string(258, u'a'), "/" + std::string(258, 'a')},
        {u"\\" + std::u16string(259, u'a'), "-"},
    };
    for (const auto& each : cases) {
        const std::string host = layer::HostPath(each.Platform.c_str());
        EXPECT_EQ(host, each.Host == "-" ? "" : Terminal.Folder() + each.Host)
            << layer::ToUtf8(each.Platform);
    }
}

TEST_F(Files, LinksInTheFolderAreFollowedAndSurviveASave) {
    const TemporaryTerminal elsewhere;
    WriteWholeFile(elsewhere.Path("real.ini"), "old");
    layer::UseTerminalFolder(Terminal.Folder());
    ASSERT_EQ(symlink(elsewhere.Path("real.ini").c_str(), Terminal.Path("DiskOnChip/X.ini").c_str()), 0);
    const HANDLE file = Open(Settings, CREATE_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Put(file, "new"));
    CloseHandle(file);
    EXPECT_EQ(ReadWholeFile(elsewhere.Path("real.ini")), "new");
    struct stat status {};
    ASSERT_EQ(lstat(Terminal.Path("DiskOnChip/X.ini").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));

    // The first save through a link whose file is not there yet.
    unlink(elsewhere.Path("real.ini").c_str());
    EXPECT_TRUE(Opens(Settings, CREATE_ALWAYS));
    EXPECT_EQ(access(elsewhere.Path("real.ini").c_str(), F_OK), 0);
}

TEST_F(Files, OnlyRegularFilesOpen) {
    mkdir(Terminal.Path("DiskOnChip/Folder").c_str(), 0700);
    mkfifo(Terminal.Path("DiskOnChip/Pipe").c_str(), 0600);
    ASSERT_EQ(symlink("/dev/zero", Terminal.Path("DiskOnChip/Zero").c_str()), 0);
    for (const char16_t* name : {u"\\DiskOnChip\\Folder", u"\\DiskOnChip\\Pipe", u"\\DiskOnChip\\Zero",
                                 u"\\DiskOnChip\\Missing\\X", u"\\", u"COM1:X", u"COM0:"}) {
        EXPECT_FALSE(Opens(name)) << layer::ToUtf8(name);
        EXPECT_FALSE(Opens(name, CREATE_ALWAYS)) << layer::ToUtf8(name);
    }
    EXPECT_FALSE(Opens(Settings));
    EXPECT_FALSE(Opens(Settings, 4));
    EXPECT_EQ(CreateFileW(nullptr, Both, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
}

// A lock held for a moment is waited for; one that stays is not, whoever asks and however.
TEST_F(Files, ALockedFileIsTriedForTwoSeconds) {
    WriteWholeFile(Terminal.Path("DiskOnChip/X.ini"), "content");
    for (const DWORD disposition : {OPEN_EXISTING, CREATE_ALWAYS}) {
        const HANDLE file = Open(Settings, disposition);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        std::thread release([file] {
            std::this_thread::sleep_for(300ms);
            CloseHandle(file);
        });
        const HANDLE second = Open(Settings, OPEN_EXISTING);
        release.join();
        ASSERT_NE(second, INVALID_HANDLE_VALUE) << disposition;
        const auto start = std::chrono::steady_clock::now();
        std::thread shared([] { EXPECT_FALSE(Opens(Settings, OPEN_EXISTING, 1)); });
        std::thread anew([] { EXPECT_FALSE(Opens(Settings, CREATE_ALWAYS)); });
        shared.join();
        anew.join();
        EXPECT_GE(std::chrono::steady_clock::now() - start, 2s);
        CloseHandle(second);
    }
}

// The place is taken by what no file replaces. (A disk that is full: the settings file's tests.)
TEST_F(Files, AFileThatCannotBeKeptFailsWhenItIsClosed) {
    const HANDLE file = Open(Settings, CREATE_ALWAYS);
    EXPECT_TRUE(Put(file, "new"));
    mkdir(Terminal.Path("DiskOnChip/X.ini").c_str(), 0700);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(CloseHandle(file));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("X.ini is not saved: Is a directory"));
    EXPECT_NE(access(Terminal.Path("DiskOnChip/X.ini.new").c_str(), F_OK), 0);
}

TEST_F(Files, ANewFileTakesItsPlaceOnlyWhenItIsWhole) {
    const std::string host = Terminal.Path("DiskOnChip/X.ini");
    WriteWholeFile(host, "old");
    chmod(host.c_str(), 0640);
    // Root may save what is another user's.
    const bool root = geteuid() == 0;
    const uid_t owner = root ? 12345 : geteuid();
    const gid_t group = root ? 23456 : getegid();
    ASSERT_EQ(chown(host.c_str(), owner, group), 0);
    const pid_t killed = fork();
    if (killed == 0) {
        _exit(Put(Open(Settings, CREATE_ALWAYS), "half") ? 0 : 1);
    }
    int status = -1;
    EXPECT_TRUE(waitpid(killed, &status, 0) == killed && status == 0);
    EXPECT_EQ(ReadWholeFile(host), "old");

    // What a killed program left beside it does no harm, even when it is longer.
    WriteWholeFile(host + ".new", "something long that was left");
    const HANDLE file = Open(Settings, CREATE_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ReadWholeFile(host), "old");
    EXPECT_EQ(GetFileSize(file, nullptr), 0u);
    EXPECT_TRUE(Put(file, "new "));
    EXPECT_TRUE(Put(file, "content"));
    EXPECT_EQ(GetFileSize(file, nullptr), 11u);
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_EQ(ReadWholeFile(host), "new content");
    EXPECT_NE(access((host + ".new").c_str(), F_OK), 0);
    struct stat kept {};
    stat(host.c_str(), &kept);
    EXPECT_EQ(kept.st_mode & 0777, 0640u);
    EXPECT_EQ(kept.st_uid, owner);
    EXPECT_EQ(kept.st_gid, group);
}

TEST(Terminal, ANewFolderIsLaidOutAndAnOldOneLeftAlone) {
    const TemporaryTerminal parent;
    const std::string folder = parent.Path("deep/er/terminal");
    layer::UseTerminalFolder(folder + "//");
    EXPECT_EQ(layer::TerminalFolder(), folder);
    struct stat status {};
    for (const char* name : {"", "/DiskOnChip", "/Windows", "/windows"}) {
        ASSERT_EQ(stat((folder + name).c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 0777, 0700u) << name;
    }
    EXPECT_GT(ReadWholeFile(folder + "/Windows/LowBatt.wav").size(), 44u);
    const std::string identity = layer::TerminalIdentity();
    unlink((folder + "/Windows/LowBatt.wav").c_str());
    ASSERT_EQ(symlink(folder.c_str(), parent.Path("link").c_str()), 0);
    layer::UseTerminalFolder(parent.Path("link"));
    EXPECT_EQ(layer::TerminalIdentity(), identity) << "one terminal, whatever the way to it";
    EXPECT_NE(access((folder + "/Windows/LowBatt.wav").c_str(), F_OK), 0) << "a removed sound stays away";
}

}  // namespace
