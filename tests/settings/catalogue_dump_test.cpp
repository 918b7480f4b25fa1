#include "tests/settings/catalogue_dump.h"

#include <fstream>
#include <sstream>

#include "settings/catalogue.h"
#include "settings/defaults.h"
#include "tests/settings/record_fixture.h"

namespace {

constexpr struct {
    const char* Name;
    WORD Flags;
} Terminals[] = {
    {"1D reader", Device1D},           {"1D reader and RFID reader", Device1D | DeviceRfid},
    {"long-range laser", DeviceLaser}, {"long-range laser and RFID reader", DeviceLaser | DeviceRfid},
    {"2D imager", DeviceImager},       {"2D imager and RFID reader", DeviceImager | DeviceRfid},
    {"RFID reader", DeviceRfid},
};

std::string DumpEverything() {
    std::string text;
    for (const auto& terminal : Terminals) {
        ClearRecord();
        DeviceFlags = terminal.Flags;
        ResetSettings(ResetAllGroups);
        BuildPageLists();
        text += "terminal with " + std::string(terminal.Name) + "\n" + DumpPages();
        if (terminal.Flags == DeviceImager)
            text += "not shown\n" + DumpHiddenItems();
    }
    return text;
}

// Every page of every terminal as a factory-new one shows it. The expected text was reviewed line by
// line: change it only together with the table it shows. On a difference the new text is left beside the
// test program.
TEST_F(RecordTest, EveryPageIsAsReviewed) {
    std::ifstream file(VANTREL_SOURCE_DIR "/tests/settings/catalogue.txt");
    ASSERT_TRUE(file) << "catalogue.txt is missing";
    const std::string dump = DumpEverything();
    std::istringstream actual(dump);
    int number = 0;
    std::string expectedLine, actualLine;
    while (std::getline(file, expectedLine)) {
        ++number;
        actualLine.clear();
        std::getline(actual, actualLine);
        if (actualLine != expectedLine) {
            std::ofstream("catalogue.actual.txt") << dump;
            FAIL() << "line " << number << "\n  expected: " << expectedLine << "\n  shown:    " << actualLine;
        }
    }
    EXPECT_FALSE(std::getline(actual, actualLine)) << "more items than reviewed: " << actualLine;
}

}  // namespace
