#include "settings/pages.h"

#include <algorithm>

#include "settings/all_fields.h"
#include "settings/catalogue.h"
#include "settings/page_checks.h"

namespace {

template <const Setting&... Items>
constexpr std::array<const Setting*, sizeof...(Items)> Pointers{&Items...};
template <const Setting&... Items>
constexpr std::array<WORD, sizeof...(Items)> Numbers{Items.ItemId...};
template <const Setting&... Items>
constexpr std::array<WORD, sizeof...(Items)> Indexes{(Items.ItemId % 100)...};

template <const Setting& Switch, const Setting&... Options>
constexpr SettingGroup Symbology{Switch.ItemId, Switch.Label, Pointers<Switch>, Pointers<Options...>,
                                 Indexes<Options...>};
template <WORD Id, WORD Label, const Setting&... Items>
constexpr SettingGroup Heading{Id, Label, {}, Pointers<Items...>, Numbers<Items...>};

namespace symbologies {

using namespace decoder1d;

constexpr SettingGroup Groups[] = {
    Symbology<Code39Enabled, Code39TransmitStartStop, Code39VerifyChecksum, Code39TransmitChecksum,
              Code39FullAscii>,
    Symbology<ItalianPharmacodeEnabled, ItalianPharmacodeTransmitChecksum>,
    Symbology<FrenchPharmacodeEnabled, FrenchPharmacodeTransmitChecksum>,
    Symbology<Industrial25Enabled, Industrial25StartStopCharacter, Industrial25VerifyChecksum,
              Industrial25TransmitChecksum, Industrial25LengthQualification, Industrial25Length2,
              Industrial25Length1>,
    Symbology<Interleaved25Enabled, Interleaved25StartStopCharacter, Interleaved25VerifyChecksum,
              Interleaved25TransmitChecksum, Interleaved25LengthQualification, Interleaved25Length2,
              Interleaved25Length1>,
    Symbology<Matrix25Enabled, Matrix25StartStopCharacter, Matrix25VerifyChecksum, Matrix25TransmitChecksum,
              Matrix25LengthQualification, Matrix25Length2, Matrix25Length1>,
    Symbology<CodabarEnabled, CodabarStartStopCharacter>,
    Symbology<MsiEnabled, MsiVerifyChecksum, MsiTransmitChecksum, MsiLengthQualification, MsiLength2,
              MsiLength1>,
    Symbology<PlesseyEnabled, PlesseyConvertToUkPlessey, PlesseyTransmitChecksum>,
    Symbology<UpcEEnabled, UpcEConvertToUpcA, UpcETransmitSystemNumber, UpcETransmitChecksum,
              UpcETransmitAddon2, UpcETransmitAddon5>,
    Symbology<Ean8Enabled, Ean8TransmitChecksum, Ean8TransmitAddon2, Ean8TransmitAddon5, Ean8ConvertToEan13>,
    Symbology<Ean13Enabled, Ean13ConvertToIsbn, Ean13ConvertToIssn, Ean13TransmitChecksum,
              Ean13TransmitAddon2, Ean13TransmitAddon5, Ean13TransmitUpcASystemNumber,
              Ean13TransmitUpcAChecksum, Ean13ConvertUpcAToEan13>,
    Symbology<TelepenEnabled, TelepenType>,
    Symbology<Rss14Enabled, Rss14TransmitChecksum, Rss14TransmitApplicationId, Rss14TransmitCodeId>,
    Symbology<RssLimitedEnabled, RssLimitedTransmitChecksum, RssLimitedTransmitApplicationId,
              RssLimitedTransmitCodeId>,
    Symbology<RssExpandedEnabled, RssExpandedTransmitCodeId>,
    Symbology<Code93Enabled>,
    Symbology<Code128Enabled>,
    Symbology<Ean128Enabled, Ean128TransmitCodeId>,
};

}  // namespace symbologies

namespace headings {

using namespace engine;

constexpr SettingGroup Groups[] = {
    Heading<0x1000, IDS_GROUP_UPC_EAN, EnableUpcA, EnableUpcE0, EnableUpcE1, EnableEan8, EnableEan13,
            EnableBooklandEan, DecodeSupplementaryDigitsAddon25, SupplementaryRedundancy,
            TransmitUpcACheckDigit, TransmitUpcE0CheckDigit, TransmitUpcE1CheckDigit, UpcAPreamble,
            UpcE0Preamble, UpcE1Preamble, ConvertUpcE0ToUpcA, ConvertUpcE1ToUpcA, ConvertEan8ToEan13,
            UccCouponExtendedCode, LinearUpcEanDecode>,
    Heading<0x1100, IDS_GROUP_CODE_128, EnableCode128, EnableEan128, EnableIsbt128>,
    Heading<0x1200, IDS_GROUP_CODE_39, EnableCode39, EnableTriopticCode39, ConvertCode39ToCode32,
            Code32Prefix, Code39LengthMode, Code39Length1, Code39Length2, Code39VerifyCheckDigit,
            Code39TransmitCheckDigit, Code39FullAscii>,
    Heading<0x1300, IDS_GROUP_CODE_93, EnableCode93, Code93LengthMode, Code93Length1, Code93Length2>,
    Heading<0x1400, IDS_GROUP_CODE_11, EnableCode11, Code11LengthMode, Code11Length1, Code11Length2,
            Code11VerifyCheckDigit, Code11TransmitCheckDigit>,
    Heading<0x1500, IDS_GROUP_INTERLEAVED_25, EnableInterleaved25, Interleaved25LengthMode,
            Interleaved25Length1, Interleaved25Length2, Interleaved25VerifyCheckDigit,
            Interleaved25TransmitCheckDigit, ConvertInterleaved25ToEan13>,
    Heading<0x1600, IDS_GROUP_INDUSTRIAL_25, EnableIndustrial25, Industrial25LengthMode, Industrial25Length1,
            Industrial25Length2>,
    Heading<0x1700, IDS_GROUP_CODABAR, EnableCodabar, CodabarLengthMode, CodabarLength1, CodabarLength2,
            ClsiEditing, NotisEditing>,
    Heading<0x1800, IDS_GROUP_MSI, EnableMsi, MsiLengthMode, MsiLength1, MsiLength2, MsiCheckDigit,
            MsiTransmitCheckDigit, MsiCheckDigitAlgorithm>,
    Heading<0x1900, IDS_GROUP_POSTAL_CODES, EnableUsPostnet, EnableUsPlanet, TransmitUsCheckDigit,
            EnableUkPostal, TransmitUkCheckDigit, EnableJapanPostal, EnableAustralianPostal,
            EnableDutchPostal>,
    Heading<0x1A00, IDS_GROUP_RSS_14, EnableRss14, EnableRssLimited, EnableRssExpanded, ConvertRssToUpcEan>,
    Heading<0x1B00, IDS_GROUP_COMPOSITE_CODES, EnableCompositeCcC, EnableCompositeCcAB, EnableCompositeTlc39,
            EnableUpcCompositeMode, EnableUpcEanCode128Emulation>,
    Heading<0x1C00, IDS_GROUP_2D_SYMBOLOGIES, EnablePdf417, EnableMicroPdf417, EnableCode128Emulation,
            EnableDataMatrix, EnableMaxiCode, EnableQrCode>,
    Heading<0x1D00, IDS_GROUP_MACRO_PDF, TransmitDecodeMode, TransmitControlHeader, EscapeCharacters>,
};

}  // namespace headings

constexpr bool LaserHas(const SettingGroup& group) {
    return IsIn(*group.Items.front(), ReaderType::LongRangeLaser);
}

constexpr auto OnLaser = [] {
    std::array<SettingGroup, std::ranges::count_if(headings::Groups, LaserHas)> groups{};
    std::ranges::copy_if(headings::Groups, groups.begin(), LaserHas);
    return groups;
}();

namespace lists {

using namespace general;

constexpr const Setting* Output[] = {&ActiveDevice, &GoodReadBeep, &WarningBeep, &EnableVibrator,
                                     &VibrateDuration, &DataOutput, &AutoEnter, &AutoEnterCharacter,
                                     &PrefixCode, &SuffixCode,
                                     // A terminal without a barcode reader stops here.
                                     &IncludeCodeType, &IncludeCodeLength};
constexpr const Setting* On1DReader[] = {&ScanMode, &BarcodeDecodeTimeout, &BarcodeReadRedundancy,
                                         &NegativeBarcode};
constexpr const Setting* OnLongRangeLaser[] = {&BarcodeDecodeTimeout, &SameBarcodeTimeout, &AimDuration};
constexpr const Setting* OnImager2D[] = {&ImagerDecodeTimeout, &SameBarcodeTimeout, &DecodingAutoexposure,
                                         &DecodingIllumination, &DecodingAimingPattern};
constexpr const Setting* Tags[] = {&ReadRfidUid,       &ReadRfidData,      &UseDelimiter,    &Delimiter,
                                   &RfidStartPosition, &RfidMaximumLength, &RfidReadDuration};
constexpr const Setting* Closing[] = {&CheckReaderStatus};
constexpr const Setting* Hidden[] = {&FocusMode,
                                     &ImageCaptureAutoexposure,
                                     &ImageCaptureIllumination,
                                     &Gain,
                                     &ExposureTime,
                                     &LedIllumination,
                                     &SnapshotModeTimeout,
                                     &SnapshotAimingPattern,
                                     &ImageCropping,
                                     &TopPixelAddress,
                                     &LeftPixelAddress,
                                     &BottomPixelAddress,
                                     &RightPixelAddress,
                                     &ImageResolution,
                                     &JpegQualityValue,
                                     &JpegSizeValue,
                                     &ImageFileFormatSelection,
                                     &BitsPerPixel,
                                     &SignatureCapture,
                                     &SignatureCaptureImageFileFormat,
                                     &SignatureCaptureBitsPerPixel,
                                     &SignatureCaptureWidth,
                                     &SignatureCaptureHeight,
                                     &SignatureCaptureJpegQuality,
                                     &VideoViewFinder,
                                     &TargetVideoFrameSize,
                                     &VideoViewFinderImageSize,
                                     &RedundancyLevel,
                                     &SecurityLevel,
                                     &IntercharacterGapSize};

}  // namespace lists

// The words that a reader's general block really uses.
constexpr SettingList Only1D[] = {lists::Output, lists::Tags, lists::Closing, lists::On1DReader};
constexpr SettingList OnlyLaser[] = {lists::Output, lists::Tags, lists::Closing, lists::OnLongRangeLaser};
constexpr SettingList OnlyImager[] = {lists::Output, lists::Tags, lists::Closing, lists::OnImager2D,
                                      lists::Hidden};
constexpr SettingList General[] = {
    lists::Output,           lists::Tags,       lists::Closing, lists::On1DReader,
    lists::OnLongRangeLaser, lists::OnImager2D, lists::Hidden};
static_assert(checks::LayoutFits(Only1D, ReaderType::Decoder1D, GeneralWords));
static_assert(checks::LayoutFits(OnlyLaser, ReaderType::LongRangeLaser, GeneralWords));
static_assert(checks::LayoutFits(OnlyImager, ReaderType::Imager2D, GeneralWords));
static_assert(checks::NumbersDiffer(General));
static_assert(checks::NamesDiffer(Only1D, symbologies::Groups));
static_assert(checks::NamesDiffer(OnlyLaser, OnLaser) && checks::NamesDiffer(OnlyImager, headings::Groups));
static_assert(checks::NoneIsNewer(General) && checks::NoneIsNewer(symbologies::Groups) &&
              checks::NoneIsNewer(headings::Groups));
constexpr std::size_t FieldsOfTheFirstFile = 231;
static_assert(checks::InEveryFile(General) + checks::InEveryFile(symbologies::Groups) +
                      checks::InEveryFile(headings::Groups) ==
                  FieldsOfTheFirstFile,
              "a new field says by NewIn since when files have it");
static_assert(std::ranges::all_of(General, [](SettingList list) {
    return checks::DefaultsFit(list) && checks::ParametersFit(list, general::BarcodeDecodeTimeout);
}));

static_assert(checks::LayoutFits(symbologies::Groups, ReaderType::Decoder1D));
static_assert(checks::GroupsFit(symbologies::Groups) && checks::NumbersDiffer(symbologies::Groups));
static_assert(checks::DefaultsFit(symbologies::Groups) && checks::IndexesAgree(symbologies::Groups));

static_assert(checks::LayoutFits(headings::Groups, ReaderType::LongRangeLaser));
static_assert(checks::LayoutFits(headings::Groups, ReaderType::Imager2D));
static_assert(checks::GroupsFit(headings::Groups) && checks::NumbersDiffer(headings::Groups));
static_assert(checks::DefaultsFit(headings::Groups));
static_assert(std::ranges::all_of(headings::Groups, [](const SettingGroup& group) {
    return checks::ParametersFit(group.Items, engine::EnableCode39);
}));

template <const auto& Groups>
constexpr auto NumbersOf = [] {
    std::array<WORD, std::size(Groups)> ids{};
    std::ranges::transform(Groups, ids.begin(), &SettingGroup::Id);
    return ids;
}();

constexpr ReaderLayout Layouts[] = {
    {ReaderType::Decoder1D, Page1D, symbologies::Groups, NumbersOf<symbologies::Groups>, symbologies::Groups,
     lists::On1DReader, &SymbologyGroupCount},
    {ReaderType::LongRangeLaser, PageLaser, OnLaser, NumbersOf<OnLaser>, headings::Groups,
     lists::OnLongRangeLaser, &SymbologyGroupCount},
    {ReaderType::Imager2D, PageImager, headings::Groups, NumbersOf<headings::Groups>, headings::Groups,
     lists::OnImager2D, &ImagerGroupCount},
};
static_assert(std::size(Layouts) == ReaderTypes - 1);
static_assert(std::ranges::all_of(Layouts,
                                  [](const ReaderLayout& layout) {
                                      return std::size(lists::Output) + layout.Items.size() +
                                                 std::size(lists::Tags) + std::size(lists::Closing) <=
                                             MaxGeneralItems;
                                  }),
              "the general page has no room for an item: raise MaxGeneralItems");

}  // namespace

std::span<const ReaderLayout> ReaderLayouts() {
    return Layouts;
}

const ReaderLayout* LayoutOf(ReaderType type) {
    const auto found = std::ranges::find(Layouts, type, &ReaderLayout::Type);
    return found != std::end(Layouts) ? found : nullptr;
}

const ReaderLayout* LayoutOn(DWORD pageBase) {
    const auto found = std::ranges::find(Layouts, pageBase, &ReaderLayout::Page);
    return found != std::end(Layouts) ? found : nullptr;
}

std::span<const SettingGroup> GroupsOn(ReaderType type) {
    const ReaderLayout* layout = LayoutOf(type);
    return layout ? layout->Groups : std::span<const SettingGroup>{};
}

SettingList ReaderItems(ReaderType type) {
    const ReaderLayout* layout = LayoutOf(type);
    return layout ? layout->Items : SettingList{};
}

SettingList OutputItems() {
    return lists::Output;
}

SettingList RfidItems() {
    return lists::Tags;
}

SettingList ClosingItems() {
    return lists::Closing;
}

SettingList HiddenItems() {
    return lists::Hidden;
}
