// A terminal of its own for each end-to-end test: folder, screen, simulated readers, the real program.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "settings/general_fields.h"
#include "tests/e2e/program.h"
#include "tests/e2e/readers.h"
#include "tests/e2e/screen.h"
#include "tests/e2e/waiting.h"
#include "tests/support/temporary_terminal.h"

inline constexpr const char* SheetTitle = "Vantrel v1.29";

using SettingValue = std::pair<const Setting*, WORD>;

// What a table of cases for a test begins with.
struct Named {
    const char* Name;
};
inline std::ostream& operator<<(std::ostream& out, const Named& named) {
    return out << named.Name;
}
inline constexpr auto NameOf = [](const auto& tested) { return std::string(tested.param.Name); };

class EndToEnd : public testing::Test {
  protected:
    EndToEnd();
    // Skips what the desktop cannot do.
    void SetUp() override;
    // A failure leaves the readers' log, the program's, and a picture of the screen in the folder
    // e2e-failures.
    void TearDown() override;

    void FitReaders(const std::string& barcode, const std::string& rfid = "none",
                    const std::vector<std::string>& options = {});
    // A settings file as the program itself would leave it for these readers (bits of DeviceFlags), with
    // defaults but for the given values. The prefix and suffix are empty.
    void WriteSettings(WORD devices, const std::vector<SettingValue>& values = {});
    // Fits readers, and settings that name them and have none looked for.
    void FitKnownReaders(const std::string& barcode, const std::vector<SettingValue>& values = {},
                         const std::string& rfid = "none");
    std::string SettingsPath() const { return Terminal.Path("DiskOnChip/Vantrel.ini"); }
    // The file's word at an offset.
    WORD SettingsWord(std::size_t offset) const;
    WORD StoredReaders() const { return SettingsWord(40); }

    void Start(const std::vector<std::string>& environment = {}, const std::vector<std::string>& words = {});
    // Waits until the program takes the trigger key: reads can be started from then on.
    bool WaitUntilReady(int milliseconds = 20000);
    // Starts the program and waits.
    void StartReady(const std::vector<std::string>& environment = {});
    // Holds the trigger down; where the press came while the last scan was still busy, once more. Whether the
    // barcode reader has begun to read.
    bool PressTrigger();
    // Presents a label, holds the trigger until it has been read, releases it, and waits for the text.
    // `label` is "TYPE DATA".
    std::string Scan(const std::string& label, std::size_t typed, int milliseconds = 5000);

    // The settings sheet. The main window that it lies over has its title, but is smaller.
    std::optional<ScreenWindow> Sheet();
    // A second start has the running program open it.
    void StartAgain();
    // Waits until it is there, or gone; false when it is not in time.
    bool SettingsOpen(bool wanted = true, int milliseconds = 5000);
    void Press(std::initializer_list<unsigned long> keys);

    // Nothing of an ended program is left: names shared between processes, sockets, vibrator, keys.
    void ExpectNothingLeft();
    void ExpectNothingShared();

    TemporaryTerminal Terminal;
    const std::unique_ptr<TestScreen> Screen = MakeScreen();
    TestScreen& Desktop = *Screen;
    std::unique_ptr<Readers> Wire;
    std::unique_ptr<Vantrel> Running;
    bool BarcodeFitted = false;
};
