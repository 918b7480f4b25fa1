#pragma once

#include <cstddef>
#include <span>
#include <string_view>

// What is built into the program: the compiled resources and the read sounds. The bytes live for the whole
// run.

// vantrel.rc in compiled form (.res).
std::span<const std::byte> CompiledResources();

struct EmbeddedSound {
    std::string_view FileName;  // as it stands in the terminal's Windows folder, with its extension
    std::span<const std::byte> Bytes;
};

// All sounds, in the order of their numbers 1 to 9.
std::span<const EmbeddedSound> EmbeddedSounds();
