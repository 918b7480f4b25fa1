// The terminal folder, and what the layer's Windows side keeps to itself.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base.h"

namespace layer {

// %VANTREL_TERMINAL%, else %LOCALAPPDATA%\vantrel\terminal; made with its folders at the first call. A full
// path without a separator at its end. Any thread.
const std::wstring& TerminalFolder();
// What tells this terminal from others: the 64-bit FNV-1a hash of the folder's path in lower case, as UTF-16
// bytes.
std::uint64_t TerminalIdentity();
// The name of an object that the programs of this terminal share: `Local\vantrel-` and the identity's 16
// hexadecimal digits in front.
std::wstring SharedName(LPCWSTR name);
// Where a path of the platform (`\DiskOnChip\X`) lies; empty when it is none or would leave the folder.
std::wstring HostPath(LPCWSTR path);
// An environment variable; empty when it is not set.
std::wstring Variable(LPCWSTR name);

// Milliseconds of a clock that goes in steps of at most one.
std::int64_t Milliseconds();

// A lock of the platform, taken for a scope.
class Guard {
  public:
    explicit Guard(SRWLOCK& lock) : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~Guard() { ReleaseSRWLockExclusive(&lock_); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

  private:
    SRWLOCK& lock_;
};

}  // namespace layer
