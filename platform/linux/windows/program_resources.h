// The compiled resources of the program.
#pragma once

#include "platform/linux/resources/resource_file.h"
#include "platform/window.h"

namespace layer {

resource::Bytes ProgramResources();
// Tests: other resources from now on (empty: the program's again).
void UseResources(resource::Bytes resources);

// The number behind a name made by MAKEINTRESOURCEW; 0 for a real name, which no resource here has.
inline WORD ResourceNumber(LPCWSTR name) {
    const auto value = reinterpret_cast<std::uintptr_t>(name);
    return value <= 0xFFFF ? static_cast<WORD>(value) : WORD{0};
}

}  // namespace layer
