// Download of the settings into the 1D reader: one SAVE command with a block of 30 bytes.
#pragma once

#include <array>

#include "platform/base.h"

using ParameterBlock = std::array<BYTE, 30>;

// Fills the block, which must be zero, from the current settings.
void Build1DParameterBlock(ParameterBlock& block);

// Sends the block when anything differs from the snapshots; the reader must answer OK, at the second try at
// the latest. One that does not answer at all is looked for at its other bit rates before that. The barcode
// receive thread must not read.
[[nodiscard]] bool Save1DSettings();
