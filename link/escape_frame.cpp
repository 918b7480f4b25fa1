#include "link/escape_frame.h"

#include <algorithm>

namespace {

constexpr std::size_t WakeBytes = 30;
constexpr BYTE EscapeByte = 0x1B;
constexpr BYTE EndByte = 0x0D;

}  // namespace

std::size_t BuildEscapeFrame(std::span<const BYTE> command, EscFrame& frame) {
    if (command.size() > EscapeCommandLimit) {
        return 0;
    }
    auto next = std::fill_n(frame.begin(), WakeBytes, BYTE{0xFF});
    *next++ = EscapeByte;
    next = std::copy(command.begin(), command.end(), next);
    *next++ = EndByte;
    return static_cast<std::size_t>(next - frame.begin());
}
