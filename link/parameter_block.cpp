// The layout of the 1D reader's parameter block.
#include "link/parameter_download.h"
#include "settings/decoder1d_fields.h"
#include "settings/general_fields.h"

namespace {

using namespace decoder1d;

// A switch of the block: set when its field is on.
struct BlockBit {
    BYTE Byte;
    BYTE Mask;
    const Setting* Field;
};

constexpr BlockBit Bits[] = {
    {0, 0x80, &Code39Enabled},
    {0, 0x40, &ItalianPharmacodeEnabled},
    {0, 0x20, &FrenchPharmacodeEnabled},
    {0, 0x10, &Industrial25Enabled},
    {0, 0x08, &Interleaved25Enabled},
    {0, 0x04, &Matrix25Enabled},
    {0, 0x02, &CodabarEnabled},
    {0, 0x01, &Code93Enabled},
    {1, 0x80, &Code128Enabled},
    {1, 0x40, &UpcEEnabled},
    {1, 0x20, &UpcETransmitAddon2},
    {1, 0x10, &UpcETransmitAddon5},
    {1, 0x08, &Ean8Enabled},
    {1, 0x04, &Ean8TransmitAddon2},
    {1, 0x02, &Ean8TransmitAddon5},
    {1, 0x01, &Ean13Enabled},
    {2, 0x80, &Ean13TransmitAddon2},
    {2, 0x40, &Ean13TransmitAddon5},
    {2, 0x20, &MsiEnabled},
    {2, 0x10, &PlesseyEnabled},
    {2, 0x04, &TelepenEnabled},
    {2, 0x02, &TelepenType},
    {2, 0x01, &RssLimitedEnabled},
    {3, 0x80, &RssExpandedEnabled},
    {3, 0x40, &Rss14Enabled},
    {3, 0x20, &Rss14TransmitCodeId},
    {3, 0x10, &Rss14TransmitApplicationId},
    {3, 0x08, &Rss14TransmitChecksum},
    {3, 0x04, &RssLimitedTransmitCodeId},
    {3, 0x02, &RssLimitedTransmitApplicationId},
    {3, 0x01, &RssLimitedTransmitChecksum},
    {4, 0x80, &RssExpandedTransmitCodeId},
    {5, 0x80, &Code39TransmitStartStop},
    {5, 0x40, &Code39VerifyChecksum},
    {5, 0x20, &Code39TransmitChecksum},
    {5, 0x10, &Code39FullAscii},
    {5, 0x08, &ItalianPharmacodeTransmitChecksum},
    {5, 0x04, &FrenchPharmacodeTransmitChecksum},
    {5, 0x02, &Interleaved25VerifyChecksum},
    {5, 0x01, &Interleaved25TransmitChecksum},
    {6, 0x80, &Industrial25VerifyChecksum},
    {6, 0x40, &Industrial25TransmitChecksum},
    {6, 0x20, &Matrix25VerifyChecksum},
    {6, 0x10, &Matrix25TransmitChecksum},
    {9, 0x08, &PlesseyTransmitChecksum},
    {9, 0x04, &PlesseyConvertToUkPlessey},
    {9, 0x02, &UpcEConvertToUpcA},
    {9, 0x01, &Ean13ConvertUpcAToEan13},
    {10, 0x80, &Ean13ConvertToIsbn},
    {10, 0x40, &Ean13ConvertToIssn},
    {10, 0x20, &UpcETransmitChecksum},
    {10, 0x10, &Ean13TransmitUpcAChecksum},
    {10, 0x08, &Ean8TransmitChecksum},
    {10, 0x04, &Ean13TransmitChecksum},
    {10, 0x02, &UpcETransmitSystemNumber},
    {10, 0x01, &Ean13TransmitUpcASystemNumber},
    {11, 0x80, &Ean8ConvertToEan13},
    {11, 0x10, &general::NegativeBarcode},
    {12, 0x80, &Industrial25LengthQualification},
    {14, 0x80, &Interleaved25LengthQualification},
    {16, 0x80, &Matrix25LengthQualification},
    {18, 0x80, &MsiLengthQualification},
    {22, 0x40, &Ean128Enabled},
    {22, 0x20, &Ean128TransmitCodeId},
};

// A field whose digit, times the factor, is laid over a byte.
struct BlockDigit {
    BYTE Byte;
    BYTE Factor;
    const Setting* Field;
};

constexpr BlockDigit DigitFields[] = {
    {6, 4, &Interleaved25StartStopCharacter},
    {6, 1, &Industrial25StartStopCharacter},
    // Codabar's value 4 and a Matrix 25 value share a bit.
    {7, 16, &CodabarStartStopCharacter},
    {7, 64, &Matrix25StartStopCharacter},
    {9, 64, &MsiVerifyChecksum},
    {9, 16, &MsiTransmitChecksum},
    {11, 4, &general::BarcodeReadRedundancy},
    {20, 16, &general::ScanMode},
};

struct BlockNumber {
    BYTE Byte;
    const Setting* Field;
};

constexpr BlockNumber Numbers[] = {
    {12, &Industrial25Length2},  {13, &Industrial25Length1}, {14, &Interleaved25Length2},
    {15, &Interleaved25Length1}, {16, &Matrix25Length2},     {17, &Matrix25Length1},
    {18, &MsiLength2},           {19, &MsiLength1},          {21, &general::BarcodeDecodeTimeout},
};

constexpr BYTE CodabarStartStopByte = 7;
constexpr BYTE CodabarTransmitsStartStop = 0x08;

}  // namespace

void Build1DParameterBlock(ParameterBlock& block) {
    const auto lay = [&block](BYTE at, unsigned bits) { block[at] = static_cast<BYTE>(block[at] | bits); };
    for (const BlockBit& bit : Bits) {
        if (IsOn(*bit.Field)) {
            lay(bit.Byte, bit.Mask);
        }
    }
    for (const BlockDigit& digit : DigitFields) {
        lay(digit.Byte, DigitOf(*digit.Field) * unsigned{digit.Factor});
    }
    for (const BlockNumber& number : Numbers) {
        lay(number.Byte, Value(*number.Field));
    }
    if (Value(CodabarStartStopCharacter) != '0') {
        lay(CodabarStartStopByte, CodabarTransmitsStartStop);
    }
}
