// The flash memory and faults.

#include <gtest/gtest.h>

#include "simulator/faults.h"
#include "simulator/memory_image.h"

namespace readers {
namespace {

TEST(FlashMemory, GapsPagesAndTheEndOfTheAddressSpace) {
    MemoryImage image;
    std::size_t changed = 9;
    EXPECT_TRUE(image.Write(0x0FFE, Bytes{1, 2, 3, 4}, changed));
    EXPECT_EQ(changed, 0u);
    EXPECT_TRUE(image.Write(0x1003, Bytes{6}, changed));
    EXPECT_TRUE(image.Write(0x1001, Bytes{4, 5}, changed));
    EXPECT_EQ(changed, 0u) << "the same value again is no change";
    EXPECT_TRUE(image.Write(0xFFFFFFFE, Bytes{7, 8}, changed));
    EXPECT_FALSE(image.Write(0xFFFFFFFF, Bytes{9, 9}, changed));
    const auto segments = image.Segments();
    ASSERT_EQ(segments.size(), 2u);
    EXPECT_EQ(segments[0].Address, 0x0FFEu);
    EXPECT_EQ(HexText(segments[0].Content), "01 02 03 04 05 06");
    EXPECT_EQ(HexText(segments[1].Content), "07 08");
    EXPECT_EQ(HexText(image.Flat(0x1002, 4)), "05 06 FF FF");
    const std::uint32_t before = image.Fingerprint();
    EXPECT_TRUE(image.Write(0x1000, Bytes{9}, changed));
    EXPECT_EQ(changed, 1u);
    EXPECT_NE(image.Fingerprint(), before);
}

TEST(FaultCounts, HappenAsOftenAsAsked) {
    const struct {
        const char* Words;
        const char* Happens;  // over six occasions; "!" when it cannot be armed
    } cases[] = {
        {"checksum x2 after1", "-xx---"},
        {"checksum always", "xxxxxx"},
        {"checksum always after4", "----xx"},
        {"checksum off", "------"},
        {"checksum 7", "!"},
        {"late soon", "!"},
        {"split 3 60", "x-----"},
        {"reply 04D", "!"},
    };
    for (const auto& test : cases) {
        const auto words = WordsOf(test.Words);
        FaultSet faults;
        std::string problem;
        std::string happens;
        if (!faults.Arm(*FindFault(words.front()), std::span(words).subspan(1), problem)) {
            happens = "!";
            EXPECT_NE(problem, "");
        }
        for (int i = 0; i < 6 && happens != "!"; ++i) {
            happens += faults.Take(words.front()) ? 'x' : '-';
        }
        EXPECT_EQ(happens, test.Happens) << test.Words;
    }
}

}  // namespace
}  // namespace readers
