#include "platform/program.h"

#include <cstdio>
#include <cstdlib>

#include "platform/base.h"

namespace layer {

namespace {

BOOL WINAPI EndByConsole(DWORD) {
    EndProgram(0);
}

}  // namespace

void StartHiddenWindows() {}

void EndOnSignal() {
    SetConsoleCtrlHandler(EndByConsole, TRUE);
}

void EndProgram(int code) {
    std::fflush(nullptr);
    ExitProcess(static_cast<UINT>(code));
}

}  // namespace layer
