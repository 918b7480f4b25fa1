// The start and the end of the small programs around the system. Main thread.
#pragma once

namespace layer {

// The program has windows, which never show.
void StartHiddenWindows();
// Who ends the session or interrupts the program ends it with code 0, whatever it waits for.
void EndOnSignal();
// Gives shared names back and ends the program.
[[noreturn]] void EndProgram(int code);

}  // namespace layer
