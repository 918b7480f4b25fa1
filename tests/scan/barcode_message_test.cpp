#include "scan/barcode_data.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "scan/code_types.h"
#include "tests/scan/scans.h"

namespace {

using namespace std::string_literals;

// The message lies in memory of exactly its size, so that the address sanitizer sees a read behind it.
int Parse(const std::string& message, ScanData& scan) {
    const auto exact = std::make_unique<BYTE[]>(message.size());
    std::copy(message.begin(), message.end(), exact.get());
    return Parse1DMessage({exact.get(), message.size()}, scan);
}

TEST(Parse1DMessage, TakesTheDeclaredBytes) {
    const std::string longest(999, 'x');
    const struct {
        std::string Message;
        char Letter;
        std::string Data;
    } cases[] = {
        {"\033A00512345\r", 'A', "12345"},
        {"\033I999" + longest + "\r", 'I', longest},
        // Noise in front, even a CR; the first ESC counts.
        {"\r\nxx\033A002AB", 'A', "AB"},
        // More data than declared; a second message in the same read.
        {"\033A0031234567\r", 'A', "123"},
        {"\033A002AB\r\033B002CD\r", 'A', "AB"},
        // Control characters and bytes above 0x7F are data, so is an ESC or a CR.
        {"\033A005\r\n\t\xE9\033\r", 'A', "\r\n\t\xE9\033"},
        // The CR belongs to the declared bytes when one data byte is missing.
        {"\033A00712345\r\n", 'A', "12345\r\n"},
        // A number ends at the first other character; blanks in front do not count.
        {"\033A  2AB\r", 'A', "AB"},
        {"\033A 2xAB\r", 'A', "AB"},
        // Any letter passes here, even none.
        {"\033?002AB\r", '?', "AB"},
        {"\033\033002AB\r", '\033', "AB"},
        // What looks like another message in whole data belongs to it.
        {"\033A009X\r\033Z003YZ\r", 'A', "X\r\033Z003YZ"},
    };
    for (const auto& [message, letter, data] : cases) {
        SCOPED_TRACE(testing::PrintToString(message.substr(0, 40)));
        ScanData scan = BarcodeScan('~', "");
        ASSERT_EQ(Parse(message, scan), 1);
        EXPECT_EQ(scan.codeType, static_cast<BYTE>(letter));
        EXPECT_EQ(scan.Bytes(), data);
        EXPECT_EQ(scan.data[scan.length], 0);
    }
}

TEST(Parse1DMessage, DropsWhatIsNoWholeMessage) {
    const std::string cases[] = {
        "A00512345\r"s,
        "\033A00512345"s,
        "\033A010123456\r"s,
        "\033A007123456"s,
        "\033\r\033A002AB\r"s,
        "\033A000\r"s,
        "\033AABC12345\r"s,
        "\033A   12345\r"s,
        "\033A-0512345\r"s,
        "\033A-1212345678901234\r"s,
        "\033A+0512345\r"s,
        "\033A\0\0\5"
        "12345\r"s,
        "\033A00512\0"
        "45\r"s,
        "\033A005\0"
        "2345\r"s,
        "\033A999"s + std::string(998, 'x'),
        "NG\r"s,
    };
    for (const std::string& message : cases) {
        ScanData scan;
        EXPECT_EQ(Parse(message, scan), 0) << testing::PrintToString(message.substr(0, 40));
    }
}

TEST(ParsePacketMessage, IsNeverOverrun) {
    ScanData scan;
    for (const std::size_t size : {4096u, 4097u, 9000u}) {
        const std::vector<BYTE> message(size, 'p');
        ParsePacketMessage(message, scan);
        EXPECT_EQ(scan.Bytes(), std::string(4095, 'p'));
    }
}

TEST(CodeTypes, NamesDependOnFamilyAndData) {
    const struct {
        ReaderFamily Family;
        char Letter;
        std::string_view Data, Name;
    } cases[] = {
        {ReaderFamily::Decoder1D, 'P', "012345678905", "UPCA"},
        {ReaderFamily::Decoder1D, 'P', "0123456789012", "UPCA"},
        {ReaderFamily::Decoder1D, 'P', "4006381333931", "EAN-13"},
        {ReaderFamily::Decoder1D, 'P', "", "EAN-13"},
        {ReaderFamily::Decoder1D, '@', "1", "Unknown"},
        {ReaderFamily::Decoder1D, 'a', "1", "Unknown"},
        {ReaderFamily::Packet, 'P', "012345678905", "EAN13"},
        {ReaderFamily::Packet, '\'', "1", "UPC-A with 5 Digits Addenda"},
        {ReaderFamily::Packet, '\\', "1", "RSS Limited"},
        {ReaderFamily::Packet, 'Z', "1", "before"},
    };
    for (const auto& [family, letter, data, expected] : cases) {
        char name[51] = "before";
        CodeTypeName(family, BarcodeScan(letter, data), name);
        EXPECT_EQ(name, expected) << letter;
    }
}

}  // namespace
