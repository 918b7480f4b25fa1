// The names of the objects that programs of one terminal share, and who takes them away.
//
// The file `shared-objects` in the terminal folder holds a line per object, "event NAME" or "queue NAME" with
// the host's name of it. Every program that uses one holds a shared lock (flock) on the file. The last one
// takes the names away; a program that comes first does so too, with what a killed one has left. A program
// that stays thus keeps the objects alive for the next start.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/base.h"
#include "platform/linux/kernel/posix.h"

namespace layer {

inline constexpr const char *EventKind = "event", *QueueKind = "queue";

class SharedNames {
  public:
    // Holds the open and locked file; shared by all objects of this program.
    SharedNames(Descriptor file, std::string prefix);
    ~SharedNames();
    SharedNames(const SharedNames&) = delete;
    SharedNames& operator=(const SharedNames&) = delete;

    // The host's name of a shared object, "/vantrel-IDENTITY-NAME", noted in the file before the object is
    // made. Empty for a name that cannot be used: only letters, digits, '.', '_' and '-' can, at most 64.
    std::string Enter(const char* kind, LPCWSTR name);
    // Lets go, and takes the names away when no other program holds them. Once.
    void Leave();

    const std::string& Prefix() const { return prefix_; }

  private:
    std::mutex mutex_;
    Descriptor file_;
    const std::string prefix_;
};

// This program's part in the terminal's shared names; null when the file cannot be had. It is left when the
// last object lets go of it, or at the end of the program.
std::shared_ptr<SharedNames> JoinSharedNames();

// Whether a shared object belongs to this user and is open to nobody else; says so on standard error when it
// is not. Whoever else can write it could take the scans, or bring the program down.
bool IsOursAlone(const struct stat& status, const char* kind, const std::string& name);

}  // namespace layer
