// Every named field of the settings record.
#pragma once

#include "settings/decoder1d_fields.h"
#include "settings/engine_fields.h"
#include "settings/general_fields.h"
