#include "scan/composition.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using namespace std::string_literals;

ScanData Scan(char letter, const std::string& data) {
    ScanData scan{};
    scan.codeType = static_cast<BYTE>(letter);
    scan.length = static_cast<DWORD>(data.size());
    std::memcpy(scan.data, data.data(), data.size());
    return scan;
}

std::array<WCHAR, 11> Text(std::u16string_view text) {
    std::array<WCHAR, 11> words{};
    std::copy(text.begin(), text.end(), words.begin());
    return words;
}

std::string Compose(const ScanData& scan, const LineOptions& options,
                    ReaderFamily family = ReaderFamily::Decoder1D) {
    OutputLine line;
    std::memset(&line, 0xAA, sizeof line);
    ComposeLine(family, scan, options, line);
    EXPECT_LE(line.Count, MaximumLineLength);
    EXPECT_EQ(line.Bytes[line.Count], 0);
    return {reinterpret_cast<const char*>(line.Bytes), line.Count};
}

TEST(ComposeBarcode, EveryRuleInItsPlace) {
    const auto None = EnterPlace::None, After = EnterPlace::AfterScan, Before = EnterPlace::BeforeScan;
    const std::string verbose = "Barcode: AB12\rType: Code 39\rLength: 4";
    const struct {
        EnterPlace Enter;
        char Character;
        bool Type, Length;
        std::u16string_view Prefix, Suffix;
        std::string Line;
    } cases[] = {
        {After, '\r', false, false, u"", u"", "AB12\r"},
        {Before, '\r', false, false, u"", u"", "\rAB12"},
        {After, 0, false, false, u"", u"", "AB12"},
        {After, '\t', false, false, u"", u"", "AB12"},
        {Before, '\t', false, false, u"", u"", "AB12"},
        {After, ';', true, false, u"", u"", "AAB12;"},
        {After, '\r', true, true, u"X", u"", "A004XAB12\r"},
        {After, '\r', true, true, u"", u"Y", "A004AB12Y\r"},
        {Before, '\r', true, true, u"(", u")", "\rA004(AB12)"},
        {None, '\r', false, false, u"0123456789", u"abcdefghij", "0123456789AB12abcdefghij"},
        {None, 0, false, false, u"\u0141\u0100", u"\u20AC", "\x41\0AB12\xAC"s},
        {None, '\r', true, true, u"", u"", verbose},
        {After, ',', true, true, u"", u"", verbose + ","},
        {After, '\t', true, true, u"", u"", verbose},
        {Before, ',', true, true, u"", u"", verbose},
        {Before, '\t', true, true, u"", u"", verbose},
    };
    for (const auto& item : cases) {
        LineOptions options{};
        options.Enter = item.Enter;
        options.EnterCharacter = static_cast<BYTE>(item.Character);
        options.IncludeCodeType = item.Type;
        options.IncludeCodeLength = item.Length;
        options.Prefix = Text(item.Prefix);
        options.Suffix = Text(item.Suffix);
        EXPECT_EQ(Compose(Scan('A', "AB12"), options), item.Line);
    }
}

TEST(ComposeBarcode, TypeAndLengthOfUnusualScans) {
    LineOptions both{};
    both.IncludeCodeType = both.IncludeCodeLength = true;
    LineOptions normal = both;
    normal.Prefix = Text(u":");
    const struct {
        std::size_t Length;
        std::string Field;
    } lengths[] = {{0, "000"},    {7, "007"},    {99, "099"},  {999, "999"},
                   {1000, "100"}, {1234, "123"}, {4060, "406"}};
    for (const auto& [length, field] : lengths) {
        const std::string data(length, 'd');
        EXPECT_EQ(Compose(Scan('A', data), normal), "A" + field + ":" + data);
        EXPECT_EQ(Compose(Scan('A', data), both),
                  ("Barcode: " + data + "\rType: Code 39\rLength: " + std::to_string(length)));
    }
    // An unknown code type is a zero byte, or an empty name with a packet reader.
    EXPECT_EQ(Compose(Scan('\0', "x\0y"s), normal, ReaderFamily::Packet),
              "\0"
              "003:x\0y"s);
    EXPECT_EQ(Compose(Scan('\0', "x\0y"s), both, ReaderFamily::Packet), "Barcode: x\0y\rType: \rLength: 3"s);
}

TEST(ComposeBarcode, ALineTooLongLosesTheEndOfTheData) {
    std::string data;
    while (data.size() < 4095) {
        data += std::to_string(data.size()) + ";";
    }
    data.resize(4095);
    LineOptions options{};
    options.Enter = EnterPlace::AfterScan;
    options.EnterCharacter = '\r';
    EXPECT_EQ(Compose(Scan('k', data), options, ReaderFamily::Packet), data + "\r");  // 4,096: just fits

    options.IncludeCodeType = options.IncludeCodeLength = true;
    options.Prefix = Text(u"0123456789");
    options.Suffix = Text(u"abcdefghij");
    EXPECT_EQ(Compose(Scan('k', data), options, ReaderFamily::Packet),
              "k4090123456789" + data.substr(0, 4096 - 14 - 11) + "abcdefghij\r");

    options.Prefix = options.Suffix = {};
    const std::string tail = "\rType: PDF417\rLength: 4095\r";
    EXPECT_EQ(Compose(Scan('k', data), options, ReaderFamily::Packet),
              "Barcode: " + data.substr(0, 4096 - 9 - tail.size()) + tail);
}

// Buffers and texts that lack their zero end at their last place.
TEST(ComposeLine, NothingIsReadBehindABuffer) {
    LineOptions options{};
    options.Prefix.fill(u'p');
    options.Suffix.fill(u's');
    EXPECT_EQ(Compose(Scan('A', "-"), options), "pppppppppp-ssssssssss");
    RfidScanData scan{};
    std::memset(scan.uid, 'u', sizeof scan.uid);
    std::memset(scan.data, 'd', sizeof scan.data);
    options.ReadRfidUid = options.ReadRfidData = true;
    OutputLine line;
    ComposeLine(scan, options, line);
    EXPECT_EQ(line.Count, sizeof scan.uid + sizeof scan.data);
}

TEST(ComposeTag, EveryCombination) {
    RfidScanData scan{};
    scan.tagType = 'V';
    std::strcpy(scan.uid, "E004");
    std::strcpy(scan.data, "ABC");
    const auto None = EnterPlace::None, After = EnterPlace::AfterScan, Before = EnterPlace::BeforeScan;
    const struct {
        bool Uid, Data, Use;
        WCHAR Delimiter;
        EnterPlace Enter;
        char Character;
        std::string Line;
    } cases[] = {
        {true, true, true, u',', None, '\r', "E004,ABC"},
        {true, true, true, u',', After, '\r', "E004,ABC\r"},
        {true, true, false, u',', Before, ';', ";E004ABC"},
        {true, true, true, 0, After, '\t', "E004ABC"},
        {true, true, true, u'\u013B', Before, '\t', "E004;ABC"},
        {true, true, true, u'\u0100', None, 0, "E004\0ABC"s},
        {true, false, true, u',', After, '\r', "E004\r"},
        {false, true, true, u',', None, 0, "ABC"},
        {false, false, true, u',', After, '\r', "\r"},
    };
    for (const auto& item : cases) {
        // What belongs to barcodes must not show.
        LineOptions options{};
        options.IncludeCodeType = options.IncludeCodeLength = true;
        options.Prefix = Text(u"P");
        options.Suffix = Text(u"S");
        options.ReadRfidUid = item.Uid;
        options.ReadRfidData = item.Data;
        options.UseDelimiter = item.Use;
        options.Delimiter = item.Delimiter;
        options.Enter = item.Enter;
        options.EnterCharacter = static_cast<BYTE>(item.Character);
        OutputLine line;
        ComposeLine(scan, options, line);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(line.Bytes), line.Count), item.Line);
    }
}

}  // namespace
