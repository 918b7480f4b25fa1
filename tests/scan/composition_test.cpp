#include "scan/composition.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/scan/scans.h"

namespace {

using namespace std::string_literals;

constexpr EnterPlace After = EnterPlace::AfterScan, Before = EnterPlace::BeforeScan;

std::array<WCHAR, 11> Text(std::u16string_view text) {
    std::array<WCHAR, 11> words{};
    std::copy(text.begin(), text.end(), words.begin());
    return words;
}

template <class... Scan>
std::string Compose(const LineOptions& options, const Scan&... scan) {
    OutputLine line;
    std::memset(&line, 0xAA, sizeof line);
    ComposeLine(scan..., options, line);
    EXPECT_LE(line.Count, MaximumLineLength);
    EXPECT_EQ(line.Bytes[line.Count], 0);
    return {reinterpret_cast<const char*>(line.Bytes), line.Count};
}

TEST(ComposeBarcode, EveryRuleInItsPlace) {
    const std::string verbose = "Barcode: AB12\rType: Code 39\rLength: 4";
    const LineOptions both = {.IncludeCodeType = true, .IncludeCodeLength = true};
    const auto with = [&](EnterPlace place, char character, std::u16string_view prefix = u"",
                          std::u16string_view suffix = u"") {
        LineOptions options = both;
        options.Enter = place;
        options.EnterCharacter = static_cast<BYTE>(character);
        options.Prefix = Text(prefix);
        options.Suffix = Text(suffix);
        return options;
    };
    const std::pair<LineOptions, std::string> cases[] = {
        {{.Enter = After, .EnterCharacter = '\r'}, "AB12\r"},
        {{.Enter = Before, .EnterCharacter = '\r'}, "\rAB12"},
        {{.Enter = After}, "AB12"},
        {{.Enter = After, .EnterCharacter = '\t'}, "AB12"},
        {{.Enter = Before, .EnterCharacter = '\t'}, "AB12"},
        {{.Enter = After, .EnterCharacter = ';', .IncludeCodeType = true}, "AAB12;"},
        {{.EnterCharacter = '\r', .Prefix = Text(u"0123456789"), .Suffix = Text(u"abcdefghij")},
         "0123456789AB12abcdefghij"},
        {{.Prefix = Text(u"\u0141\u0100"), .Suffix = Text(u"\u20AC")}, "\x41\0AB12\xAC"s},
        {with(After, '\r', u"X"), "A004XAB12\r"},
        {with(After, '\r', u"", u"Y"), "A004AB12Y\r"},
        {with(Before, '\r', u"(", u")"), "\rA004(AB12)"},
        {both, verbose},
        {with(After, ','), verbose + ","},
        {with(After, '\t'), verbose},
        {with(Before, ','), verbose},
        {with(Before, '\t'), verbose},
    };
    for (const auto& [options, line] : cases) {
        EXPECT_EQ(Compose(options, ReaderFamily::Decoder1D, BarcodeScan('A', "AB12")), line);
    }
}

TEST(ComposeBarcode, TypeAndLengthOfUnusualScans) {
    const LineOptions both = {.IncludeCodeType = true, .IncludeCodeLength = true};
    LineOptions normal = both;
    normal.Prefix = Text(u":");
    for (const auto& [length, field] :
         {std::pair(0, "000"), {7, "007"}, {99, "099"}, {999, "999"}, {1000, "100"}, {4060, "406"}}) {
        const std::string data(static_cast<std::size_t>(length), 'd');
        const ScanData scan = BarcodeScan('A', data);
        EXPECT_EQ(Compose(normal, ReaderFamily::Packet, scan), std::string("A") + field + ":" + data);
        EXPECT_EQ(Compose(both, ReaderFamily::Packet, scan),
                  "Barcode: " + data + "\rType: Code 39\rLength: " + std::to_string(length));
    }
    // An unknown code type is a zero byte, or an empty name with a packet reader.
    const ScanData unknown = BarcodeScan('\0', "x\0y"s);
    EXPECT_EQ(Compose(normal, ReaderFamily::Packet, unknown),
              "\0"
              "003:x\0y"s);
    EXPECT_EQ(Compose(both, ReaderFamily::Packet, unknown), "Barcode: x\0y\rType: \rLength: 3"s);
}

TEST(ComposeBarcode, ALineTooLongLosesTheEndOfTheData) {
    std::string data;
    while (data.size() < 4095) {
        data += std::to_string(data.size()) + ";";
    }
    data.resize(4095);
    const ScanData scan = BarcodeScan('k', data);
    LineOptions options = {.Enter = After, .EnterCharacter = '\r'};
    EXPECT_EQ(Compose(options, ReaderFamily::Packet, scan), data + "\r");  // 4,096: just fits

    options.IncludeCodeType = options.IncludeCodeLength = true;
    const std::string tail = "\rType: PDF417\rLength: 4095\r";
    EXPECT_EQ(Compose(options, ReaderFamily::Packet, scan),
              "Barcode: " + data.substr(0, 4096 - 9 - tail.size()) + tail);

    options.Prefix = Text(u"0123456789");
    options.Suffix = Text(u"abcdefghij");
    EXPECT_EQ(Compose(options, ReaderFamily::Packet, scan),
              "k4090123456789" + data.substr(0, 4096 - 14 - 11) + "abcdefghij\r");
}

// Buffers and texts that lack their zero end at their last place.
TEST(ComposeLine, NothingIsReadBehindABuffer) {
    LineOptions options = {.ReadRfidUid = true, .ReadRfidData = true};
    options.Prefix.fill(u'p');
    options.Suffix.fill(u's');
    EXPECT_EQ(Compose(options, ReaderFamily::Packet, BarcodeScan('A', "-")), "pppppppppp-ssssssssss");
    RfidScanData tag{};
    std::memset(tag.uid, 'u', sizeof tag.uid);
    std::memset(tag.data, 'd', sizeof tag.data);
    EXPECT_EQ(Compose(options, tag).size(), sizeof tag.uid + sizeof tag.data);
}

TEST(ComposeTag, EveryCombination) {
    const struct {
        bool Uid, Data, Use;
        WCHAR Delimiter;
        EnterPlace Enter;
        BYTE Character;
        std::string Line;
    } cases[] = {
        {true, true, true, u',', EnterPlace::None, '\r', "E004,ABC"},
        {true, true, true, u',', After, '\r', "E004,ABC\r"},
        {true, true, false, u',', Before, ';', ";E004ABC"},
        {true, true, true, 0, After, '\t', "E004ABC"},
        {true, true, true, u'\u013B', Before, '\t', "E004;ABC"},
        {true, true, true, u'\u0100', After, 0, "E004\0ABC"s},
        {true, false, true, u',', After, '\r', "E004\r"},
        {false, true, true, u',', After, 0, "ABC"},
        {false, false, true, u',', After, '\r', "\r"},
    };
    for (const auto& [uid, data, use, delimiter, enter, character, line] : cases) {
        // What belongs to barcodes must not show.
        const LineOptions options = {enter, character, Text(u"P"), Text(u"S"), true,
                                     true,  uid,       data,       use,        delimiter};
        EXPECT_EQ(Compose(options, TagScan("E004", "ABC")), line);
    }
}

}  // namespace
