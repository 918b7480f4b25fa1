// What a scan costs by its length, by the programs that listen (one of them hanging), and after a hundred
// thousand: from the message of the reader to the last key, on all channels. Prints lines
// "kind,x,microseconds,99th percentile,processor microseconds,kilobytes" for scale_picture.py. The keys go to
// a trace that nobody keeps.
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/kernel.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/window.h"
#include "scan/decode_record.h"
#include "scan/delivery.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD UsualLength = 13;
constexpr int Scans = 200;
constexpr int Many = 100'000, Chunk = 5'000;

double ProcessorMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

long ResidentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long all = 0, resident = 0;
    file >> all >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::unique_ptr<ScanData> Scan(DWORD length) {
    auto scan = std::make_unique<ScanData>();
    scan->codeType = 'A';
    scan->length = length;
    for (DWORD at = 0; at < length; ++at) {
        scan->data[at] = static_cast<BYTE>('0' + at % 10);
    }
    return scan;
}

void Measure(const char* kind, long x, DWORD length, int scans) {
    const auto scan = Scan(length);
    std::vector<double> times;
    const double processor = ProcessorMicroseconds();
    for (int i = 0; i < scans; ++i) {
        const auto start = Clock::now();
        DeliverScan(ReaderFamily::Packet, *scan);
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    const double used = (ProcessorMicroseconds() - processor) / scans;
    std::sort(times.begin(), times.end());
    std::printf("%s,%ld,%.1f,%.1f,%.1f,%ld\n", kind, x, times[times.size() / 2],
                times[times.size() * 99 / 100], used, ResidentKilobytes());
    std::fflush(stdout);
}

void MeasureAll(const std::string& terminal) {
    Measure("warm-up", 0, UsualLength, Scans);
    for (const DWORD length : {1, 4, 16, 64, 256, 1024, 4095}) {
        Measure("length", static_cast<long>(length), length, Scans);
    }
    for (const bool hanging : {false, true}) {
        for (const int listeners : {1, 2, 5, 10, 20, 50}) {
            ChildProcess others({"/usr/bin/env", "python3", LISTENERS, terminal, std::to_string(listeners),
                                 hanging ? "1" : "0"});
            others.ReadLine(20000);
            Measure(hanging ? "listeners-hanging" : "listeners", listeners, UsualLength, Scans);
        }
    }
    for (int done = Chunk; done <= Many; done += Chunk) {
        Measure("scans", done, UsualLength, Chunk);
    }
}

HANDLE QueueEnd(BOOL reads) {
    MSGQUEUEOPTIONS options{};
    options.dwSize = sizeof options;
    options.dwMaxMessages = 1;
    options.cbMaxMessage = sizeof(DecodeRecord);
    options.bReadAccess = reads;
    return CreateMsgQueue(TEXT("QuenraDataQueue"), &options);
}

}  // namespace

int main() {
    if (std::freopen("/dev/null", "w", stderr) == nullptr) {  // a line a scan: nobody takes the records
        return 1;
    }
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const TemporaryTerminal terminal;
    layer::StartWindows();
    layer::InstallKeyboard(layer::MakeTraceKeyboard("/dev/null"));
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = WindowClassName;
    RegisterClassW(&windowClass);
    ShellState.MainWindow = CreateWindowExW(0, WindowClassName, WindowTitle, 0, 0, 0, 240, 294, nullptr,
                                            nullptr, nullptr, nullptr);
    DeviceFlags = DeviceImager;
    ShellState.QueueWriter = QueueEnd(FALSE);
    ShellState.QueueReader = QueueEnd(TRUE);
    ShellState.DecodeEventHandle = CreateEventW(nullptr, FALSE, FALSE, TEXT("DecodeEvent"));
    SetValue(general::DataOutput, '7');
    const HWND window = ShellState.MainWindow;
    std::atomic<bool> done{false};
    std::thread receiver([&] {
        MeasureAll(terminal.Folder());
        done = true;
        PostMessageW(window, WM_TIMER, 0, 0);
    });
    MSG message;
    while (!done && GetMessageW(&message, nullptr, 0, 0)) {
        DispatchMessageW(&message);
    }
    receiver.join();
    DestroyWindow(window);
    CloseMsgQueue(ShellState.QueueReader.Exchange(nullptr));
    CloseMsgQueue(ShellState.QueueWriter.Exchange(nullptr));
    CloseHandle(ShellState.DecodeEventHandle.Exchange(nullptr));
    return 0;
}
