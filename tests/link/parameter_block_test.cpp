#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "link/parameter_download.h"
#include "settings/decoder1d_fields.h"
#include "settings/general_fields.h"
#include "tests/settings/record_fixture.h"

namespace {

std::string BlockHex() {
    ParameterBlock block{};
    Build1DParameterBlock(block);
    return Hex(block);
}

// Each word of the record holds '0' or '1' by one bit of its own number, so that any two fields that were
// mixed up differ in some vector. The blocks were worked out by a program of their own.
TEST(ParameterBlock, PutsEveryFieldInItsPlace) {
    const char* const expected[] = {
        "F463922D8051A41800494B04B0313130B031B03110302000000000000000",
        "58E860CE80C46440004CE990B030B1303131313110300000000000000000",
        "3FD93648003C2458004DD814313130313030303000310000000000000000",
        "5EC906B0800824580010C814303030303030B13110316000000000000000",
        "3438E7878007204000533F143030B1313030B13110316000000000000000",
        "0C7811FF8003E540000E2A00B131B1313030303000300000000000000000",
        "03F8300000001018005E2A0030303030B131B13100306000000000000000",
        "0187C7FF800000000001D594303030303030303010316000000000000000",
        "000000000000000000000014303030303030303010310000000000000000",
    };
    DeviceFlags = Device1D;
    for (int bit = 0; bit < 9; ++bit) {
        for (std::size_t word = 0; word < RecordWords; ++word) {
            const std::size_t number = word < SymbologyWords ? word + 1 : word - SymbologyWords + 301;
            RecordWord(word) = static_cast<WORD>('0' + (number >> bit & 1));
        }
        EXPECT_EQ(expected[bit], BlockHex()) << bit;
    }
}

TEST(ParameterBlock, LaysDigitsOverTheirBits) {
    using namespace decoder1d;
    const struct {
        const Setting* Field;
        WORD Word;
        std::size_t Byte;
        const char* Expected;
    } cases[] = {
        {&Industrial25StartStopCharacter, '2', 6, "02"},
        {&Interleaved25StartStopCharacter, '2', 6, "08"},
        {&Matrix25StartStopCharacter, '2', 7, "80"},
        {&CodabarStartStopCharacter, '4', 7, "48"},
        {&MsiVerifyChecksum, '2', 9, "80"},
        {&MsiTransmitChecksum, '2', 9, "20"},
        {&general::BarcodeReadRedundancy, '3', 11, "0C"},
        {&general::ScanMode, '8', 20, "80"},
        {&general::BarcodeDecodeTimeout, 0x1FE, 21, "FE"},
        {&MsiLength1, 0x102, 19, "02"},
    };
    DeviceFlags = Device1D;
    for (const auto& c : cases) {
        FillRecord('0');
        SetValue(*c.Field, c.Word);
        EXPECT_EQ(c.Expected, BlockHex().substr(2 * c.Byte, 2)) << c.Byte;
    }
    // Two neighbours that share bit 6.
    FillRecord('0');
    SetValue(CodabarStartStopCharacter, '4');
    SetValue(Matrix25StartStopCharacter, '1');
    EXPECT_EQ("48", BlockHex().substr(14, 2));
}

}  // namespace
