// What a program says that crashes.
#pragma once

namespace layer {

// From now on a crash of any thread says its signal and the calls that led to it on standard error, and ends
// the program as ever (with a core where the system keeps one). Who handles such a signal already, a
// sanitizer, keeps it. Before other threads run.
void SpeakOnCrash();

}  // namespace layer
