#pragma once

#include <QKeyEvent>

#include "platform/base.h"

namespace layer {

// The platform's number of the key; UnknownKey for one that it does not tell apart.
WORD VirtualKey(const QKeyEvent& event);
inline constexpr WORD UnknownKey = 0xFF;

}  // namespace layer
