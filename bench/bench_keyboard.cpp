// How long a label takes to be typed: the calls, and until the program in front has got its last key.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/platform/typed_text.h"
#include "tests/platform/x_client.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int Labels = 200;

void Print(const char* what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    std::printf("  %-8s median %6.3f ms, p99 %6.3f ms\n", what, times[Labels / 2], times[Labels * 99 / 100]);
}

double Since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace

int main() {
    const XServer server;
    XClient client;
    setenv("VANTREL_KEYBOARD", "xtest", 1);
    layer::PrepareKeyboard();
    for (const std::string label : {"4006381333931\r", "ABCDEFGHIJKLM$"}) {
        TypeText(label);
        client.Typed(label.size());
        std::vector<double> called, arrived;
        for (int i = 0; i < Labels; ++i) {
            const auto start = Clock::now();
            TypeText(label);
            called.push_back(Since(start));
            client.Await(label.size());
            arrived.push_back(Since(start));
        }
        std::printf("%zu characters, %d labels:\n", label.size(), Labels);
        Print("typed", called);
        Print("arrived", arrived);
    }
}
