// Tags, the flash memory, faults and typed data.

#include <gtest/gtest.h>

#include "simulator/faults.h"
#include "simulator/memory_image.h"
#include "simulator/tag.h"

namespace readers {
namespace {

TEST(TagMemory, FirstAndLastBlockOfEachKind) {
    const struct {
        char Type;
        const char* Uid;
        std::uint32_t First, Last;
        std::size_t Size;
    } cases[] = {
        {'I', "E007", 5, 15, 44},    {'M', "E002", 0, 254, 1020}, {'S', "E016", 4, 14, 22},
        {'V', "E016AA", 0, 34, 140}, {'V', "E005", 3, 63, 488},   {'V', "E004", 0, 27, 112},
        {'V', "E007", 0, 63, 256},   {'V', "E0", 0, 63, 256},
    };
    for (const auto& test : cases) {
        const auto tag = MakeTag(test.Type, test.Uid, std::nullopt);
        ASSERT_TRUE(tag);
        EXPECT_EQ(tag->Memory.size(), test.Size) << test.Type << test.Uid;
        EXPECT_TRUE(BlockText(*tag, test.First) && BlockText(*tag, test.Last));
        EXPECT_FALSE(BlockText(*tag, test.Last + 1));
        EXPECT_FALSE(test.First > 0 && BlockText(*tag, test.First - 1));
        EXPECT_FALSE(MakeTag(test.Type, test.Uid, Bytes(test.Size + 1)));
        EXPECT_TRUE(MakeTag(test.Type, test.Uid, Bytes(test.Size)));
    }
    EXPECT_FALSE(BlockText(*MakeTag('Q', "00", std::nullopt), 0));
    EXPECT_EQ(BlockText(*MakeTag('S', "00", Bytes{0x01, 0xFE, 0x4A}), 5), "4A00");
}

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

TEST(TypedData, FormsAndMistakes) {
    EXPECT_EQ(BytesFromArgument("hex:04 e4"), (Bytes{0x04, 0xE4}));
    EXPECT_EQ(BytesFromArgument("hex:"), Bytes{});
    EXPECT_EQ(BytesFromArgument("repeat:5:ab"), BytesOf("ababa"));
    EXPECT_EQ(BytesFromArgument("repeat:2: :"), BytesOf(" :"));
    for (const char* wrong : {"hex:4", "hex:0 4", "hex:zz", "repeat:5", "repeat:5:", "repeat:-1:a",
                              "repeat:1000001:a", "random:x", "random:3:y"}) {
        EXPECT_EQ(BytesFromArgument(wrong), std::nullopt) << wrong;
    }
}

}  // namespace
}  // namespace readers
