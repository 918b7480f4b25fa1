// Files of the terminal's disks.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/kernel/object.h"

namespace layer {

// How a file is opened, in the platform's values. Locks are advisory locks of the host: they keep out the
// programs of the terminal.
struct DiskAccess {
    DWORD Access;       // GENERIC_READ, GENERIC_WRITE
    DWORD ShareMode;    // 0: nobody else has it open meanwhile
    DWORD Disposition;  // OPEN_EXISTING or CREATE_ALWAYS
};

// Opens a regular file; null when it cannot be opened so.
// A file of CREATE_ALWAYS is written beside the old one and takes its place when the handle is closed: power
// that fails in between, a full disk or a killed program leave the old content whole.
std::shared_ptr<Stream> OpenDiskFile(const std::string& path, const DiskAccess& access);

}  // namespace layer
