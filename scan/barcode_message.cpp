// The two forms in which barcode readers send a scan.
#include <algorithm>
#include <cstring>

#include "scan/barcode_data.h"
#include "scan/code_types.h"

namespace {

constexpr BYTE ReturnByte = 0x0D;
constexpr std::size_t LengthDigits = 3;
constexpr std::size_t HeadSize = 2 + LengthDigits;  // ESC, code type, length
constexpr DWORD CodeIdentifierLength = 3;

// Leading blanks are skipped and the number ends at the first other character, so "  7" and "7A " are 7. A
// sign is such a character.
DWORD ReadNumber(std::span<const BYTE> digits) {
    std::size_t at = 0;
    while (at < digits.size() && (digits[at] == ' ' || digits[at] == '\t')) {
        ++at;
    }
    DWORD number = 0;
    for (; at < digits.size() && digits[at] >= '0' && digits[at] <= '9'; ++at) {
        number = number * 10 + (digits[at] - '0');
    }
    return number;
}

std::size_t EscapeAt(std::span<const BYTE> messages) {
    return static_cast<std::size_t>(std::find(messages.begin(), messages.end(), EscapeByte) -
                                    messages.begin());
}

// Up to behind the first message's CR; 0 when there is none where its length leads to.
std::size_t WholeSize(std::span<const BYTE> messages) {
    const std::size_t head = EscapeAt(messages) + HeadSize;
    if (head > messages.size()) {
        return 0;
    }
    const std::size_t end = head + ReadNumber(messages.subspan(head - LengthDigits, LengthDigits));
    return end != head && end < messages.size() && messages[end] == ReturnByte ? end + 1 : 0;
}

}  // namespace

int Parse1DMessage(std::span<const BYTE> message, ScanData& scan) {
    const auto escape = std::find(message.begin(), message.end(), EscapeByte);
    if (escape == message.end() || std::find(message.begin(), message.end(), ReturnByte) == message.end()) {
        return 0;
    }
    std::span<const BYTE> rest(escape + 1, message.end());
    if (rest.size() < 1 + LengthDigits) {
        return 0;
    }
    scan.codeType = rest[0];
    scan.length = ReadNumber(rest.subspan(1, LengthDigits));
    rest = rest.subspan(1 + LengthDigits);
    if (scan.length == 0 || scan.length + Next1DMessages(message).size() > rest.size()) {
        return 0;
    }
    std::memcpy(scan.data, rest.data(), scan.length);
    scan.data[scan.length] = 0;
    return std::memchr(scan.data, 0, scan.length) == nullptr;
}

std::span<const BYTE> Next1DMessages(std::span<const BYTE> messages) {
    if (const std::size_t whole = WholeSize(messages)) {
        return messages.subspan(whole);
    }
    const auto digit = [](BYTE character) { return character >= '0' && character <= '9'; };
    for (std::size_t at = EscapeAt(messages) + 1; at + HeadSize <= messages.size(); ++at) {
        if (messages[at - 1] == ReturnByte && messages[at] == EscapeByte &&
            std::ranges::all_of(messages.subspan(at + HeadSize - LengthDigits, LengthDigits), digit)) {
            return messages.subspan(at);
        }
    }
    return {};
}

void DropCodeIdentifier(ScanData& scan) {
    if (scan.length < CodeIdentifierLength) {
        return;
    }
    scan.length -= CodeIdentifierLength;
    std::memmove(scan.data, scan.data + CodeIdentifierLength, scan.length);
    scan.data[scan.length] = 0;
}

void ParsePacketMessage(std::span<const BYTE> message, ScanData& scan) {
    scan.codeType = 0;
    CodeIdToLetter(message[0], scan.codeType);
    const std::size_t length = std::min(message.size() - 1, MaximumScanLength);
    scan.length = static_cast<DWORD>(length);
    std::memcpy(scan.data, message.data() + 1, length);
}
