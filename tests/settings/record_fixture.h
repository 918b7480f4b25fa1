// A record in the state of a fresh start, for every test.
#pragma once

#include <gtest/gtest.h>

#include "settings/record.h"

// All zero, no reader, no page built.
void ClearRecord();

class RecordTest : public testing::Test {
  protected:
    void SetUp() override { ClearRecord(); }
};
