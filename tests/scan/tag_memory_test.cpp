#include "scan/tag_memory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(TagMemory, UserBytesByTagType) {
    const struct {
        std::string_view Line;
        DWORD UserBytes, FirstBlock;
    } cases[] = {
        {"I0123456789ABCDEF", 44, 5},
        {"M01020304", 1020, 0},
        {"S0102", 22, 4},
        {"VE016000000000000", 140, 0},
        {"VE005000000000000", 488, 3},
        {"VE004010012345678", 112, 0},
        {"VE007000000000000", 256, 0},
        {"V04E004", 256, 0},  // the maker stands at the second byte only
        {"VE00", 256, 0},
        {"X0123", 0, 0},
        {"", 0, 0},
    };
    for (const auto& [line, bytes, first] : cases) {
        const TagGeometry geometry = GeometryOfTag(line);
        EXPECT_EQ((geometry.EndBlock - geometry.FirstBlock) * geometry.BlockSize, bytes) << line;
        EXPECT_EQ(geometry.FirstBlock, first) << line;
    }
}

// Reads a tag whose user memory holds `memory`, the way the receive thread does, and compares with a plain
// cut out of that memory, for every start and length that an editor or a settings file can hold.
TEST(TagMemory, EveryRangeGivesItsBytesFromTheFewestBlocks) {
    for (const std::string_view line : {"I01", "S01", "VE016", "VE005", "VE004", "VE007", "M01"}) {
        const TagGeometry geometry = GeometryOfTag(line);
        const DWORD total = (geometry.EndBlock - geometry.FirstBlock) * geometry.BlockSize;
        std::string memory;
        std::vector<std::string> blocks;
        for (DWORD at = 0; at < total; ++at) {
            memory += static_cast<char>('!' + at % 90);
        }
        for (DWORD at = 0; at < total; at += geometry.BlockSize) {
            std::string text;
            for (DWORD byte = at; byte < at + geometry.BlockSize; ++byte) {
                text += "0123456789abcdef"[memory[byte] >> 4];
                text += "0123456789ABCDEF"[memory[byte] & 15];
            }
            blocks.push_back(text);
        }
        for (const DWORD start :
             {0u, 1u, 2u, 3u, 4u, 6u, 7u, 21u, 22u, 43u, 44u, 111u, 112u, 127u, 1019u, 1020u, 65535u}) {
            for (const DWORD maximum : {0u, 1u, 2u, 3u, 4u, 5u, 8u, 9u, 10u, 127u, 1020u, 65535u}) {
                SCOPED_TRACE(std::string(line) + " " + std::to_string(start) + " " + std::to_string(maximum));
                const TagRange range = PlanTagRead(geometry, start, maximum);
                const std::string wanted = start < total ? memory.substr(start, maximum) : "";
                ASSERT_LE(range.EndBlock, geometry.EndBlock);
                ASSERT_GE(range.FirstBlock, geometry.FirstBlock);
                if (wanted.empty()) {
                    EXPECT_EQ(range.FirstBlock, range.EndBlock);
                } else {
                    EXPECT_EQ(range.FirstBlock, geometry.FirstBlock + start / geometry.BlockSize);
                    EXPECT_EQ(range.EndBlock,
                              geometry.FirstBlock + (start + wanted.size() - 1) / geometry.BlockSize + 1);
                }
                TagText text{};
                for (DWORD block = range.FirstBlock; block < range.EndBlock; ++block) {
                    AppendTagBlock(text, blocks.at(block - geometry.FirstBlock));
                }
                char data[1028];
                CopyTagRange(text, range, data);
                EXPECT_EQ(data, wanted);
            }
        }
    }
}

TEST(TagMemory, BlocksThatAreTooLongNeverOverrunTheMemory) {
    TagText text{};
    for (int block = 0; block < 255; ++block) {
        AppendTagBlock(text, "4142434445464748494A");
    }
    EXPECT_EQ(text.Length, sizeof text.Text - 1);
    EXPECT_EQ(text.Text[text.Length], '\0');
}

}  // namespace
