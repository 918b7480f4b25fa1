#include "settings/defaults.h"

#include <algorithm>

#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/settings/record_fixture.h"

namespace {

using DefaultsTest = RecordTest;

constexpr WORD Filled = 0x7777;  // in every word before a reset: what still holds it was left alone

void FillRecord() {
    for (Relaxed<WORD>& word : SymbologySettings)
        word = Filled;
    for (Relaxed<WORD>& word : GeneralSettings)
        word = Filled;
}

// Whether all these general words were left alone, or all reset.
bool GeneralKept(std::size_t first, std::size_t last) {
    return std::all_of(&GeneralSettings[first], &GeneralSettings[last] + 1,
                       [](const Relaxed<WORD>& word) { return word == Filled; });
}

bool GeneralReset(std::size_t first, std::size_t last) {
    return std::none_of(&GeneralSettings[first], &GeneralSettings[last] + 1,
                        [](const Relaxed<WORD>& word) { return word == Filled; });
}

TEST_F(DefaultsTest, EachGroupResetsItsWordsOnly) {
    DeviceFlags = DeviceImager | DeviceRfid;
    FillRecord();
    ResetSettings(0);
    EXPECT_TRUE(GeneralKept(0, 169));

    ResetSettings(0x100);
    EXPECT_TRUE(GeneralReset(0, 7) && GeneralReset(30, 32));
    EXPECT_TRUE(GeneralKept(8, 29) && GeneralKept(33, 169));
    EXPECT_EQ(SymbologySettings[0], Filled);

    FillRecord();
    ResetSettings(0x200);
    EXPECT_TRUE(GeneralReset(80, 83) && GeneralReset(87, 89));
    EXPECT_TRUE(GeneralKept(0, 79) && GeneralKept(84, 86) && GeneralKept(90, 169));

    FillRecord();
    ResetSettings(0x400);
    EXPECT_TRUE(GeneralKept(0, 111) && GeneralKept(114, 114) && GeneralKept(148, 169));
    EXPECT_TRUE(GeneralReset(112, 113) && GeneralReset(115, 147));
    EXPECT_EQ(ShellState.ReconfigureReaders, 0);
}

TEST_F(DefaultsTest, TheReaderGroupFollowsTheReader) {
    const struct {
        WORD Flags;
        std::size_t FirstTail, LastTail;
        WORD Word112;
    } cases[] = {
        {Device1D, 110, 113, '0'},
        {DeviceLaser | DeviceImager, 111, 113, 10},
        {DeviceImager, 112, 113, 99},
    };
    for (const auto& c : cases) {
        DeviceFlags = c.Flags;
        FillRecord();
        ResetSettings(0x400);
        EXPECT_TRUE(GeneralReset(c.FirstTail, c.LastTail)) << c.Flags;
        EXPECT_TRUE(GeneralKept(80, c.FirstTail - 1)) << c.Flags;
        EXPECT_EQ(GeneralSettings[112], c.Word112) << c.Flags;
        EXPECT_TRUE(c.Flags == DeviceImager || GeneralKept(114, 147)) << c.Flags;
        for (const Relaxed<WORD>& word : SymbologySettings)
            EXPECT_NE(word, Filled) << c.Flags;
    }
    DeviceFlags = DeviceRfid;
    FillRecord();
    ResetSettings(0x400);
    EXPECT_TRUE(GeneralKept(0, 169));
    for (const Relaxed<WORD>& word : SymbologySettings)
        EXPECT_EQ(word, 0);
}

TEST_F(DefaultsTest, Reconcile) {
    enum class Fate { Kept, Cleared, Reset };
    const struct {
        WORD Stored, Detected, Flags;
        Fate Symbology, Tags;
        WORD Reconfigure;
    } cases[] = {
        {33, 36, 36, Fate::Reset, Fate::Reset, 1},
        {1, 33, 33, Fate::Kept, Fate::Reset, 1},
        {33, 1, 1, Fate::Kept, Fate::Cleared, 0},
        // The RFID bit goes with the barcode reader's, so that nothing is left to compare.
        {33, 4, 4, Fate::Reset, Fate::Kept, 1},
        {4, 0, 0, Fate::Cleared, Fate::Kept, 0},
        {4, 32, 32, Fate::Cleared, Fate::Reset, 1},
        {1, 1 | 0xFFD8, 1, Fate::Kept, Fate::Kept, 0},
        // Bits without a meaning stay where only the RFID reader changes.
        {0x49, 33, 0x69, Fate::Kept, Fate::Reset, 1},
        {3, 1, 1, Fate::Reset, Fate::Kept, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Stored << " -> " << c.Detected);
        FillRecord();
        DeviceFlags = c.Stored;
        ShellState.ReconfigureReaders = 0;
        ReconcileDeviceFlags(c.Detected);
        EXPECT_EQ(DeviceFlags, c.Flags);
        EXPECT_EQ(ShellState.ReconfigureReaders, c.Reconfigure);
        const WORD unused = SymbologySettings[259];
        const WORD first = SymbologySettings[0];
        EXPECT_EQ(unused, c.Symbology == Fate::Kept ? Filled : 0);
        EXPECT_EQ(first, c.Symbology == Fate::Kept ? Filled : c.Symbology == Fate::Reset ? '1' : 0);
        EXPECT_EQ(GeneralSettings[89], c.Tags == Fate::Kept ? Filled : c.Tags == Fate::Reset ? 3 : 0);
        EXPECT_EQ(GeneralSettings[109], c.Tags == Fate::Cleared ? 0 : Filled);
        EXPECT_EQ(GeneralSettings[79], Filled);
        EXPECT_EQ(GeneralSettings[110], c.Symbology == Fate::Reset && c.Flags == 1 ? '6' : Filled);
    }
}

}  // namespace
