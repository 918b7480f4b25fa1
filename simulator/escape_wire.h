// The 1D reader's framings: commands behind a run of wake-up bytes and ESC, ended by CR; messages ESC,
// letter, three length digits, data, CR.
#pragma once

#include "simulator/bytes.h"

namespace readers {

inline constexpr std::uint8_t Escape = 0x1B;
inline constexpr std::uint8_t CarriageReturn = 0x0D;
inline constexpr std::size_t WakeUpBytes = 30;
inline constexpr std::size_t LargestCommand = 226;
inline constexpr std::size_t LargestMessageData = 999;
inline constexpr std::size_t ParameterBytes = 30;

struct EscapeReceived {
    enum Kind { Command, Asleep, Noise } What;  // Asleep: a command behind too few wake-up bytes
    std::string Text;                           // the command without ESC and CR, or the noise
};

// Finds commands in what arrives, however it is cut.
class EscapeReceiver {
  public:
    std::vector<EscapeReceived> Push(std::span<const std::uint8_t> bytes);
    std::string Abandon();
    bool Waiting() const { return WakeUps > 0 || !Pending.empty(); }

  private:
    std::size_t WakeUps = 0;
    bool InCommand = false;
    std::string Pending;
};

// A message with the length digits of its data, or with other ones. At most LargestMessageData bytes of data
// when no digits are given.
Bytes EscapeMessageOf(std::uint8_t letter, std::span<const std::uint8_t> data, std::string_view digits = "");

// The 30 bytes behind "SAVE": exactly 60 upper-case hexadecimal digits. Nothing otherwise.
std::optional<Bytes> ParameterBlockOf(std::string_view digits);
std::string ParameterDigitsOf(std::span<const std::uint8_t> block);

}  // namespace readers
