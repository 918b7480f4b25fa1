// Numbers of registered messages (0xC000 to 0xFFFF): the same for one name in every program of the terminal.
#pragma once

#include <string>
#include <string_view>

#include "platform/window.h"

namespace layer {

inline constexpr UINT FirstRegistered = 0xC000;
inline constexpr UINT LastRegistered = 0xFFFF;

// The number of a name that this program has registered, or 0. Any thread.
UINT RegisteredNumber(std::u16string_view name);
// The name of a number that this program has registered, or empty. Any thread.
std::u16string RegisteredName(UINT number);
// Forgets what was registered; for tests, as another program would begin.
void ForgetRegisteredMessages();

}  // namespace layer
