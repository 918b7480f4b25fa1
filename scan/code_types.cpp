#include "scan/code_types.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

struct PacketCodeType {
    BYTE First, Last;  // code identifiers
    char Letter;
    std::string_view Name;
};

constexpr PacketCodeType PacketCodeTypes[] = {
    {1, 1, 'A', "Code 39"},
    {2, 2, 'G', "Codabar"},
    {3, 3, 'I', "Code 128"},
    {4, 4, 'j', "Industrial 2/5"},
    {5, 5, 'i', "IATA25"},
    {6, 6, 'E', "Interleave 2/5"},
    {7, 7, 'H', "Code 93"},
    {8, 8, '^', "UPC-A"},
    {9, 9, 'J', "UPC-E0"},
    {10, 10, 'M', "EAN8"},
    {11, 11, 'P', "EAN13"},
    {12, 12, 'g', "Code 11"},
    {14, 14, 'S', "MSI"},
    {15, 15, 'U', "EAN 128"},
    {16, 16, 'a', "UPC-E1"},
    {17, 17, 'k', "PDF417"},
    {19, 19, 'h', "Code 39 Full ASCII"},
    {21, 21, 'e', "Trioptic Code 39"},
    {22, 22, 'f', "Bookland"},
    {25, 25, 'x', "ISBT 128"},
    {26, 26, 'l', "Micro PDF"},
    {27, 27, 'm', "Data Matrix"},
    {28, 28, 'o', "QR Code"},
    {30, 30, 'p', "US Postnet"},
    {31, 31, 'q', "US Planet"},
    {32, 32, 'w', "Code 32"},
    {34, 34, 's', "Japan Postal"},
    {35, 35, 't', "Australian Postal"},
    {36, 36, 'u', "Dutch Postal"},
    {37, 37, 'n', "Maxicode"},
    {39, 39, 'r', "UK Postal"},
    {40, 40, 'y', "Macro PDF"},
    {48, 48, '[', "RSS14"},
    {49, 49, '\\', "RSS Limited"},
    {50, 50, ']', "RSS Expanded"},
    {72, 72, '_', "UPC-A with 2 Digits Addenda"},
    {73, 73, 'K', "UPC-E0 with 2 Digits Addenda"},
    {74, 74, 'N', "EAN8 with 2 Digits Addenda"},
    {75, 75, 'Q', "EAN13 with 2 Digits Addenda"},
    {80, 80, 'b', "UPC-E1 with 2 Digits Addenda"},
    {81, 89, 'v', "Composite Code"},
    {97, 104, 'v', "Composite Code"},
    {90, 90, 'd', "TLC-39"},
    {136, 136, '\'', "UPC-A with 5 Digits Addenda"},
    {137, 137, 'L', "UPC-E0 with 5 Digits Addenda"},
    {138, 138, 'O', "EAN8 with 5 Digits Addenda"},
    {139, 139, 'R', "EAN13 with 5 Digits Addenda"},
    {144, 144, 'c', "UPC-E1 with 5 Digits Addenda"},
};

// By letter, from "A" on.
constexpr std::array DecoderNames = std::to_array<std::string_view>({
    "Code 39", "Italian Pharma", "French Pharma", "Industrial 2/5", "Interleave 2/5", "Matrix 25",
    "Codabar", "Code 93",        "Code 128",      "UPCE",           "UPCE addon 2",   "UPCE addon 5",
    "EAN-8",   "EAN-8 addon 2",  "EAN-8 addon 5", "EAN-13",         "EAN-13 addon 2", "EAN-13 addon 5",
    "MSI",     "Plessey",        "EAN-128",
});

constexpr DWORD UpcALength = 12;

std::string_view DecoderName(const ScanData& scan) {
    // The 1D reader reports UPC-A under the letter of EAN-13: with its 12 digits, or as EAN-13 with a leading
    // 0.
    if (scan.codeType == 'P' && ((scan.length > 0 && scan.data[0] == '0') || scan.length == UpcALength)) {
        return "UPCA";
    }
    if (const std::size_t letter = scan.codeType - std::size_t{'A'}; letter < DecoderNames.size()) {
        return DecoderNames[letter];
    }
    return scan.codeType == 'Z' ? "Telepen" : "Unknown";
}

void CopyName(std::string_view name, std::span<char> to) {
    if (to.empty()) {
        return;
    }
    const std::size_t length = std::min(name.size(), to.size() - 1);
    std::memcpy(to.data(), name.data(), length);
    to[length] = '\0';
}

}  // namespace

void CodeIdToLetter(BYTE identifier, BYTE& letter) {
    for (const PacketCodeType& type : PacketCodeTypes) {
        if (identifier >= type.First && identifier <= type.Last) {
            letter = static_cast<BYTE>(type.Letter);
            return;
        }
    }
}

void CodeTypeName(ReaderFamily family, const ScanData& scan, std::span<char> name) {
    if (family == ReaderFamily::Decoder1D) {
        CopyName(DecoderName(scan), name);
        return;
    }
    for (const PacketCodeType& type : PacketCodeTypes) {
        if (scan.codeType == static_cast<BYTE>(type.Letter)) {
            CopyName(type.Name, name);
            return;
        }
    }
}
