#include "scan/tag_memory.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A block of the user memory as the reader sends it.
std::string BlockText(std::string_view memory, DWORD at, DWORD size) {
    std::string text;
    for (const char byte : memory.substr(at, size)) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
}

// Reads tags the way the receive thread does, and compares with a plain cut out of their memory, for every
// start and length that an editor or a settings file can hold.
TEST(TagMemory, EveryRangeGivesItsBytesFromTheFewestBlocks) {
    const struct {
        std::string_view Line;
        DWORD UserBytes, First, Size;
    } tags[] = {
        {"I0123456789ABCDEF", 44, 5, 4},
        {"M01020304", 1020, 0, 4},
        {"S0102", 22, 4, 2},
        {"VE016000000000000", 140, 0, 4},
        {"VE005000000000000", 488, 3, 8},
        {"VE004010012345678", 112, 0, 4},
        {"VE007000000000000", 256, 0, 4},
        {"V04E004", 256, 0, 4},  // the maker stands at the second byte only
        {"VE00", 256, 0, 4},
        {"X0123", 0, 0, 1},
        {"", 0, 0, 1},
    };
    for (const auto& [line, total, firstBlock, blockSize] : tags) {
        const TagGeometry geometry = GeometryOfTag(line);
        std::string memory;
        while (memory.size() < total) {
            memory += static_cast<char>('!' + memory.size() % 90);
        }
        for (const DWORD start : {0, 1, 2, 3, 4, 6, 7, 21, 22, 43, 44, 111, 112, 127, 1019, 1020, 65535}) {
            for (const DWORD maximum : {0, 1, 2, 3, 4, 5, 8, 9, 10, 127, 1020, 65535}) {
                SCOPED_TRACE(std::string(line) + " " + std::to_string(start) + " " + std::to_string(maximum));
                const std::string wanted = start < total ? memory.substr(start, maximum) : "";
                DWORD first = firstBlock, end = firstBlock;
                if (!wanted.empty()) {
                    first += start / blockSize;
                    end += static_cast<DWORD>(start + wanted.size() - 1) / blockSize + 1;
                }
                const TagRange range = PlanTagRead(geometry, start, maximum);
                ASSERT_EQ(range.FirstBlock, first);
                ASSERT_EQ(range.EndBlock, end);
                TagText text{};
                for (DWORD block = first; block < end; ++block) {
                    AppendTagBlock(text, BlockText(memory, (block - firstBlock) * blockSize, blockSize));
                }
                char data[1028];
                CopyTagRange(text, range, data);
                EXPECT_EQ(data, wanted);
            }
        }
    }
}

}  // namespace
