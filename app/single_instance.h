// One program a terminal. Main thread, before there is a window.
#pragma once

// Whether this start goes on: no other instance runs. One that runs shows its settings instead; one that is
// just ending is waited for, 5 s at most, since the readers' ports are its until its end.
bool BecomeOnlyInstance();
