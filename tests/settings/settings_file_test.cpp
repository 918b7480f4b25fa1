#include "settings/settings_file.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <vector>

#include "settings/all_fields.h"
#include "tests/settings/record_fixture.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Bytes = std::vector<unsigned char>;

class SettingsFileTest : public RecordTest {
  protected:
    Bytes ReadBack() const {
        const std::string text = ReadWholeFile(file_);
        return Bytes(text.begin(), text.end());
    }
    void Store(const Bytes& bytes) const { WriteWholeFile(file_, std::string(bytes.begin(), bytes.end())); }

    TemporaryTerminal terminal_;
    const std::string file_ = terminal_.Path("DiskOnChip/Vantrel.ini");
};

void PutWord(Bytes& bytes, std::size_t offset, unsigned word) {
    bytes[offset] = static_cast<unsigned char>(word);
    bytes[offset + 1] = static_cast<unsigned char>(word >> 8);
}

Bytes FileOf(unsigned major, unsigned minor) {
    Bytes bytes(SettingsFileSize, 0);
    PutWord(bytes, 0, major);
    PutWord(bytes, 2, minor);
    PutWord(bytes, 40, Device1D);
    PutWord(bytes, 760 + 2 * 89, 4);
    return bytes;
}

TEST_F(SettingsFileTest, EveryWordHasItsPlace) {
    DeviceFlags = 0x2124;
    Bytes expected = {1, 0, 1, 0, 5, 0, 0, 0};
    expected.resize(1100);
    PutWord(expected, 40, 0x2124);
    for (unsigned word = 0; word < RecordWords; ++word) {
        RecordWord(word) = static_cast<WORD>(0xA100 + word);
        PutWord(expected, 240 + 2 * word, 0xA100 + word);
    }

    Store(Bytes(5000, 0xEE));  // an older, longer file leaves nothing behind
    ASSERT_EQ(SaveSettings(), 1);
    EXPECT_EQ(ReadBack(), expected);

    Clear();
    ASSERT_EQ(LoadSettings(), 1);
    EXPECT_EQ(DeviceFlags, 0x2124);
    // Prefix and suffix are ended inside their words.
    for (unsigned word = 0; word < RecordWords; ++word)
        EXPECT_EQ(RecordWord(word), word == 260 + 18 || word == 260 + 29 ? 0 : 0xA100 + word) << word;
}

// The record goes on with the first choice, and so does the next start once it has saved.
TEST_F(SettingsFileTest, NothingChosenIsWrittenAndThenReplaced) {
    DeviceFlags = DeviceImager | DeviceRfid;
    SetValue(general::ActiveDevice, '0');
    SetValue(general::DataOutput, '0');
    for (const WORD loaded : {WORD{'0'}, WORD{'1'}}) {
        ASSERT_EQ(SaveSettings(), 1);
        EXPECT_TRUE(Value(general::ActiveDevice) == '1' && Value(general::DataOutput) == '1');
        ASSERT_EQ(LoadSettings(), 1);
        EXPECT_TRUE(Value(general::ActiveDevice) == loaded && Value(general::DataOutput) == loaded);
        ASSERT_EQ(SaveSettings(), 1);  // the start's own
    }
}

TEST_F(SettingsFileTest, Versions) {
    const struct {
        unsigned Major, Minor;
        WORD Active, Output;  // '0' and '1' in the file
    } cases[] = {
        {1, 1, '0', '1'}, {1, 0, '1', '2'}, {1, 2, '0', '1'},
        {2, 0, '0', '1'}, {0, 0, '0', '1'}, {0x0100, 0x0100, '0', '1'},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Major << "." << c.Minor);
        Bytes bytes = FileOf(c.Major, c.Minor);
        bytes.resize(70000, 0xAB);  // what follows a whole file does not count
        PutWord(bytes, 760, '0');
        PutWord(bytes, 770, '1');
        PutWord(bytes, 938, 0);
        Store(bytes);
        ASSERT_EQ(LoadSettings(), 1);
        EXPECT_EQ(Value(general::ActiveDevice), c.Active);
        EXPECT_EQ(Value(general::DataOutput), c.Output);
        EXPECT_EQ(Value(general::RfidReadDuration), 3);
        // It is a current file from its next save on.
        ASSERT_EQ(SaveSettings(), 1);
        EXPECT_EQ(ReadBack()[0] + 256 * ReadBack()[2], 257);
        ASSERT_EQ(LoadSettings(), 1);
        EXPECT_EQ(Value(general::ActiveDevice), c.Active);
    }
}

TEST_F(SettingsFileTest, WithoutAWholeFileTheRecordStays) {
    DeviceFlags = DeviceLaser;
    SetValue(engine::EnableCode128, '1');
    GeneralSettings[0] = '3';
    EXPECT_EQ(LoadSettings(), 0) << "no file";
    for (const std::size_t size : {0, 3, 42, 1099}) {
        Bytes bytes = FileOf(1, 1);
        bytes.resize(size);
        Store(bytes);
        testing::internal::CaptureStderr();
        EXPECT_EQ(LoadSettings(), 0) << size;
        EXPECT_NE(testing::internal::GetCapturedStderr().find(std::to_string(size) + " bytes"),
                  std::string::npos);
    }
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(LoadSettings(), -1) << "a folder in its place";
    EXPECT_EQ(SaveSettings(), 0) << "a folder in its place";
    std::filesystem::remove(file_);
    std::filesystem::create_symlink("/proc/self/mem",
                                    file_);  // can be opened, and not be read from its start
    EXPECT_EQ(LoadSettings(), -1) << "a disk that fails";
    std::filesystem::remove_all(terminal_.Path("DiskOnChip"));
    EXPECT_EQ(SaveSettings(), 0) << "nowhere to go";
    EXPECT_EQ(DeviceFlags, DeviceLaser);
    EXPECT_EQ(SymbologySettings[25], '1');
    EXPECT_EQ(GeneralSettings[0], '3');
}

TEST_F(SettingsFileTest, OneThatFindsNoRoomIsNotSaved) {
    ASSERT_EQ(SaveSettings(), 1);
    const Bytes old = ReadBack();
    SetValue(general::AutoEnter, '2');
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{SettingsFileSize - 1, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    testing::internal::CaptureStderr();
    EXPECT_EQ(SaveSettings(), -1);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("is not saved: File too large"), std::string::npos);
    EXPECT_EQ(ReadBack(), old);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".new"));
}

TEST_F(SettingsFileTest, NobodyElseOpensTheFileMeanwhile) {
    ASSERT_EQ(SaveSettings(), 1);
    const HANDLE file = OpenSettingsFile(0);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(OpenSettingsFile(0), nullptr);
    EXPECT_EQ(LoadSettings(), -1);
    EXPECT_EQ(SaveSettings(), 0);
    CloseHandle(file);
    EXPECT_EQ(ReadBack().size(), SettingsFileSize) << "a refused save must not empty the file";
    EXPECT_EQ(LoadSettings(), 1);
}

}  // namespace
