#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "link/parameter_download.h"
#include "settings/engine_fields.h"
#include "settings/general_fields.h"
#include "tests/settings/record_fixture.h"

namespace {

using namespace engine;

std::string PacketHex(ParameterRows rows) {
    ParameterPacket packet;
    BuildParameterPacket(rows, packet);
    return Hex({packet.Bytes.data(), packet.Length});
}

class ParameterPackets : public testing::Test {
  protected:
    void SetUp() override { Fit(DeviceImager); }

    void Fit(WORD device) {
        DeviceFlags = device;
        FillRecord('0');
        TakeSnapshots();
    }
};

// Every word holds its own number plus an offset, so that a value tells where it was taken from. The packets
// were worked out by a program of their own.
TEST_F(ParameterPackets, HoldEveryChangedFieldInOrder) {
    FillRecord(0x1234);
    TakeSnapshots();
    for (std::size_t word = 0; word < RecordWords; ++word)
        RecordWord(word) =
            static_cast<WORD>(word < SymbologyWords ? 0x70 + word : 0x150 + word - SymbologyWords);
    DeviceFlags = DeviceLaser;
    EXPECT_EQ(
        "81C60408FF014002410C4204430344534510465077284829492A4A224B234C244D254E264F27505551445208590E5A545B00"
        "630D645665E76612981399306A2B6B116C097C1AAE1BAF068616B817B9318A2C8B528C059F14D115D207A918DB19DC36AD37"
        "AE0BC21EF41FF532C62EC733C8F052DBF053DCF054DDF08DDE88BF89C0",
        PacketHex(ParameterRows::Laser));
    DeviceFlags = DeviceImager;
    EXPECT_EQ(
        "7BC60408FF014002410C4204430344534510465077284829492A4A224B234C244D254E264F27505551445208590E5A545B00"
        "630D645665E76612981399306A2B6B116C097C1AAE1BAF0A861CB81DB9348A2F8B069F16D117D231A32CA452A505B814EA15"
        "EB07C218F419F536C637C70BDB1E0D1F0E32DF2EE033E1",
        PacketHex(ParameterRows::ImagerFirst));
    EXPECT_EQ(
        "55C60408FF59F45AF55BF660F7F022F8F023F9F046FA5FFBF0520DF0530EF0540FF08D10F05517F05618F07319F0581AF0AB"
        "1B0F21E3227B23F02424F02625F02526BC3AB83BE93C88C089C1F02994F02A95F03200",
        PacketHex(ParameterRows::ImagerSecond));
}

TEST_F(ParameterPackets, HoldOnlyWhatChanged) {
    const struct {
        const Setting* Field;
        WORD Word;
        const char* First;
        const char* Second;
    } cases[] = {
        {nullptr, 0, "05C60408FF", "05C60408FF"},
        {&EnableCode128, '1', "07C60408FF0801", "05C60408FF"},
        {&SupplementaryRedundancy, 10, "07C60408FF500A", "05C60408FF"},
        {&general::DecodingAimingPattern, '1', "05C60408FF", "08C60408FFF03202"},
        {&TransmitDecodeMode, '1', "05C60408FF", "07C60408FFBC01"},
        {&TransmitDecodeMode, '2', "05C60408FF", "07C60408FFBC04"},
        {&EscapeCharacters, '1', "05C60408FF", "07C60408FFE902"},
        // Any of its three fields sends a symbology's lengths, whole.
        {&Code39LengthMode, '3', "09C60408FF12301330", "05C60408FF"},
        {&Code11Length2, 7, "09C60408FF1C001D00", "05C60408FF"},
        {&MsiLength1, 7, "09C60408FF1E001F00", "05C60408FF"},
        // Not a parameter.
        {&general::Gain, 80, "05C60408FF", "05C60408FF"},
    };
    for (const auto& c : cases) {
        Fit(DeviceImager);
        if (c.Field)
            SetValue(*c.Field, c.Word);
        EXPECT_EQ(c.First, PacketHex(ParameterRows::ImagerFirst));
        EXPECT_EQ(c.Second, PacketHex(ParameterRows::ImagerSecond));
    }
}

TEST(LengthParameters, FollowTheMode) {
    const struct {
        WORD Mode;
        BYTE Value2, Value1;
        BYTE First, Second;
    } cases[] = {
        {0, 4, 10, 0, 0},  {1, 4, 10, 10, 0}, {1, 4, 0, 4, 0}, {2, 4, 10, 10, 4}, {2, 10, 4, 10, 4},
        {3, 4, 10, 4, 10}, {3, 10, 4, 4, 10}, {3, 7, 7, 7, 7}, {4, 4, 10, 4, 10}, {0xFFD0, 9, 1, 9, 1},
    };
    for (const auto& c : cases) {
        const auto values = LengthValues(c.Mode, c.Value2, c.Value1);
        EXPECT_EQ(c.First, values[0]) << c.Mode;
        EXPECT_EQ(c.Second, values[1]) << c.Mode;
    }
}

}  // namespace
