#include "link/hex_convert.h"

#include <gtest/gtest.h>

#include "hex_bytes.h"

namespace {

constexpr BYTE Untouched = 0xEE;

DWORD Convert(int mode, const std::vector<BYTE>& input, std::vector<BYTE>& output) {
    output.assign(9000, Untouched);
    const DWORD size = HexConvert(mode, input.data(), output.data(), static_cast<DWORD>(input.size()));
    EXPECT_EQ(Untouched, output[size]);
    output.resize(size);
    return size;
}

TEST(HexConvert, RefusesLengthsOutsideItsLimits) {
    const struct {
        int Mode;
        std::size_t Length;
        DWORD Expected;
    } cases[] = {
        {HexEncode, 0, 0},    {HexEncode, 1, 2},    {HexEncode, 2047, 4094}, {HexEncode, 2048, 0},
        {HexDecode, 0, 0},    {HexDecode, 3, 0},    {HexDecode, 2, 1},       {HexDecode, 8192, 4096},
        {HexDecode, 8193, 0}, {HexDecode, 8194, 0},
    };
    for (const auto& c : cases) {
        std::vector<BYTE> output;
        EXPECT_EQ(c.Expected, Convert(c.Mode, std::vector<BYTE>(c.Length, '0'), output)) << c.Length;
    }
}

}  // namespace
