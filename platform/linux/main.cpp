// The program's start and end on Linux, around WinMain.
#include <unistd.h>

#include <QTimer>
#include <csignal>
#include <cstdio>
#include <string>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/window.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

int main(int count, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);  // whoever reads standard error may go
    layer::SpeakOnCrash();
    layer::StartWindows();
    layer::TakeSignals();
    layer::WatchMainThread();
    // With the first look at messages: a start that only hands over, or answers, needs none.
    QTimer::singleShot(0, [] { layer::PrepareKeyboard(); });
    static char instance;
    static std::string commandLine;
    for (int i = 1; i < count; ++i) {
        commandLine += std::string(i > 1 ? " " : "") + arguments[i];
    }
    const int code =
        WinMain(reinterpret_cast<HINSTANCE>(&instance), nullptr, commandLine.data(), SW_SHOWNORMAL);
    layer::BeginEnd();
    std::fflush(nullptr);
#if defined(__SANITIZE_ADDRESS__)
    __lsan_do_leak_check();
#endif
    // Threads may still run: static objects stay as they are under them.
    _exit(code);
}
