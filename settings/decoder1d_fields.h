// The 1D reader's symbologies, in the order of their words. A symbology's own switch comes first.
#pragma once

#include "resources/resource.h"
#include "settings/describe.h"

namespace decoder1d {

using describe::NewIn;

constexpr Setting Field(SettingEncoding encoding, WORD item, WORD label, WORD textBase, WORD word,
                        WORD value) {
    Setting setting;
    setting.Block = SettingBlock::Symbology;
    setting.Encoding = encoding;
    setting.Group = ResetGroup::BarcodeReader;
    setting.ItemId = item;
    setting.Label = label;
    setting.TextBase = textBase;
    setting.Places[static_cast<std::size_t>(ReaderType::Decoder1D)] = describe::Place(word, value, {0, 127});
    return setting;
}
constexpr Setting Symbology(WORD item, WORD label, WORD word, WORD value) {
    return Field(SettingEncoding::Toggle, item, label, IDS_BASE_DISABLED_ENABLED, word, value);
}
constexpr Setting Option(WORD item, WORD label, WORD word, WORD value) {
    return Field(SettingEncoding::Toggle, item, label, IDS_BASE_OFF_ON, word, value);
}
constexpr Setting List(WORD item, WORD label, WORD firstChoice, WORD choices, WORD word, WORD value) {
    Setting setting = Field(SettingEncoding::List, item, label, firstChoice, word, value);
    setting.ChoiceCount = choices;
    return setting;
}
constexpr Setting Length(WORD item, WORD label, WORD rangeLabel, WORD word, WORD value, const Setting& mode) {
    Setting setting = Field(SettingEncoding::Number, item, label, 0, word, value);
    setting.RangeLabel = rangeLabel;
    setting.LengthMode = &mode;
    return setting;
}

SETTING(Code39Enabled, Symbology(1000, IDS_1D_CODE_39, 0, '1'));
SETTING(Code39TransmitStartStop, Option(1001, IDS_1D_TRANSMIT_START_STOP, 1, '0'));
SETTING(Code39VerifyChecksum, Option(1002, IDS_1D_VERIFY_CHECKSUM, 2, '0'));
SETTING(Code39TransmitChecksum, Option(1003, IDS_1D_TRANSMIT_CHECKSUM, 3, '1'));
SETTING(Code39FullAscii, Option(1004, IDS_1D_CODE_39_FULL_ASCII, 4, '0'));

SETTING(ItalianPharmacodeEnabled, Symbology(1100, IDS_1D_ITALIAN_PHARMACODE, 10, '0'));
SETTING(ItalianPharmacodeTransmitChecksum, Option(1103, IDS_1D_TRANSMIT_CHECKSUM, 11, '1'));

SETTING(FrenchPharmacodeEnabled, Symbology(1200, IDS_1D_FRENCH_PHARMACODE, 20, '0'));
SETTING(FrenchPharmacodeTransmitChecksum, Option(1203, IDS_1D_TRANSMIT_CHECKSUM, 21, '1'));

SETTING(Industrial25Enabled, Symbology(1300, IDS_1D_INDUSTRIAL_25, 30, '1'));
SETTING(Industrial25StartStopCharacter,
        List(1305, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 31, '0'));
SETTING(Industrial25VerifyChecksum, Option(1302, IDS_1D_VERIFY_CHECKSUM, 32, '0'));
SETTING(Industrial25TransmitChecksum, Option(1303, IDS_1D_TRANSMIT_CHECKSUM, 33, '1'));
SETTING(Industrial25LengthQualification,
        List(1306, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 34, '1'));
SETTING(Industrial25Length2,
        Length(1307, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 35, 127, Industrial25LengthQualification));
SETTING(Industrial25Length1,
        Length(1308, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 36, 1, Industrial25LengthQualification));

SETTING(Interleaved25Enabled, Symbology(1400, IDS_1D_INTERLEAVED_25, 45, '1'));
SETTING(Interleaved25StartStopCharacter,
        List(1405, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 46, '1'));
SETTING(Interleaved25VerifyChecksum, Option(1402, IDS_1D_VERIFY_CHECKSUM, 47, '0'));
SETTING(Interleaved25TransmitChecksum, Option(1403, IDS_1D_TRANSMIT_CHECKSUM, 48, '1'));
SETTING(Interleaved25LengthQualification,
        List(1406, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 49, '1'));
SETTING(Interleaved25Length2,
        Length(1407, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 50, 126, Interleaved25LengthQualification));
SETTING(Interleaved25Length1,
        Length(1408, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 51, 1, Interleaved25LengthQualification));

SETTING(Matrix25Enabled, Symbology(1500, IDS_1D_MATRIX_25, 60, '0'));
SETTING(Matrix25StartStopCharacter,
        List(1505, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 61, '2'));
SETTING(Matrix25VerifyChecksum, Option(1502, IDS_1D_VERIFY_CHECKSUM, 62, '0'));
SETTING(Matrix25TransmitChecksum, Option(1503, IDS_1D_TRANSMIT_CHECKSUM, 63, '1'));
SETTING(Matrix25LengthQualification,
        List(1506, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 64, '1'));
SETTING(Matrix25Length2, Length(1507, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 65, 127, Matrix25LengthQualification));
SETTING(Matrix25Length1, Length(1508, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 66, 1, Matrix25LengthQualification));

SETTING(CodabarEnabled, Symbology(1600, IDS_1D_CODABAR, 75, '1'));
SETTING(CodabarStartStopCharacter,
        List(1605, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_CODABAR_START_STOP, 5, 76, '0'));

SETTING(MsiEnabled, Symbology(1700, IDS_1D_MSI, 85, '0'));
SETTING(MsiVerifyChecksum,
        List(1717, IDS_1D_MSI_VERIFY_CHECKSUM, IDS_CHOICE_MSI_VERIFY_CHECKSUM, 3, 86, '0'));
SETTING(MsiTransmitChecksum,
        List(1718, IDS_1D_MSI_TRANSMIT_CHECKSUM, IDS_CHOICE_MSI_TRANSMIT_CHECKSUM, 3, 87, '1'));
SETTING(MsiLengthQualification,
        List(1706, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 88, '1'));
SETTING(MsiLength2, Length(1707, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 89, 127, MsiLengthQualification));
SETTING(MsiLength1, Length(1708, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 90, 0, MsiLengthQualification));

SETTING(PlesseyEnabled, Symbology(1800, IDS_1D_PLESSEY, 100, '0'));
SETTING(PlesseyConvertToUkPlessey, Option(1819, IDS_1D_CONVERT_TO_UK_PLESSEY, 101, '0'));
SETTING(PlesseyTransmitChecksum, Option(1803, IDS_1D_TRANSMIT_CHECKSUM, 102, '1'));

SETTING(UpcEEnabled, Symbology(1900, IDS_1D_UPC_E, 110, '1'));
SETTING(UpcEConvertToUpcA, Option(1909, IDS_1D_CONVERT_TO_UPC_A, 111, '0'));
SETTING(UpcETransmitSystemNumber, Option(1910, IDS_1D_TRANSMIT_SYSTEM_NUMBER, 112, '0'));
SETTING(UpcETransmitChecksum, Option(1903, IDS_1D_TRANSMIT_CHECKSUM, 113, '1'));
SETTING(UpcETransmitAddon2, Option(1923, IDS_1D_TRANSMIT_ADDON_2, 114, '0'));
SETTING(UpcETransmitAddon5, Option(1924, IDS_1D_TRANSMIT_ADDON_5, 115, '0'));

SETTING(Ean8Enabled, Symbology(2000, IDS_1D_EAN_8, 125, '1'));
SETTING(Ean8TransmitChecksum, Option(2003, IDS_1D_TRANSMIT_CHECKSUM, 126, '1'));
SETTING(Ean8TransmitAddon2, Option(2023, IDS_1D_TRANSMIT_ADDON_2, 127, '0'));
SETTING(Ean8TransmitAddon5, Option(2024, IDS_1D_TRANSMIT_ADDON_5, 128, '0'));
SETTING(Ean8ConvertToEan13, Option(2011, IDS_1D_CONVERT_TO_EAN_13, 129, '0'));

SETTING(Ean13Enabled, Symbology(2100, IDS_1D_EAN_13, 140, '1'));
SETTING(Ean13ConvertToIsbn, Option(2113, IDS_1D_CONVERT_TO_ISBN, 141, '0'));
SETTING(Ean13ConvertToIssn, Option(2112, IDS_1D_CONVERT_TO_ISSN, 142, '0'));
SETTING(Ean13TransmitChecksum, Option(2103, IDS_1D_TRANSMIT_CHECKSUM, 143, '1'));
SETTING(Ean13TransmitAddon2, Option(2123, IDS_1D_TRANSMIT_ADDON_2, 144, '0'));
SETTING(Ean13TransmitAddon5, Option(2124, IDS_1D_TRANSMIT_ADDON_5, 145, '0'));
SETTING(Ean13TransmitUpcASystemNumber, Option(2114, IDS_1D_TRANSMIT_UPC_A_SYSTEM_NUMBER, 146, '1'));
SETTING(Ean13TransmitUpcAChecksum, Option(2115, IDS_1D_TRANSMIT_UPC_A_CHECKSUM, 147, '1'));
SETTING(Ean13ConvertUpcAToEan13, Option(2116, IDS_1D_CONVERT_UPC_A_TO_EAN_13, 148, '1'));

SETTING(TelepenEnabled, Symbology(2200, IDS_1D_TELEPEN, 155, '0'));
SETTING(TelepenType, List(2220, IDS_1D_TELEPEN_TYPE, IDS_CHOICE_TELEPEN_TYPE, 2, 156, '0'));

SETTING(Rss14Enabled, Symbology(2300, IDS_1D_RSS_14, 165, '0'));
SETTING(Rss14TransmitChecksum, Option(2303, IDS_1D_TRANSMIT_CHECKSUM, 166, '1'));
SETTING(Rss14TransmitApplicationId, Option(2321, IDS_1D_TRANSMIT_APPLICATION_ID, 167, '1'));
SETTING(Rss14TransmitCodeId, Option(2322, IDS_1D_TRANSMIT_CODE_ID, 168, '1'));

SETTING(RssLimitedEnabled, Symbology(2400, IDS_1D_RSS_LIMITED, 175, '0'));
SETTING(RssLimitedTransmitChecksum, Option(2403, IDS_1D_TRANSMIT_CHECKSUM, 176, '1'));
SETTING(RssLimitedTransmitApplicationId, Option(2421, IDS_1D_TRANSMIT_APPLICATION_ID, 177, '1'));
SETTING(RssLimitedTransmitCodeId, Option(2422, IDS_1D_TRANSMIT_CODE_ID, 178, '1'));

SETTING(RssExpandedEnabled, Symbology(2500, IDS_1D_RSS_EXPANDED, 185, '0'));
SETTING(RssExpandedTransmitCodeId, Option(2522, IDS_1D_TRANSMIT_CODE_ID, 186, '1'));

SETTING(Code93Enabled, Symbology(2600, IDS_1D_CODE_93, 195, '1'));

SETTING(Code128Enabled, Symbology(2700, IDS_1D_CODE_128, 205, '1'));

SETTING(Ean128Enabled, Symbology(2800, IDS_1D_EAN_128, 215, '1'));
SETTING(Ean128TransmitCodeId, Option(2822, IDS_1D_TRANSMIT_CODE_ID, 216, '0'));

}  // namespace decoder1d
