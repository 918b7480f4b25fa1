#include "tests/e2e/end_to_end.h"

#include <mqueue.h>
#include <semaphore.h>

#include <cerrno>
#include <filesystem>

#include "platform/linux/kernel/terminal.h"
#include "settings/defaults.h"
#include "settings/record.h"
#include "settings/settings_file.h"
#include "tests/e2e/wine_screen.h"

EndToEnd::EndToEnd() {
    // Qt says a word about a machine that has none.
    setenv("XDG_RUNTIME_DIR", Terminal.Folder().c_str(), 1);
}

void EndToEnd::SetUp() {
    const char* const test = testing::UnitTest::GetInstance()->current_test_info()->name();
    if (const char* const reason = OnWine() ? WhyNotOnWine(test) : nullptr) {
        GTEST_SKIP() << reason;
    }
}

void EndToEnd::TearDown() {
    if (HasFailure()) {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "." + test->name();
        for (char& letter : name) {
            letter = letter == '/' ? '-' : letter;
        }
        const std::filesystem::path folder = std::filesystem::path(VANTREL_PROGRAMS) / "../e2e-failures";
        std::error_code ignored;
        std::filesystem::create_directories(folder, ignored);
        Desktop.Save(folder / (name + ".ppm"));
        const std::string program = Running ? "the program: " + std::to_string(Running->Ended(0)) + "\n" : "";
        WriteWholeFile(folder / (name + ".log"),
                       (Wire ? Wire->Log() : "") + program + ReadWholeFile(Terminal.Path("vantrel.log")));
    }
    Running.reset();
    Wire.reset();
}

void EndToEnd::FitReaders(const std::string& barcode, const std::string& rfid,
                          const std::vector<std::string>& options) {
    std::vector<std::string> words = {"--barcode", barcode, "--rfid", rfid};
    words.insert(words.end(), options.begin(), options.end());
    Wire.reset();
    Wire = std::make_unique<Readers>(words);
    BarcodeFitted = barcode != "none";
}

void EndToEnd::WriteSettings(WORD devices, const std::vector<SettingValue>& values) {
    DeviceFlags = devices;
    ResetSettings(ResetAllGroups);
    for (const auto& [setting, value] : values) {
        SetValue(*setting, value);
    }
    ASSERT_EQ(SaveSettings(), 1);
}

void EndToEnd::FitKnownReaders(const std::string& barcode, const std::vector<SettingValue>& values,
                               const std::string& rfid) {
    FitReaders(barcode, rfid);
    const int device = barcode == "1d"       ? Device1D
                       : barcode == "laser"  ? DeviceLaser
                       : barcode == "imager" ? DeviceImager
                                             : 0;
    std::vector<SettingValue> all = {{&general::CheckReaderStatus, '0'}};
    all.insert(all.end(), values.begin(), values.end());
    WriteSettings(static_cast<WORD>(device | (rfid != "none" ? DeviceRfid : 0)), all);
}

WORD EndToEnd::SettingsWord(std::size_t offset) const {
    const std::string file = ReadWholeFile(SettingsPath());
    if (file.size() < offset + 2) {
        ADD_FAILURE() << "the settings file has " << file.size() << " bytes";
        return 0;
    }
    return static_cast<WORD>(static_cast<BYTE>(file[offset]) | static_cast<BYTE>(file[offset + 1]) << 8);
}

void EndToEnd::Start(const std::vector<std::string>& environment, const std::vector<std::string>& words) {
    Desktop.BringToFront();
    Running = std::make_unique<Vantrel>(environment, words);
}

bool EndToEnd::WaitUntilReady(int milliseconds) {
    Wire->Forget();
    return Within(milliseconds, [this] {
        if (!BarcodeFitted) {
            // With an RFID reader alone only a press shows; the read that it starts has to end again.
            Trigger({"down"});
            return Wire->Saw("event opened com2", 100) && Wire->Saw("event searching com2", 1000);
        }
        // A release does nothing but tell the reader to stop.
        Trigger({"up"});
        return Within(100,
                      [this] { return Wire->Saw("rx com1 04 E5", 0) || Wire->Saw("command com1 OFF", 0); });
    });
}

void EndToEnd::StartReady(const std::vector<std::string>& environment) {
    Start(environment);
    ASSERT_TRUE(WaitUntilReady());
}

bool EndToEnd::PressTrigger() {
    const auto begun = [this] { return Wire->Saw("decoding com1 on", 0) || Wire->Saw("command com1 ON", 0); };
    return Within(10000, [&] {
        Trigger({"down"});
        const bool reads = Within(100, begun);
        if (!reads) {
            Trigger({"up"});
        }
        return reads;
    });
}

std::string EndToEnd::Scan(const std::string& label, std::size_t typed, int milliseconds) {
    Wire->Forget();
    Wire->Command("label " + label);
    EXPECT_TRUE(PressTrigger());
    EXPECT_TRUE(Wire->Saw("event decode-sent"));
    std::string text = Desktop.Typed(typed, milliseconds);
    Trigger({"up"});
    return text;
}

std::optional<ScreenWindow> EndToEnd::Sheet() {
    for (const ScreenWindow& window : Desktop.Windows()) {
        if (window.Title == SheetTitle && window.Width > Desktop.MainWidth()) {
            return window;
        }
    }
    return std::nullopt;
}

void EndToEnd::StartAgain() {
    const std::size_t windows = Desktop.Windows().size();
    Vantrel second;
    EXPECT_EQ(second.Ended(), 0);
    ASSERT_TRUE(SettingsOpen());
    EXPECT_LE(Desktop.Windows().size(), windows + 2) << "the second start left windows";
}

bool EndToEnd::SettingsOpen(bool wanted, int milliseconds) {
    return Within(milliseconds, [&] { return Sheet().has_value() == wanted; });
}

void EndToEnd::Press(std::initializer_list<unsigned long> keys) {
    for (const unsigned long key : keys) {
        Desktop.Press(key);
        Pause(40);
    }
}

void EndToEnd::ExpectNothingLeft() {
    ExpectNothingShared();
    const std::string vibrator = ReadWholeFile(Terminal.Path("VIBRATOR"));
    EXPECT_TRUE(vibrator.empty() || vibrator.starts_with("0")) << "the vibrator is on: " << vibrator;
    EXPECT_TRUE(Desktop.KeysAreUp());
    EXPECT_TRUE(Desktop.WaitUntilGone(SheetTitle, 1000));
    EXPECT_TRUE(Desktop.WaitUntilGone("Notification icon", 5000));
    EXPECT_FALSE(Desktop.WaitForWindow(ErrorBoxTitle, 0));
}

void EndToEnd::ExpectNothingShared() {
    if (OnWine()) {
        EXPECT_EQ(WineSession::Current().Ask("shared"), std::vector<std::string>{"shared 0"});
        return;
    }
    const std::string prefix = "/vantrel-" + layer::TerminalIdentity() + "-";
    sem_t* event = sem_open((prefix + "DecodeEvent").c_str(), 0);
    EXPECT_EQ(event, SEM_FAILED) << "the event's name is still there";
    const mqd_t queue = mq_open((prefix + "QuenraDataQueue").c_str(), O_RDONLY);
    EXPECT_EQ(queue, static_cast<mqd_t>(-1)) << "the queue's name is still there";
    for (const auto& entry : std::filesystem::directory_iterator(Terminal.Path("windows"))) {
        EXPECT_FALSE(entry.is_socket()) << entry.path() << " is still there";
    }
}
