// Output, feedback, RFID and reading options, in the order of their words.
#pragma once

#include "resources/resource.h"
#include "settings/describe.h"

namespace general {

using describe::Extended;
using describe::NewIn;
using describe::Parameter;
using describe::Place;
using describe::Places;
using describe::PlaceWithoutDefault;

struct Position {
    ResetGroup Group;
    Places At;
};

constexpr Places Everywhere(const SettingPlace& place) {
    Places places;
    places.fill(place);
    return places;
}
constexpr Position Common(WORD word, WORD value) {
    return {ResetGroup::General, Everywhere(Place(word, value, {}))};
}
// A text; what the user has typed outlives every reset.
constexpr Position CommonText(WORD word) {
    return {ResetGroup::General, Everywhere(PlaceWithoutDefault(word))};
}
constexpr Position Rfid(WORD word, WORD value) {
    return {ResetGroup::Rfid, Everywhere(Place(word, value, {}))};
}
// A word that is reset only where that reader is fitted.
constexpr Position OnReader(ReaderType type, WORD word, WORD value) {
    Position position{ResetGroup::BarcodeReader, Everywhere(PlaceWithoutDefault(word))};
    position.At[static_cast<std::size_t>(type)] = Place(word, value, {});
    return position;
}
constexpr Position On1D(WORD word, WORD value) {
    return OnReader(ReaderType::Decoder1D, word, value);
}
constexpr Position OnLaser(WORD word, WORD value) {
    return OnReader(ReaderType::LongRangeLaser, word, value);
}
constexpr Position OnImager(WORD word, WORD value) {
    return OnReader(ReaderType::Imager2D, word, value);
}

constexpr Setting Field(SettingEncoding encoding, WORD item, WORD label, const Position& position) {
    Setting setting;
    setting.Encoding = encoding;
    setting.Group = position.Group;
    setting.ItemId = item;
    setting.Label = label;
    setting.Places = position.At;
    return setting;
}
constexpr Setting Toggle(WORD item, WORD label, WORD textBase, const Position& position,
                         ReaderParameter parameter = {}) {
    Setting setting = Field(SettingEncoding::Toggle, item, label, position);
    setting.TextBase = textBase;
    setting.Parameter = parameter;
    return setting;
}
constexpr Setting List(WORD item, WORD label, WORD firstChoice, WORD choices, const Position& position) {
    Setting setting = Field(SettingEncoding::List, item, label, position);
    setting.TextBase = firstChoice;
    setting.ChoiceCount = choices;
    return setting;
}
constexpr Setting BitSet(WORD item, WORD label, WORD firstChoice, WORD choices, const Position& position) {
    Setting setting = List(item, label, firstChoice, choices, position);
    setting.Encoding = SettingEncoding::BitSet;
    return setting;
}
constexpr Setting Number(WORD item, WORD label, const Position& position, SettingLimits limits) {
    Setting setting = Field(SettingEncoding::Number, item, label, position);
    describe::SetLimits(setting, limits);
    return setting;
}
constexpr Setting ShortNumber(WORD item, WORD label, const Position& position, SettingLimits limits) {
    Setting setting = Number(item, label, position, limits);
    setting.ShortNumber = true;
    return setting;
}
constexpr Setting Timeout(WORD item, WORD label, const Places& places, ReaderParameter parameter) {
    Setting setting = Field(SettingEncoding::Number, item, label, {ResetGroup::BarcodeReader, places});
    setting.Parameter = parameter;
    return setting;
}
constexpr Setting ShortTimeout(WORD item, WORD label, const Places& places, ReaderParameter parameter) {
    Setting setting = Timeout(item, label, places, parameter);
    setting.ShortNumber = true;
    return setting;
}
constexpr Setting Text(WORD item, WORD label, const Position& position) {
    Setting setting = Field(SettingEncoding::Text, item, label, position);
    describe::SetLimits(setting, {0, TextWords - 1});
    return setting;
}
constexpr Setting Character(WORD item, WORD label, const Position& position) {
    Setting setting = Field(SettingEncoding::Character, item, label, position);
    describe::SetLimits(setting, {0, 1});
    return setting;
}

SETTING(ActiveDevice, BitSet(10001, IDS_ACTIVE_DEVICE, IDS_CHOICE_ACTIVE_DEVICE, 2, Common(0, '1')));
SETTING(GoodReadBeep, List(10002, IDS_GOOD_READ_BEEP, IDS_CHOICE_SOUND, 10, Common(1, '2')));
SETTING(WarningBeep, List(10003, IDS_WARNING_BEEP, IDS_CHOICE_SOUND, 10, Common(2, '9')));
SETTING(EnableVibrator, Toggle(10004, IDS_ENABLE_VIBRATOR, IDS_BASE_NO_YES, Common(3, '0')));
SETTING(VibrateDuration, Number(10005, IDS_VIBRATE_DURATION, Common(4, 2), {1, 30, NumberUnit::Seconds}));
SETTING(DataOutput, BitSet(10006, IDS_DATA_OUTPUT, IDS_CHOICE_DATA_OUTPUT, 3, Common(5, '1')));
SETTING(AutoEnter, List(10007, IDS_AUTO_ENTER, IDS_CHOICE_AUTO_ENTER, 3, Common(6, '1')));
SETTING(AutoEnterCharacter,
        List(10008, IDS_AUTO_ENTER_CHARACTER, IDS_CHOICE_ENTER_CHARACTER, 6, Common(7, '1')));
SETTING(PrefixCode, Text(10009, IDS_PREFIX_CODE, CommonText(8)));
SETTING(SuffixCode, Text(10010, IDS_SUFFIX_CODE, CommonText(19)));
SETTING(IncludeCodeType, Toggle(10011, IDS_INCLUDE_CODE_TYPE, IDS_BASE_NO_YES, Common(30, '0')));
SETTING(IncludeCodeLength, Toggle(10012, IDS_INCLUDE_CODE_LENGTH, IDS_BASE_NO_YES, Common(31, '0')));
SETTING(CheckReaderStatus, Toggle(10013, IDS_CHECK_READER_STATUS, IDS_BASE_NO_YES, Common(32, '1')));

SETTING(ReadRfidUid, Toggle(11001, IDS_READ_RFID_UID, IDS_BASE_NO_YES, Rfid(80, '1')));
SETTING(ReadRfidData, Toggle(11002, IDS_READ_RFID_DATA, IDS_BASE_NO_YES, Rfid(81, '0')));
SETTING(UseDelimiter, Toggle(11003, IDS_USE_DELIMITER, IDS_BASE_NO_YES, Rfid(82, '0')));
SETTING(Delimiter, Character(11004, IDS_DELIMITER, Rfid(83, ',')));
SETTING(RfidStartPosition, Number(11005, IDS_RFID_START_POSITION, Rfid(87, 0), {0, 127}));
SETTING(RfidMaximumLength, Number(11006, IDS_RFID_MAXIMUM_LENGTH, Rfid(88, 127), {0, 127}));
SETTING(RfidReadDuration, Number(11007, IDS_RFID_READ_DURATION, Rfid(89, 3), {1, 5, NumberUnit::Seconds}));

// From here on words belong to the fitted barcode reader; a word means another thing on each.
SETTING(ScanMode, List(12001, IDS_SCAN_MODE, IDS_CHOICE_SCAN_MODE, 9, On1D(110, '6')));
// Counted in seconds by the 1D reader, in tenths of a second by the laser.
SETTING(BarcodeDecodeTimeout,
        Timeout(12002, IDS_BARCODE_DECODE_TIMEOUT,
                {PlaceWithoutDefault(111, {1, 255}), Place(111, 3, {1, 255, NumberUnit::Seconds}),
                 Place(111, 30, {1, 99, NumberUnit::TenthsOfSecond}), PlaceWithoutDefault(111, {1, 255})},
                Parameter(0x88)));
SETTING(BarcodeReadRedundancy,
        List(12003, IDS_BARCODE_READ_REDUNDANCY, IDS_CHOICE_REDUNDANCY, 4, On1D(112, '0')));
// On the laser its item stands for the laser's own decode timeout.
inline constexpr SettingLimits ImagerDecodeLimits{5, 99, NumberUnit::TenthsOfSecond};
SETTING(ImagerDecodeTimeout,
        ShortTimeout(13960, IDS_IMAGER_DECODE_TIMEOUT,
                     {PlaceWithoutDefault(112, ImagerDecodeLimits),
                      PlaceWithoutDefault(112, ImagerDecodeLimits),
                      PlaceWithoutDefault(111, ImagerDecodeLimits), Place(112, 99, ImagerDecodeLimits)},
                     Parameter(0x88)));
SETTING(AimDuration,
        ShortNumber(13001, IDS_AIM_DURATION, OnLaser(113, 0), {0, 99, NumberUnit::TenthsOfSecond}));
inline constexpr SettingLimits SameBarcodeLimits{0, 99, NumberUnit::TenthsOfSecond};
SETTING(SameBarcodeTimeout,
        ShortTimeout(13961, IDS_SAME_BARCODE_TIMEOUT,
                     {PlaceWithoutDefault(113, SameBarcodeLimits),
                      PlaceWithoutDefault(113, SameBarcodeLimits), Place(112, 10, SameBarcodeLimits),
                      Place(113, 6, SameBarcodeLimits)},
                     Parameter(0x89)));
SETTING(NegativeBarcode, Toggle(12004, IDS_NEGATIVE_BARCODE, IDS_BASE_NO_YES, On1D(113, '0')));

SETTING(FocusMode, Toggle(14246, IDS_FOCUS_MODE, IDS_BASE_OFF_ON, OnImager(115, '0')));
SETTING(DecodingAutoexposure,
        Toggle(14121, IDS_DECODING_AUTOEXPOSURE, IDS_BASE_OFF_ON, OnImager(116, '1'), Extended(0x29)));
SETTING(DecodingIllumination,
        Toggle(14122, IDS_DECODING_ILLUMINATION, IDS_BASE_OFF_ON, OnImager(117, '1'), Extended(0x2A)));
SETTING(DecodingAimingPattern, Toggle(14130, IDS_DECODING_AIMING_PATTERN, IDS_BASE_OFF_ON, OnImager(118, '1'),
                                      Extended(0x32, 1, 2)));
SETTING(ImageCaptureAutoexposure,
        Toggle(14184, IDS_IMAGE_CAPTURE_AUTOEXPOSURE, IDS_BASE_OFF_ON, OnImager(119, '1')));
SETTING(ImageCaptureIllumination,
        Toggle(14185, IDS_IMAGE_CAPTURE_ILLUMINATION, IDS_BASE_OFF_ON, OnImager(120, '1')));
SETTING(Gain, Number(14247, IDS_GAIN, OnImager(121, 100), {79, 127}));
SETTING(ExposureTime, List(14136, IDS_EXPOSURE_TIME, IDS_CHOICE_EXPOSURE_TIME, 6, OnImager(122, '1')));
SETTING(LedIllumination,
        List(14253, IDS_LED_ILLUMINATION, IDS_CHOICE_LED_ILLUMINATION, 3, OnImager(123, '0')));
SETTING(SnapshotModeTimeout, Number(14147, IDS_SNAPSHOT_MODE_TIMEOUT, OnImager(124, 48), {0, 10}));
SETTING(SnapshotAimingPattern,
        Toggle(14124, IDS_SNAPSHOT_AIMING_PATTERN, IDS_BASE_OFF_ON, OnImager(125, '1')));
SETTING(ImageCropping, Toggle(14125, IDS_IMAGE_CROPPING, IDS_BASE_OFF_ON, OnImager(126, '0')));
SETTING(TopPixelAddress, Number(14139, IDS_TOP_PIXEL_ADDRESS, OnImager(127, 0), {0, 479}));
SETTING(LeftPixelAddress, Number(14140, IDS_LEFT_PIXEL_ADDRESS, OnImager(128, 0), {0, 639}));
SETTING(BottomPixelAddress, Number(14141, IDS_BOTTOM_PIXEL_ADDRESS, OnImager(129, 479), {0, 479}));
SETTING(RightPixelAddress, Number(14142, IDS_RIGHT_PIXEL_ADDRESS, OnImager(130, 639), {0, 639}));
SETTING(ImageResolution,
        List(14126, IDS_IMAGE_RESOLUTION, IDS_CHOICE_IMAGE_RESOLUTION, 4, OnImager(131, '0')));
SETTING(JpegQualityValue, Number(14129, IDS_JPEG_QUALITY_VALUE, OnImager(132, 65), {5, 100}));
SETTING(JpegSizeValue, Number(14131, IDS_JPEG_SIZE_VALUE, OnImager(133, 40), {5, 150}));
SETTING(ImageFileFormatSelection,
        List(14128, IDS_IMAGE_FILE_FORMAT_SELECTION, IDS_CHOICE_IMAGE_FORMAT, 3, OnImager(134, '1')));
SETTING(BitsPerPixel, List(14127, IDS_BITS_PER_PIXEL, IDS_CHOICE_BITS_PER_PIXEL, 3, OnImager(135, '2')));
SETTING(SignatureCapture, Toggle(14173, IDS_SIGNATURE_CAPTURE, IDS_BASE_OFF_ON, OnImager(136, '0')));
SETTING(SignatureCaptureImageFileFormat, List(14137, IDS_SIGNATURE_CAPTURE_IMAGE_FILE_FORMAT,
                                              IDS_CHOICE_SIGNATURE_FORMAT, 3, OnImager(137, '1')));
SETTING(SignatureCaptureBitsPerPixel,
        List(14138, IDS_SIGNATURE_CAPTURE_BITS_PER_PIXEL, IDS_CHOICE_BITS_PER_PIXEL, 3, OnImager(138, '2')));
SETTING(SignatureCaptureWidth, Number(14190, IDS_SIGNATURE_CAPTURE_WIDTH, OnImager(139, 400), {1, 640}));
SETTING(SignatureCaptureHeight, Number(14191, IDS_SIGNATURE_CAPTURE_HEIGHT, OnImager(140, 100), {1, 480}));
SETTING(SignatureCaptureJpegQuality,
        Number(14245, IDS_SIGNATURE_CAPTURE_JPEG_QUALITY, OnImager(141, 65), {5, 100}));
SETTING(VideoViewFinder, Toggle(14148, IDS_VIDEO_VIEW_FINDER, IDS_BASE_OFF_ON, OnImager(142, '0')));
SETTING(TargetVideoFrameSize, Number(14152, IDS_TARGET_VIDEO_FRAME_SIZE, OnImager(143, 22), {8, 33}));
SETTING(VideoViewFinderImageSize,
        Number(14153, IDS_VIDEO_VIEW_FINDER_IMAGE_SIZE, OnImager(144, 17), {8, 30}));
SETTING(RedundancyLevel,
        List(14158, IDS_REDUNDANCY_LEVEL, IDS_CHOICE_REDUNDANCY_LEVEL, 4, OnImager(145, '0')));
SETTING(SecurityLevel, List(14157, IDS_SECURITY_LEVEL, IDS_CHOICE_SECURITY_LEVEL, 4, OnImager(146, '0')));
SETTING(IntercharacterGapSize,
        List(14205, IDS_INTERCHARACTER_GAP_SIZE, IDS_CHOICE_INTERCHARACTER_GAP, 2, OnImager(147, '0')));

}  // namespace general
