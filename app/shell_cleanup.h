// Releases everything that start-up and the run have taken. Main thread, on WM_DESTROY.
#pragma once

void ShellCleanup();
