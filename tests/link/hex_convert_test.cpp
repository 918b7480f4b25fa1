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

TEST(HexConvert, ConvertsBothWays) {
    std::vector<BYTE> output;
    EXPECT_EQ(4u, Convert(HexEncode, Bytes("01 FE"), output));
    EXPECT_EQ(TextBytes("01FE"), output);
    EXPECT_EQ(2u, Convert(HexDecode, TextBytes("4a5B"), output));
    EXPECT_EQ("4A5B", Hex(output));
    // Any mode but 41 decodes; characters that are no digits still give one byte a pair.
    EXPECT_EQ(2u, Convert(0, TextBytes("fF??"), output));
    EXPECT_EQ(0xFF, output[0]);
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

TEST(HexConvert, WorksInPlace) {
    std::vector<BYTE> buffer = Bytes("12 34 AB 00 00 00");
    EXPECT_EQ(6u, HexConvert(HexEncode, buffer.data(), buffer.data(), 3));
    EXPECT_EQ(TextBytes("1234AB"), buffer);
}

}  // namespace
