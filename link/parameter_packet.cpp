#include <algorithm>

#include "link/parameter_download.h"
#include "settings/engine_fields.h"
#include "settings/general_fields.h"

namespace {

using namespace engine;

constexpr BYTE BeepCode = 0xFF;
constexpr BYTE ExtendedPrefix = 0xF0;

// A symbology's lengths: three fields that give two parameters.
struct LengthFields {
    LengthSymbology Symbology;
    const Setting* Mode;
    const Setting* Length2;
    const Setting* Length1;
};

constexpr LengthFields Lengths[] = {
    {LengthSymbology::Code39, &Code39LengthMode, &Code39Length2, &Code39Length1},
    {LengthSymbology::Code93, &Code93LengthMode, &Code93Length2, &Code93Length1},
    {LengthSymbology::Code11, &Code11LengthMode, &Code11Length2, &Code11Length1},
    {LengthSymbology::Interleaved25, &Interleaved25LengthMode, &Interleaved25Length2, &Interleaved25Length1},
    {LengthSymbology::Industrial25, &Industrial25LengthMode, &Industrial25Length2, &Industrial25Length1},
    {LengthSymbology::Codabar, &CodabarLengthMode, &CodabarLength2, &CodabarLength1},
    {LengthSymbology::Msi, &MsiLengthMode, &MsiLength2, &MsiLength1},
};

// The order in which the parameters are sent. A length mode stands for its symbology's length entry. What the
// laser's layout lacks is left out there.
constexpr const Setting* FirstRows[] = {
    &EnableUpcA,
    &EnableUpcE0,
    &EnableUpcE1,
    &EnableEan8,
    &EnableEan13,
    &EnableBooklandEan,
    &DecodeSupplementaryDigitsAddon25,
    &SupplementaryRedundancy,
    &TransmitUpcACheckDigit,
    &TransmitUpcE0CheckDigit,
    &TransmitUpcE1CheckDigit,
    &UpcAPreamble,
    &UpcE0Preamble,
    &UpcE1Preamble,
    &ConvertUpcE0ToUpcA,
    &ConvertUpcE1ToUpcA,
    &ConvertEan8ToEan13,
    &UccCouponExtendedCode,
    &LinearUpcEanDecode,
    &EnableCode128,
    &EnableEan128,
    &EnableIsbt128,
    &EnableCode39,
    &EnableTriopticCode39,
    &ConvertCode39ToCode32,
    &Code32Prefix,
    &Code39LengthMode,
    &Code39VerifyCheckDigit,
    &Code39TransmitCheckDigit,
    &Code39FullAscii,
    &EnableCode93,
    &Code93LengthMode,
    &EnableCode11,
    &Code11LengthMode,
    &Code11VerifyCheckDigit,
    &Code11TransmitCheckDigit,
    &EnableInterleaved25,
    &Interleaved25LengthMode,
    &Interleaved25VerifyCheckDigit,
    &Interleaved25TransmitCheckDigit,
    &ConvertInterleaved25ToEan13,
    &EnableIndustrial25,
    &Industrial25LengthMode,
    &EnableCodabar,
    &CodabarLengthMode,
    &ClsiEditing,
    &NotisEditing,
    &EnableMsi,
    &MsiLengthMode,
    &MsiCheckDigit,
    &MsiTransmitCheckDigit,
    &MsiCheckDigitAlgorithm,
};

constexpr const Setting* LaserEndRows[] = {
    &EnableRss14,
    &EnableRssLimited,
    &EnableRssExpanded,
    &ConvertRssToUpcEan,
    &general::BarcodeDecodeTimeout,
    &general::SameBarcodeTimeout,
};

constexpr const Setting* ImagerSecondRows[] = {
    &EnableUsPostnet,
    &EnableUsPlanet,
    &EnableUkPostal,
    &TransmitUkCheckDigit,
    &EnableJapanPostal,
    &EnableAustralianPostal,
    &EnableDutchPostal,
    &TransmitUsCheckDigit,
    &EnableRss14,
    &EnableRssLimited,
    &EnableRssExpanded,
    &ConvertRssToUpcEan,
    &EnableCompositeCcC,
    &EnableCompositeCcAB,
    &EnableCompositeTlc39,
    &EnableUpcCompositeMode,
    &EnableUpcEanCode128Emulation,
    &EnablePdf417,
    &EnableMicroPdf417,
    &EnableCode128Emulation,
    &EnableDataMatrix,
    &EnableMaxiCode,
    &EnableQrCode,
    &TransmitDecodeMode,
    &TransmitControlHeader,
    &EscapeCharacters,
    &general::ImagerDecodeTimeout,
    &general::SameBarcodeTimeout,
    &general::DecodingAutoexposure,
    &general::DecodingIllumination,
    &general::DecodingAimingPattern,
};

// A packet counts its bytes in one: it has to hold every row at once.
constexpr bool IsLengthRow(const Setting& row) {
    return std::ranges::any_of(
        Lengths, [&row](const LengthFields& fields) { return fields.Mode->ItemId == row.ItemId; });
}
constexpr std::size_t FullSize(SettingList rows, ReaderType type) {
    std::size_t size = 0;
    for (const Setting* row : rows) {
        if (IsIn(*row, type)) {
            size += IsLengthRow(*row) ? 4 : row->Parameter.Extended ? 3 : 2;
        }
    }
    return size;
}
constexpr std::size_t MostEntries =
    std::tuple_size_v<decltype(ParameterPacket::Bytes)> - EmptyParameterPacket;
static_assert(FullSize(FirstRows, ReaderType::LongRangeLaser) +
                  FullSize(LaserEndRows, ReaderType::LongRangeLaser) <=
              MostEntries);
static_assert(FullSize(FirstRows, ReaderType::Imager2D) <= MostEntries);
static_assert(FullSize(ImagerSecondRows, ReaderType::Imager2D) <= MostEntries);

constexpr bool HaveParameters(SettingList rows) {
    return std::ranges::all_of(
        rows, [](const Setting* row) { return IsLengthRow(*row) || row->Parameter.Number != NoParameter; });
}
static_assert(HaveParameters(FirstRows) && HaveParameters(LaserEndRows) && HaveParameters(ImagerSecondRows));

const LengthFields* LengthsOf(const Setting& mode) {
    const auto found = std::find_if(std::begin(Lengths), std::end(Lengths),
                                    [&mode](const LengthFields& fields) { return fields.Mode == &mode; });
    return found == std::end(Lengths) ? nullptr : found;
}

WORD WordOn(ReaderType page, const Setting& setting) {
    const Relaxed<WORD>* word = WordOf(setting, page);
    return word ? WORD{*word} : WORD{0};
}

void Append(ParameterPacket& packet, std::span<const BYTE> bytes) {
    std::copy(bytes.begin(), bytes.end(), packet.Bytes.begin() + packet.Length);
    packet.Length += bytes.size();
}

void AppendSetting(ParameterPacket& packet, const Setting& setting) {
    const BYTE value = ParameterValue(setting, Value(setting));
    const BYTE entry[] = {ExtendedPrefix, static_cast<BYTE>(setting.Parameter.Number), value};
    Append(packet, std::span(entry).subspan(setting.Parameter.Extended ? 0 : 1));
}

void AppendLengths(ParameterPacket& packet, const LengthFields& fields) {
    std::array<BYTE, 4> entry;
    LengthParameters(FittedReader(), fields.Symbology, entry);
    Append(packet, entry);
}

void AppendChanged(ParameterPacket& packet, SettingList rows) {
    for (const Setting* row : rows) {
        const LengthFields* lengths = LengthsOf(*row);
        const bool changed =
            Changed(*row) || (lengths && (Changed(*lengths->Length2) || Changed(*lengths->Length1)));
        if (!changed) {
            continue;
        }
        if (lengths) {
            AppendLengths(packet, *lengths);
        } else {
            AppendSetting(packet, *row);
        }
    }
}

}  // namespace

std::array<BYTE, 2> LengthValues(WORD mode, BYTE value2, BYTE value1) {
    const auto [smaller, larger] = std::minmax({value1, value2});
    switch (mode) {
        case 0:
            return {0, 0};
        case 1:
            return {value1 != 0 ? value1 : value2, 0};
        case 2:
            return {larger, smaller};
        case 3:
            return {smaller, larger};
        default:
            return {value2, value1};
    }
}

void LengthParameters(ReaderType page, LengthSymbology symbology, std::span<BYTE, 4> entry) {
    const LengthFields& fields = Lengths[static_cast<std::size_t>(symbology)];
    const std::array<BYTE, 2> values = LengthValues(static_cast<WORD>(WordOn(page, *fields.Mode) - '0'),
                                                    static_cast<BYTE>(WordOn(page, *fields.Length2)),
                                                    static_cast<BYTE>(WordOn(page, *fields.Length1)));
    entry[0] = static_cast<BYTE>(fields.Length2->Parameter.Number);
    entry[1] = values[0];
    entry[2] = static_cast<BYTE>(fields.Length1->Parameter.Number);
    entry[3] = values[1];
}

void BuildParameterPacket(ParameterRows rows, ParameterPacket& packet) {
    packet.Length = 0;
    const BYTE header[EmptyParameterPacket] = {0, PARAM_SEND, SsiHost, SsiPermanent, BeepCode};
    Append(packet, header);
    switch (rows) {
        case ParameterRows::Laser:
            AppendChanged(packet, FirstRows);
            AppendChanged(packet, LaserEndRows);
            break;
        case ParameterRows::ImagerFirst:
            AppendChanged(packet, FirstRows);
            break;
        case ParameterRows::ImagerSecond:
            AppendChanged(packet, ImagerSecondRows);
            break;
    }
    packet.Bytes[0] = static_cast<BYTE>(packet.Length);
}
