#include "platform/linux/serial/receive_queue.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

// Whole and byte by byte.
TEST(ReceiveQueue, BreaksDoubledAndDamagedBytes) {
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
        layer::ReceiveQueue whole, cut;
        int breaks = 0;
        whole.Add(test.In, nullptr);
        for (const BYTE byte : test.In) {
            cut.Add({&byte, 1}, nullptr);
            breaks += std::exchange(cut.Broke, false);
        }
        EXPECT_EQ(whole.Broke, test.Breaks > 0);
        EXPECT_EQ(breaks, test.Breaks);
        for (layer::ReceiveQueue* queue : {&whole, &cut}) {
            Bytes out(10);
            out.resize(queue->Take(out.data(), 10));
            EXPECT_EQ(out, test.Out);
        }
    }
}

}  // namespace
