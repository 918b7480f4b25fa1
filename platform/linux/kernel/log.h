// The diary from inside the layer, in the host's own characters, and a program's last words in it.
#pragma once

#include <string_view>

#include "platform/log.h"

namespace layer {

// Writes "vantrel: " and the text as one line. Any thread; takes no memory.
void Say(LogPriority priority, std::string_view text);
// The same with a format of printf; at most 1,000 bytes.
__attribute__((format(printf, 2, 3))) void Say(LogPriority priority, const char* format, ...);

// From now on a crash of any thread says its signal and the calls that led to it on standard error, and ends
// the program as ever (with a core where the system keeps one). Who handles such a signal already, a
// sanitizer, keeps it. Before other threads run.
void SpeakOnCrash();

// For as long as it lives its thread speaks on a crash even where its own stack is full. Takes memory when it
// is used, not before; where a sanitizer has such a stack, or none is to be had, it does nothing.
class CrashStack {
  public:
    CrashStack();
    ~CrashStack();
    CrashStack(const CrashStack&) = delete;
    CrashStack& operator=(const CrashStack&) = delete;

  private:
    void* stack_ = nullptr;
};

}  // namespace layer
