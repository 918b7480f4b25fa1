// The bytes of the settings file, and the record that they say. Pure but for the record.
#pragma once

#include <array>

#include "platform/base.h"

inline constexpr DWORD SettingsFileSize = 1100;

using SettingsImage = std::array<BYTE, SettingsFileSize>;

// Puts a file's bytes into the record: texts are ended, and what an older version lacks or wrote in another
// way is brought up to date.
void TakeSettingsImage(const SettingsImage& image);
// The record as a file of the present version.
void BuildSettingsImage(SettingsImage& image);
