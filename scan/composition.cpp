#include "scan/composition.h"

#include <algorithm>
#include <charconv>

#include "scan/code_types.h"

namespace {

constexpr std::size_t CodeTypeNameSize = 51;
constexpr std::size_t VerboseTailSize = 100;
constexpr std::string_view VerboseHead = "Barcode: ";

// A few bytes that stand before or behind the data.
struct Piece {
    std::array<BYTE, VerboseTailSize + 1> Bytes;
    std::size_t Count = 0;

    void Add(BYTE value) { Bytes[Count++] = value; }
    void Add(std::string_view text) {
        for (const char character : text) {
            Add(static_cast<BYTE>(character));
        }
    }
    // Applications get single bytes: the low one of each character.
    void Add(const std::array<WCHAR, 11>& text) {
        for (std::size_t at = 0; at + 1 < text.size() && text[at] != 0; ++at) {
            Add(static_cast<BYTE>(text[at]));
        }
    }
    std::string_view Text() const { return {reinterpret_cast<const char*>(Bytes.data()), Count}; }
};

void AddEnter(Piece& piece, const LineOptions& options, EnterPlace place) {
    if (options.Enter == place && options.EnterCharacter != 0 && options.EnterCharacter != '\t') {
        piece.Add(options.EnterCharacter);
    }
}

// The field is three characters wide, and a longer length is too rare to widen it: its first three digits
// stay.
void AddCodeLength(Piece& piece, DWORD length) {
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof digits, length).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    for (std::size_t fill = text.size(); fill < 3; ++fill) {
        piece.Add(BYTE{'0'});
    }
    piece.Add(text.substr(0, 3));
}

void AddVerboseTail(Piece& piece, ReaderFamily family, const ScanData& scan) {
    std::array<char, CodeTypeNameSize> name{};
    CodeTypeName(family, scan, name);
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof digits, scan.length).ptr;
    piece.Add("\rType: ");
    piece.Add(std::string_view(name.data()));
    piece.Add("\rLength: ");
    piece.Add(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void Join(std::string_view head, std::string_view data, std::string_view tail, OutputLine& line) {
    data = data.substr(0, MaximumLineLength - head.size() - tail.size());
    line.Count = 0;
    for (const std::string_view part : {head, data, tail}) {
        std::copy(part.begin(), part.end(), line.Bytes + line.Count);
        line.Count += static_cast<DWORD>(part.size());
    }
    line.Bytes[line.Count] = 0;
}

}  // namespace

void ComposeLine(ReaderFamily family, const ScanData& scan, const LineOptions& options, OutputLine& line) {
    Piece head, tail;
    if (options.Prefix[0] == 0 && options.Suffix[0] == 0 && options.IncludeCodeType &&
        options.IncludeCodeLength) {
        head.Add(VerboseHead);
        AddVerboseTail(tail, family, scan);
    } else {
        AddEnter(head, options, EnterPlace::BeforeScan);
        if (options.IncludeCodeType) {
            head.Add(scan.codeType);
        }
        if (options.IncludeCodeLength) {
            AddCodeLength(head, scan.length);
        }
        head.Add(options.Prefix);
        tail.Add(options.Suffix);
    }
    AddEnter(tail, options, EnterPlace::AfterScan);
    Join(head.Text(), scan.Bytes(), tail.Text(), line);
}

void ComposeLine(const RfidScanData& scan, const LineOptions& options, OutputLine& line) {
    Piece head, tail;
    AddEnter(head, options, EnterPlace::BeforeScan);
    AddEnter(tail, options, EnterPlace::AfterScan);
    if (options.ReadRfidUid) {
        head.Add(TextIn(scan.uid));
        if (options.ReadRfidData && options.UseDelimiter && options.Delimiter != 0) {
            head.Add(static_cast<BYTE>(options.Delimiter));
        }
    }
    std::string_view data;
    if (options.ReadRfidData) {
        data = TextIn(scan.data);
    }
    Join(head.Text(), data, tail.Text(), line);
}
