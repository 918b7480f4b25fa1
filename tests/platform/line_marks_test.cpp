#include "platform/linux/serial/line_marks.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

TEST(LineMarks, BreaksDoubledAndDamagedBytes) {
    const struct {
        Bytes In, Out;
        int Breaks;
    } cases[] = {
        {{0x41, 0xFF, 0xFF, 0x42}, {0x41, 0xFF, 0x42}, 0},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0x00}, {0xFF, 0xFF, 0x00}, 0},
        {{0xFF, 0xFF, 0x00, 0x00}, {0xFF, 0x00, 0x00}, 0},
        {{0xFF, 0x00, 0x00}, {}, 1},
        {{0x41, 0xFF, 0x00, 0x00, 0x42, 0xFF, 0x00, 0x00}, {0x41, 0x42}, 2},
        {{0xFF, 0x00, 0x55, 0x00}, {0x55, 0x00}, 0},
        {{0xFF, 0x41}, {0xFF, 0x41}, 0},
    };
    for (const auto& test : cases) {
        layer::LineMarks marks;
        Bytes out;
        int breaks = 0;
        for (const BYTE byte : test.In) {
            const auto result = marks.Take(byte);
            out.insert(out.end(), result.bytes, result.bytes + result.count);
            breaks += result.broke;
        }
        EXPECT_EQ(out, test.Out);
        EXPECT_EQ(breaks, test.Breaks);
    }
}

}  // namespace
