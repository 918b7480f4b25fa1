// A record in the state of a fresh start, for every test.
#pragma once

#include <gtest/gtest.h>

#include "settings/settings_change.h"

// The same in every word of both blocks.
inline void FillRecord(WORD word) {
    for (std::size_t number = 0; number < RecordWords; ++number)
        RecordWord(number) = word;
}

class RecordTest : public testing::Test {
  protected:
    RecordTest() { Clear(); }
    static void Clear() {
        DeviceFlags = 0;
        FillRecord(0);
    }
};
