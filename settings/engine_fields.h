// The symbologies of the packet readers, the long-range laser and the 2D imager, in the order of the imager's
// words. The two share their fields; words and defaults are given as {laser, imager}, or once for both.
#pragma once

#include "resources/resource.h"
#include "settings/describe.h"

namespace engine {

using describe::Extended;
using describe::NewIn;
using describe::Parameter;

struct Words {
    WORD Laser, Imager;
};
struct Defaults {
    constexpr Defaults(WORD both) : Laser(both), Imager(both) {}
    constexpr Defaults(WORD laser, WORD imager) : Laser(laser), Imager(imager) {}
    WORD Laser, Imager;
};

constexpr Setting Field(SettingEncoding encoding, WORD item, WORD label, WORD textBase, Words words,
                        Defaults values, ReaderParameter parameter) {
    Setting setting;
    setting.Block = SettingBlock::Symbology;
    setting.Encoding = encoding;
    setting.Group = ResetGroup::BarcodeReader;
    setting.ItemId = item;
    setting.Label = label;
    setting.TextBase = textBase;
    setting.Parameter = parameter;
    setting.Places[static_cast<std::size_t>(ReaderType::LongRangeLaser)] =
        describe::Place(words.Laser, values.Laser, {1, 255});
    setting.Places[static_cast<std::size_t>(ReaderType::Imager2D)] =
        describe::Place(words.Imager, values.Imager, {1, 255});
    return setting;
}
constexpr Setting Toggle(WORD item, WORD label, Words words, Defaults values, ReaderParameter parameter) {
    return Field(SettingEncoding::Toggle, item, label, IDS_BASE_NO_YES, words, values, parameter);
}
constexpr Setting List(WORD item, WORD label, WORD firstChoice, WORD choices, Words words, Defaults values,
                       ReaderParameter parameter = {}) {
    Setting setting = Field(SettingEncoding::List, item, label, firstChoice, words, values, parameter);
    setting.ChoiceCount = choices;
    return setting;
}
constexpr Setting ShortNumber(WORD item, WORD label, Words words, Defaults values,
                              ReaderParameter parameter) {
    Setting setting = Field(SettingEncoding::Number, item, label, 0, words, values, parameter);
    setting.ShortNumber = true;
    return setting;
}
constexpr Setting Length(WORD item, WORD label, WORD rangeLabel, Words words, Defaults values,
                         const Setting& mode, ReaderParameter parameter) {
    Setting setting = Field(SettingEncoding::Number, item, label, 0, words, values, parameter);
    setting.RangeLabel = rangeLabel;
    setting.LengthMode = &mode;
    return setting;
}

SETTING(EnableUpcA, Toggle(0x1001, IDS_ENABLE_UPC_A, {0, 0}, {'1'}, Parameter(0x01)));
SETTING(EnableUpcE0, Toggle(0x1002, IDS_ENABLE_UPC_E0, {1, 1}, {'1'}, Parameter(0x02)));
SETTING(EnableUpcE1, Toggle(0x100C, IDS_ENABLE_UPC_E1, {2, 2}, {'0'}, Parameter(0x0C)));
SETTING(EnableEan8, Toggle(0x1004, IDS_ENABLE_EAN8, {3, 3}, {'1'}, Parameter(0x04)));
SETTING(EnableEan13, Toggle(0x1003, IDS_ENABLE_EAN13, {4, 4}, {'1'}, Parameter(0x03)));
SETTING(EnableBooklandEan, Toggle(0x1053, IDS_ENABLE_BOOKLAND_EAN, {5, 5}, {'0'}, Parameter(0x53)));
SETTING(DecodeSupplementaryDigitsAddon25, List(0x1010, IDS_DECODE_SUPPLEMENTARY_DIGITS_ADDON25,
                                               IDS_CHOICE_SUPPLEMENTALS, 3, {6, 6}, {'0'}, Parameter(0x10)));
SETTING(SupplementaryRedundancy,
        ShortNumber(0x1050, IDS_SUPPLEMENTARY_REDUNDANCY, {7, 7}, {10}, Parameter(0x50)));
SETTING(TransmitUpcACheckDigit,
        Toggle(0x1028, IDS_TRANSMIT_UPC_A_CHECK_DIGIT, {8, 8}, {'1'}, Parameter(0x28)));
SETTING(TransmitUpcE0CheckDigit,
        Toggle(0x1029, IDS_TRANSMIT_UPC_E0_CHECK_DIGIT, {9, 9}, {'1'}, Parameter(0x29)));
SETTING(TransmitUpcE1CheckDigit,
        Toggle(0x102A, IDS_TRANSMIT_UPC_E1_CHECK_DIGIT, {10, 10}, {'1'}, Parameter(0x2A)));
SETTING(UpcAPreamble,
        List(0x1022, IDS_UPC_A_PREAMBLE, IDS_CHOICE_PREAMBLE, 3, {11, 11}, {'1'}, Parameter(0x22)));
SETTING(UpcE0Preamble,
        List(0x1023, IDS_UPC_E0_PREAMBLE, IDS_CHOICE_PREAMBLE, 3, {12, 12}, {'1'}, Parameter(0x23)));
SETTING(UpcE1Preamble,
        List(0x1024, IDS_UPC_E1_PREAMBLE, IDS_CHOICE_PREAMBLE, 3, {13, 13}, {'1'}, Parameter(0x24)));
SETTING(ConvertUpcE0ToUpcA, Toggle(0x1025, IDS_CONVERT_UPC_E0_TO_UPC_A, {14, 14}, {'0'}, Parameter(0x25)));
SETTING(ConvertUpcE1ToUpcA, Toggle(0x1026, IDS_CONVERT_UPC_E1_TO_UPC_A, {15, 15}, {'0'}, Parameter(0x26)));
SETTING(ConvertEan8ToEan13, Toggle(0x1027, IDS_CONVERT_EAN8_TO_EAN13, {16, 16}, {'0'}, Parameter(0x27)));
SETTING(UccCouponExtendedCode,
        Toggle(0x1055, IDS_UCC_COUPON_EXTENDED_CODE, {17, 17}, {'0'}, Parameter(0x55)));
SETTING(LinearUpcEanDecode, Toggle(0x1044, IDS_LINEAR_UPC_EAN_DECODE, {18, 18}, {'0'}, Parameter(0x44)));

SETTING(EnableCode128, Toggle(0x1108, IDS_ENABLE_CODE128, {25, 25}, {'1'}, Parameter(0x08)));
SETTING(EnableEan128, Toggle(0x110E, IDS_ENABLE_EAN128, {26, 26}, {'1'}, Parameter(0x0E)));
SETTING(EnableIsbt128, Toggle(0x1154, IDS_ENABLE_ISBT128, {27, 27}, {'1'}, Parameter(0x54)));

SETTING(EnableCode39, Toggle(0x1201, IDS_ENABLE_CODE39, {35, 35}, {'1'}, Parameter(0x00)));
SETTING(EnableTriopticCode39, Toggle(0x120D, IDS_ENABLE_TRIOPTIC_CODE39, {36, 36}, {'0'}, Parameter(0x0D)));
SETTING(ConvertCode39ToCode32,
        Toggle(0x1256, IDS_CONVERT_CODE39_TO_CODE32, {37, 37}, {'0'}, Parameter(0x56)));
SETTING(Code32Prefix, Toggle(0x12E7, IDS_CODE32_PREFIX, {38, 38}, {'0'}, Parameter(0xE7)));
SETTING(Code39LengthMode,
        List(0x12FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {39, 39}, {'0'}));
SETTING(Code39Length2,
        Length(0x1212, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {40, 40}, {2}, Code39LengthMode, Parameter(0x12)));
SETTING(Code39Length1,
        Length(0x1213, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {41, 41}, {55}, Code39LengthMode, Parameter(0x13)));
SETTING(Code39VerifyCheckDigit,
        Toggle(0x1230, IDS_CODE39_VERIFY_CHECK_DIGIT, {42, 42}, {'0'}, Parameter(0x30)));
SETTING(Code39TransmitCheckDigit,
        Toggle(0x122B, IDS_CODE39_TRANSMIT_CHECK_DIGIT, {43, 43}, {'0'}, Parameter(0x2B)));
SETTING(Code39FullAscii, Toggle(0x1211, IDS_CODE39_FULL_ASCII, {44, 44}, {'0'}, Parameter(0x11)));

SETTING(EnableCode93, Toggle(0x1309, IDS_ENABLE_CODE93, {60, 60}, {'0'}, Parameter(0x09)));
SETTING(Code93LengthMode,
        List(0x13FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {61, 61}, {'0'}));
SETTING(Code93Length2,
        Length(0x131A, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {62, 62}, {4, 0}, Code93LengthMode, Parameter(0x1A)));
SETTING(Code93Length1, Length(0x131B, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {63, 63}, {55, 0}, Code93LengthMode,
                              Parameter(0x1B)));

SETTING(EnableCode11, Toggle(0x140A, IDS_ENABLE_CODE11, {NoWord, 70}, {'0'}, Parameter(0x0A)));
SETTING(Code11LengthMode,
        List(0x14FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {NoWord, 71}, {'0'}));
SETTING(Code11Length2, Length(0x141C, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {NoWord, 72}, {4}, Code11LengthMode,
                              Parameter(0x1C)));
SETTING(Code11Length1, Length(0x141D, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {NoWord, 73}, {55}, Code11LengthMode,
                              Parameter(0x1D)));
SETTING(Code11VerifyCheckDigit, List(0x1434, IDS_CODE11_VERIFY_CHECK_DIGIT, IDS_CHOICE_CODE11_CHECK_DIGIT, 3,
                                     {NoWord, 74}, {'0'}, Parameter(0x34)));
SETTING(Code11TransmitCheckDigit,
        Toggle(0x142F, IDS_CODE11_TRANSMIT_CHECK_DIGIT, {NoWord, 75}, {'0'}, Parameter(0x2F)));

SETTING(EnableInterleaved25, Toggle(0x1506, IDS_ENABLE_INTERLEAVED25, {70, 95}, {'1'}, Parameter(0x06)));
SETTING(Interleaved25LengthMode,
        List(0x15FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {71, 96}, {'0'}));
SETTING(Interleaved25Length2, Length(0x1516, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {72, 97}, {0},
                                     Interleaved25LengthMode, Parameter(0x16)));
SETTING(Interleaved25Length1, Length(0x1517, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {73, 98}, {14},
                                     Interleaved25LengthMode, Parameter(0x17)));
SETTING(Interleaved25VerifyCheckDigit,
        List(0x1531, IDS_INTERLEAVED25_VERIFY_CHECK_DIGIT, IDS_CHOICE_INTERLEAVED25_CHECK_DIGIT, 3, {74, 99},
             {'0'}, Parameter(0x31)));
SETTING(Interleaved25TransmitCheckDigit,
        Toggle(0x152C, IDS_INTERLEAVED25_TRANSMIT_CHECK_DIGIT, {75, 100}, {'0'}, Parameter(0x2C)));
SETTING(ConvertInterleaved25ToEan13,
        Toggle(0x1552, IDS_CONVERT_INTERLEAVED25_TO_EAN13, {76, 101}, {'0'}, Parameter(0x52)));

SETTING(EnableIndustrial25, Toggle(0x1605, IDS_ENABLE_INDUSTRIAL25, {95, 120}, {'0'}, Parameter(0x05)));
SETTING(Industrial25LengthMode,
        List(0x16FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {96, 121}, {'0'}));
SETTING(Industrial25Length2, Length(0x1614, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {97, 122}, {0},
                                    Industrial25LengthMode, Parameter(0x14)));
SETTING(Industrial25Length1, Length(0x1615, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {98, 123}, {12},
                                    Industrial25LengthMode, Parameter(0x15)));

SETTING(EnableCodabar, Toggle(0x1707, IDS_ENABLE_CODABAR, {105, 130}, {'0'}, Parameter(0x07)));
SETTING(CodabarLengthMode,
        List(0x17FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {106, 131}, {'0'}));
SETTING(CodabarLength2,
        Length(0x1718, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {107, 132}, {5}, CodabarLengthMode, Parameter(0x18)));
SETTING(CodabarLength1, Length(0x1719, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {108, 133}, {55}, CodabarLengthMode,
                               Parameter(0x19)));
SETTING(ClsiEditing, Toggle(0x1736, IDS_CLSI_EDITING, {109, 134}, {'0'}, Parameter(0x36)));
SETTING(NotisEditing, Toggle(0x1737, IDS_NOTIS_EDITING, {110, 135}, {'0'}, Parameter(0x37)));

SETTING(EnableMsi, Toggle(0x180B, IDS_ENABLE_MSI, {130, 155}, {'0'}, Parameter(0x0B)));
SETTING(MsiLengthMode,
        List(0x18FF, IDS_SELECT_DISCRETE_LENGTH, IDS_CHOICE_DISCRETE_LENGTH, 4, {131, 156}, {'0'}));
SETTING(MsiLength2,
        Length(0x181E, IDS_VALUE_2, IDS_MINIMUM_LENGTH, {132, 157}, {4}, MsiLengthMode, Parameter(0x1E)));
SETTING(MsiLength1,
        Length(0x181F, IDS_VALUE_1, IDS_MAXIMUM_LENGTH, {133, 158}, {55}, MsiLengthMode, Parameter(0x1F)));
SETTING(MsiCheckDigit,
        List(0x1832, IDS_MSI_CHECK_DIGIT, IDS_CHOICE_MSI_CHECK_DIGIT, 2, {134, 159}, {'0'}, Parameter(0x32)));
SETTING(MsiTransmitCheckDigit,
        Toggle(0x182E, IDS_MSI_TRANSMIT_CHECK_DIGIT, {135, 160}, {'0'}, Parameter(0x2E)));
SETTING(MsiCheckDigitAlgorithm, List(0x1833, IDS_MSI_CHECK_DIGIT_ALGORITHM, IDS_CHOICE_MSI_ALGORITHM, 2,
                                     {136, 161}, {'0'}, Parameter(0x33)));

SETTING(EnableUsPostnet, Toggle(0x1959, IDS_ENABLE_US_POSTNET, {NoWord, 180}, {'1'}, Parameter(0x59)));
SETTING(EnableUsPlanet, Toggle(0x195A, IDS_ENABLE_US_PLANET, {NoWord, 181}, {'1'}, Parameter(0x5A)));
SETTING(EnableUkPostal, Toggle(0x195B, IDS_ENABLE_UK_POSTAL, {NoWord, 182}, {'1'}, Parameter(0x5B)));
SETTING(TransmitUkCheckDigit,
        Toggle(0x1960, IDS_TRANSMIT_UK_CHECK_DIGIT, {NoWord, 183}, {'1'}, Parameter(0x60)));
SETTING(EnableJapanPostal, Toggle(0x1922, IDS_ENABLE_JAPAN_POSTAL, {NoWord, 184}, {'1'}, Extended(0x22)));
SETTING(EnableAustralianPostal,
        Toggle(0x1923, IDS_ENABLE_AUSTRALIAN_POSTAL, {NoWord, 185}, {'1'}, Extended(0x23)));
SETTING(EnableDutchPostal, Toggle(0x1946, IDS_ENABLE_DUTCH_POSTAL, {NoWord, 186}, {'1'}, Extended(0x46)));
SETTING(TransmitUsCheckDigit,
        Toggle(0x195F, IDS_TRANSMIT_US_CHECK_DIGIT, {NoWord, 187}, {'1'}, Parameter(0x5F)));

SETTING(EnableRss14, Toggle(0x1A52, IDS_ENABLE_RSS14, {155, 205}, {'0', '1'}, Extended(0x52)));
SETTING(EnableRssLimited, Toggle(0x1A53, IDS_ENABLE_RSS_LIMITED, {156, 206}, {'0', '1'}, Extended(0x53)));
SETTING(EnableRssExpanded, Toggle(0x1A54, IDS_ENABLE_RSS_EXPANDED, {157, 207}, {'0', '1'}, Extended(0x54)));
SETTING(ConvertRssToUpcEan, Toggle(0x1A8D, IDS_CONVERT_RSS_TO_UPC_EAN, {158, 208}, {'0'}, Extended(0x8D)));

SETTING(EnableCompositeCcC, Toggle(0x1B55, IDS_ENABLE_COMPOSITE_CC_C, {NoWord, 215}, {'0'}, Extended(0x55)));
SETTING(EnableCompositeCcAB,
        Toggle(0x1B56, IDS_ENABLE_COMPOSITE_CC_AB, {NoWord, 216}, {'0'}, Extended(0x56)));
SETTING(EnableCompositeTlc39,
        Toggle(0x1B73, IDS_ENABLE_COMPOSITE_TLC39, {NoWord, 217}, {'0'}, Extended(0x73)));
SETTING(EnableUpcCompositeMode, List(0x1B58, IDS_ENABLE_UPC_COMPOSITE_MODE, IDS_CHOICE_UPC_COMPOSITE, 3,
                                     {NoWord, 218}, {'1'}, Extended(0x58)));
SETTING(EnableUpcEanCode128Emulation,
        Toggle(0x1BAB, IDS_ENABLE_UPC_EAN_CODE128_EMULATION, {NoWord, 219}, {'0'}, Extended(0xAB)));

SETTING(EnablePdf417, Toggle(0x1C0F, IDS_ENABLE_PDF417, {NoWord, 225}, {'1'}, Parameter(0x0F)));
SETTING(EnableMicroPdf417, Toggle(0x1CE3, IDS_ENABLE_MICRO_PDF417, {NoWord, 226}, {'0'}, Parameter(0xE3)));
SETTING(EnableCode128Emulation,
        Toggle(0x1C7B, IDS_ENABLE_CODE128_EMULATION, {NoWord, 227}, {'0'}, Parameter(0x7B)));
SETTING(EnableDataMatrix, Toggle(0x1C24, IDS_ENABLE_DATA_MATRIX, {NoWord, 228}, {'1'}, Extended(0x24)));
SETTING(EnableMaxiCode, Toggle(0x1C26, IDS_ENABLE_MAXI_CODE, {NoWord, 229}, {'1'}, Extended(0x26)));
SETTING(EnableQrCode, Toggle(0x1C25, IDS_ENABLE_QR_CODE, {NoWord, 230}, {'1'}, Extended(0x25)));

SETTING(TransmitDecodeMode, List(0x1DBC, IDS_TRANSMIT_DECODE_MODE, IDS_CHOICE_MACRO_PDF_MODE, 3,
                                 {NoWord, 250}, {'2'}, Parameter(0xBC, 2, 4)));
SETTING(TransmitControlHeader,
        Toggle(0x1DB8, IDS_TRANSMIT_CONTROL_HEADER, {NoWord, 251}, {'0'}, Parameter(0xB8)));
SETTING(EscapeCharacters, List(0x1DE9, IDS_ESCAPE_CHARACTERS, IDS_CHOICE_ESCAPE_CHARACTERS, 2, {NoWord, 252},
                               {'0'}, Parameter(0xE9, 1, 2)));

}  // namespace engine
