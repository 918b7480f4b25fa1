// The terminal folder: everything of one terminal lives in it.
#pragma once

#include <string>
#include <string_view>

#include "platform/base.h"

namespace layer {

// `$VANTREL_TERMINAL`, or `$XDG_DATA_HOME/vantrel/terminal`; created on first use with mode 0700, with
// DiskOnChip/, Windows/ (and the read sounds in it) and windows/. No trailing slash.
const std::string& TerminalFolder();
// The folder's identity, in the names of objects that programs share: 16 hexadecimal digits, the 64-bit
// FNV-1a hash of the folder's real path.
const std::string& TerminalIdentity();
// The host path of a platform path (`\DiskOnChip\X`), or empty for one that is no path of the terminal or
// would leave its folder. Names are matched as they are; a component that exists only in another letter case
// is taken instead.
std::string HostPath(LPCWSTR path);
// Tests: use another folder from now on.
void UseTerminalFolder(std::string folder);

// What is no text on the one side becomes a replacement character on the other.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

}  // namespace layer
