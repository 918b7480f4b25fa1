#include "settings/defaults.h"

#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/settings/record_fixture.h"

namespace {

using DefaultsTest = RecordTest;

constexpr WORD Filled = 0x7777;  // in every word before a reset: what still holds it was left alone

// Which general words are not as they were filled: "0-7 30-32".
std::string GeneralWordsReset() {
    std::string ranges;
    for (std::size_t word = 0; word < GeneralWords; ++word) {
        if (GeneralSettings[word] == Filled)
            continue;
        const std::size_t first = word;
        while (word + 1 < GeneralWords && GeneralSettings[word + 1] != Filled)
            ++word;
        ranges += (ranges.empty() ? "" : " ") + std::to_string(first) + "-" + std::to_string(word);
    }
    return ranges;
}

TEST_F(DefaultsTest, EachGroupResetsItsWordsOnly) {
    constexpr DWORD Readers = 0x400;
    const struct {
        DWORD Flags, Group;
        const char* General;
        WORD Word112, FirstSymbology, LastSymbology;
    } cases[] = {
        {DeviceImager | DeviceRfid, 0, "", Filled, Filled, Filled},
        {DeviceImager | DeviceRfid, 0x100, "0-7 30-32", Filled, Filled, Filled},
        {DeviceImager | DeviceRfid, 0x200, "80-83 87-89", Filled, Filled, Filled},
        {DeviceImager | DeviceRfid, Readers, "112-113 115-147", 99, '1', 0},
        {DeviceImager, Readers, "112-113 115-147", 99, '1', 0},
        {DeviceLaser | DeviceImager, Readers, "111-113", 10, '1', 0},
        {Device1D, Readers, "110-113", '0', '1', 0},
        {DeviceRfid, Readers, "", Filled, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Flags << " " << c.Group);
        DeviceFlags = static_cast<WORD>(c.Flags);
        FillRecord(Filled);
        ResetSettings(c.Group);
        EXPECT_EQ(GeneralWordsReset(), c.General);
        EXPECT_EQ(GeneralSettings[112], c.Word112);
        EXPECT_EQ(SymbologySettings[0], c.FirstSymbology);
        EXPECT_EQ(SymbologySettings[259], c.LastSymbology);
    }
}

TEST_F(DefaultsTest, Reconcile) {
    const struct {
        WORD Stored, Detected, Flags, Symbology;
        const char* General;
        WORD Reconfigure;
    } cases[] = {
        {33, 36, 36, '1', "80-83 87-89 112-113 115-147", 1},
        {1, 33, 33, Filled, "80-83 87-89", 1},
        {33, 1, 1, Filled, "80-109", 0},
        // The RFID bit goes with the barcode reader's, so that nothing is left to compare.
        {33, 4, 4, '1', "112-113 115-147", 1},
        {4, 0, 0, 0, "", 0},
        {4, 32, 32, 0, "80-83 87-89", 1},
        {1, 1 | 0xFFD8, 1, Filled, "", 0},
        // Bits without a meaning stay where only the RFID reader changes.
        {0x49, 33, 0x69, Filled, "80-83 87-89", 1},
        {3, 1, 1, '1', "110-113", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Stored << " -> " << c.Detected);
        FillRecord(Filled);
        DeviceFlags = c.Stored;
        ShellState.ReconfigureReaders = 0;
        ReconcileDeviceFlags(c.Detected);
        EXPECT_EQ(DeviceFlags, c.Flags);
        EXPECT_EQ(ShellState.ReconfigureReaders, c.Reconfigure);
        EXPECT_EQ(SymbologySettings[0], c.Symbology);
        EXPECT_EQ(SymbologySettings[259], c.Symbology == Filled ? Filled : 0);
        EXPECT_EQ(GeneralWordsReset(), c.General);
    }
}

}  // namespace
