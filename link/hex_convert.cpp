#include "link/hex_convert.h"

#include <array>
#include <cstring>

namespace {

constexpr DWORD WorkingSize = 4096;
static_assert(HexEncodeLimit * 2 < WorkingSize && HexDecodeLimit / 2 <= WorkingSize);

constexpr char Digits[] = "0123456789ABCDEF";

// Lower case counts as it is meant; what is no digit at all gives some value, as the readers never send it.
constexpr unsigned DigitValue(BYTE character) {
    if (character <= '9') {
        return static_cast<unsigned>(character) - '0';
    }
    if (character <= 'F') {
        return static_cast<unsigned>(character) - 'A' + 10;
    }
    return static_cast<unsigned>(character) - 'a' + 10;
}

}  // namespace

DWORD HexConvert(int mode, const BYTE* input, BYTE* output, DWORD length) {
    std::array<BYTE, WorkingSize> working;
    DWORD size = 0;
    if (mode == HexEncode) {
        if (length == 0 || length > HexEncodeLimit) {
            return 0;
        }
        for (DWORD i = 0; i < length; ++i) {
            working[size++] = static_cast<BYTE>(Digits[input[i] >> 4]);
            working[size++] = static_cast<BYTE>(Digits[input[i] & 0x0F]);
        }
    } else {
        if (length == 0 || length % 2 != 0 || length > HexDecodeLimit) {
            return 0;
        }
        for (DWORD i = 0; i < length; i += 2) {
            working[size++] = static_cast<BYTE>(DigitValue(input[i]) * 16 + DigitValue(input[i + 1]));
        }
    }
    std::memcpy(output, working.data(), size);
    return size;
}
