// The settings that conversations set, by name.
#pragma once

#include <string>

#include "settings/field.h"

// Throws std::runtime_error for a name it does not know.
const Setting& SettingByName(const std::string& name);
