// What a fuzz target insists on, in every kind of build.
#pragma once

#include <cstdint>
#include <cstdlib>

inline void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}
