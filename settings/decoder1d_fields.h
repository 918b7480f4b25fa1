// The 1D reader's symbologies, in the order of their words. A symbology's own switch comes first.
#pragma once

#include "resources/resource.h"
#include "settings/describe.h"

namespace decoder1d {

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

inline constexpr Setting Code39Enabled = Symbology(1000, IDS_1D_CODE_39, 0, '1');
inline constexpr Setting Code39TransmitStartStop = Option(1001, IDS_1D_TRANSMIT_START_STOP, 1, '0');
inline constexpr Setting Code39VerifyChecksum = Option(1002, IDS_1D_VERIFY_CHECKSUM, 2, '0');
inline constexpr Setting Code39TransmitChecksum = Option(1003, IDS_1D_TRANSMIT_CHECKSUM, 3, '1');
inline constexpr Setting Code39FullAscii = Option(1004, IDS_1D_CODE_39_FULL_ASCII, 4, '0');

inline constexpr Setting ItalianPharmacodeEnabled = Symbology(1100, IDS_1D_ITALIAN_PHARMACODE, 10, '0');
inline constexpr Setting ItalianPharmacodeTransmitChecksum = Option(1103, IDS_1D_TRANSMIT_CHECKSUM, 11, '1');

inline constexpr Setting FrenchPharmacodeEnabled = Symbology(1200, IDS_1D_FRENCH_PHARMACODE, 20, '0');
inline constexpr Setting FrenchPharmacodeTransmitChecksum = Option(1203, IDS_1D_TRANSMIT_CHECKSUM, 21, '1');

inline constexpr Setting Industrial25Enabled = Symbology(1300, IDS_1D_INDUSTRIAL_25, 30, '1');
inline constexpr Setting Industrial25StartStopCharacter =
    List(1305, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 31, '0');
inline constexpr Setting Industrial25VerifyChecksum = Option(1302, IDS_1D_VERIFY_CHECKSUM, 32, '0');
inline constexpr Setting Industrial25TransmitChecksum = Option(1303, IDS_1D_TRANSMIT_CHECKSUM, 33, '1');
inline constexpr Setting Industrial25LengthQualification =
    List(1306, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 34, '1');
inline constexpr Setting Industrial25Length2 =
    Length(1307, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 35, 127, Industrial25LengthQualification);
inline constexpr Setting Industrial25Length1 =
    Length(1308, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 36, 1, Industrial25LengthQualification);

inline constexpr Setting Interleaved25Enabled = Symbology(1400, IDS_1D_INTERLEAVED_25, 45, '1');
inline constexpr Setting Interleaved25StartStopCharacter =
    List(1405, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 46, '1');
inline constexpr Setting Interleaved25VerifyChecksum = Option(1402, IDS_1D_VERIFY_CHECKSUM, 47, '0');
inline constexpr Setting Interleaved25TransmitChecksum = Option(1403, IDS_1D_TRANSMIT_CHECKSUM, 48, '1');
inline constexpr Setting Interleaved25LengthQualification =
    List(1406, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 49, '1');
inline constexpr Setting Interleaved25Length2 =
    Length(1407, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 50, 126, Interleaved25LengthQualification);
inline constexpr Setting Interleaved25Length1 =
    Length(1408, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 51, 1, Interleaved25LengthQualification);

inline constexpr Setting Matrix25Enabled = Symbology(1500, IDS_1D_MATRIX_25, 60, '0');
inline constexpr Setting Matrix25StartStopCharacter =
    List(1505, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_INDUSTRIAL_START_STOP, 3, 61, '2');
inline constexpr Setting Matrix25VerifyChecksum = Option(1502, IDS_1D_VERIFY_CHECKSUM, 62, '0');
inline constexpr Setting Matrix25TransmitChecksum = Option(1503, IDS_1D_TRANSMIT_CHECKSUM, 63, '1');
inline constexpr Setting Matrix25LengthQualification =
    List(1506, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 64, '1');
inline constexpr Setting Matrix25Length2 =
    Length(1507, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 65, 127, Matrix25LengthQualification);
inline constexpr Setting Matrix25Length1 =
    Length(1508, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 66, 1, Matrix25LengthQualification);

inline constexpr Setting CodabarEnabled = Symbology(1600, IDS_1D_CODABAR, 75, '1');
inline constexpr Setting CodabarStartStopCharacter =
    List(1605, IDS_1D_START_STOP_CHARACTER, IDS_CHOICE_CODABAR_START_STOP, 5, 76, '0');

inline constexpr Setting MsiEnabled = Symbology(1700, IDS_1D_MSI, 85, '0');
inline constexpr Setting MsiVerifyChecksum =
    List(1717, IDS_1D_MSI_VERIFY_CHECKSUM, IDS_CHOICE_MSI_VERIFY_CHECKSUM, 3, 86, '0');
inline constexpr Setting MsiTransmitChecksum =
    List(1718, IDS_1D_MSI_TRANSMIT_CHECKSUM, IDS_CHOICE_MSI_TRANSMIT_CHECKSUM, 3, 87, '1');
inline constexpr Setting MsiLengthQualification =
    List(1706, IDS_1D_LENGTH_QUALIFICATION, IDS_CHOICE_LENGTH_QUALIFICATION, 2, 88, '1');
inline constexpr Setting MsiLength2 =
    Length(1707, IDS_VALUE_2, IDS_MAXIMUM_LENGTH, 89, 127, MsiLengthQualification);
inline constexpr Setting MsiLength1 =
    Length(1708, IDS_VALUE_1, IDS_MINIMUM_LENGTH, 90, 0, MsiLengthQualification);

inline constexpr Setting PlesseyEnabled = Symbology(1800, IDS_1D_PLESSEY, 100, '0');
inline constexpr Setting PlesseyConvertToUkPlessey = Option(1819, IDS_1D_CONVERT_TO_UK_PLESSEY, 101, '0');
inline constexpr Setting PlesseyTransmitChecksum = Option(1803, IDS_1D_TRANSMIT_CHECKSUM, 102, '1');

inline constexpr Setting UpcEEnabled = Symbology(1900, IDS_1D_UPC_E, 110, '1');
inline constexpr Setting UpcEConvertToUpcA = Option(1909, IDS_1D_CONVERT_TO_UPC_A, 111, '0');
inline constexpr Setting UpcETransmitSystemNumber = Option(1910, IDS_1D_TRANSMIT_SYSTEM_NUMBER, 112, '0');
inline constexpr Setting UpcETransmitChecksum = Option(1903, IDS_1D_TRANSMIT_CHECKSUM, 113, '1');
inline constexpr Setting UpcETransmitAddon2 = Option(1923, IDS_1D_TRANSMIT_ADDON_2, 114, '0');
inline constexpr Setting UpcETransmitAddon5 = Option(1924, IDS_1D_TRANSMIT_ADDON_5, 115, '0');

inline constexpr Setting Ean8Enabled = Symbology(2000, IDS_1D_EAN_8, 125, '1');
inline constexpr Setting Ean8TransmitChecksum = Option(2003, IDS_1D_TRANSMIT_CHECKSUM, 126, '1');
inline constexpr Setting Ean8TransmitAddon2 = Option(2023, IDS_1D_TRANSMIT_ADDON_2, 127, '0');
inline constexpr Setting Ean8TransmitAddon5 = Option(2024, IDS_1D_TRANSMIT_ADDON_5, 128, '0');
inline constexpr Setting Ean8ConvertToEan13 = Option(2011, IDS_1D_CONVERT_TO_EAN_13, 129, '0');

inline constexpr Setting Ean13Enabled = Symbology(2100, IDS_1D_EAN_13, 140, '1');
inline constexpr Setting Ean13ConvertToIsbn = Option(2113, IDS_1D_CONVERT_TO_ISBN, 141, '0');
inline constexpr Setting Ean13ConvertToIssn = Option(2112, IDS_1D_CONVERT_TO_ISSN, 142, '0');
inline constexpr Setting Ean13TransmitChecksum = Option(2103, IDS_1D_TRANSMIT_CHECKSUM, 143, '1');
inline constexpr Setting Ean13TransmitAddon2 = Option(2123, IDS_1D_TRANSMIT_ADDON_2, 144, '0');
inline constexpr Setting Ean13TransmitAddon5 = Option(2124, IDS_1D_TRANSMIT_ADDON_5, 145, '0');
inline constexpr Setting Ean13TransmitUpcASystemNumber =
    Option(2114, IDS_1D_TRANSMIT_UPC_A_SYSTEM_NUMBER, 146, '1');
inline constexpr Setting Ean13TransmitUpcAChecksum = Option(2115, IDS_1D_TRANSMIT_UPC_A_CHECKSUM, 147, '1');
inline constexpr Setting Ean13ConvertUpcAToEan13 = Option(2116, IDS_1D_CONVERT_UPC_A_TO_EAN_13, 148, '1');

inline constexpr Setting TelepenEnabled = Symbology(2200, IDS_1D_TELEPEN, 155, '0');
inline constexpr Setting TelepenType = List(2220, IDS_1D_TELEPEN_TYPE, IDS_CHOICE_TELEPEN_TYPE, 2, 156, '0');

inline constexpr Setting Rss14Enabled = Symbology(2300, IDS_1D_RSS_14, 165, '0');
inline constexpr Setting Rss14TransmitChecksum = Option(2303, IDS_1D_TRANSMIT_CHECKSUM, 166, '1');
inline constexpr Setting Rss14TransmitApplicationId = Option(2321, IDS_1D_TRANSMIT_APPLICATION_ID, 167, '1');
inline constexpr Setting Rss14TransmitCodeId = Option(2322, IDS_1D_TRANSMIT_CODE_ID, 168, '1');

inline constexpr Setting RssLimitedEnabled = Symbology(2400, IDS_1D_RSS_LIMITED, 175, '0');
inline constexpr Setting RssLimitedTransmitChecksum = Option(2403, IDS_1D_TRANSMIT_CHECKSUM, 176, '1');
inline constexpr Setting RssLimitedTransmitApplicationId =
    Option(2421, IDS_1D_TRANSMIT_APPLICATION_ID, 177, '1');
inline constexpr Setting RssLimitedTransmitCodeId = Option(2422, IDS_1D_TRANSMIT_CODE_ID, 178, '1');

inline constexpr Setting RssExpandedEnabled = Symbology(2500, IDS_1D_RSS_EXPANDED, 185, '0');
inline constexpr Setting RssExpandedTransmitCodeId = Option(2522, IDS_1D_TRANSMIT_CODE_ID, 186, '1');

inline constexpr Setting Code93Enabled = Symbology(2600, IDS_1D_CODE_93, 195, '1');

inline constexpr Setting Code128Enabled = Symbology(2700, IDS_1D_CODE_128, 205, '1');

inline constexpr Setting Ean128Enabled = Symbology(2800, IDS_1D_EAN_128, 215, '1');
inline constexpr Setting Ean128TransmitCodeId = Option(2822, IDS_1D_TRANSMIT_CODE_ID, 216, '0');

}  // namespace decoder1d
