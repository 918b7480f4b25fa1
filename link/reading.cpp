#include "link/reading.h"

#include <atomic>

#include "link/turn.h"

namespace {

constexpr DWORD LongestStep = 500;  // ms

Turn StepsTurn;
std::atomic<DWORD> LastStep{0};
thread_local bool (*Lasts)() = nullptr;

// The number is there before the step looks at its reading.
bool BeginStep() {
    StepsTurn.Take(INFINITE);
    ++LastStep;
    return ReadingLasts();
}

}  // namespace

void JoinReading(bool (*lasts)()) {
    Lasts = lasts;
}

bool ReadingLasts() {
    return Lasts == nullptr || Lasts();
}

ReadingStep::ReadingStep() : lasts_(BeginStep()) {}

ReadingStep::~ReadingStep() {
    StepsTurn.Give();
}

void FinishReadingStep() {
    const DWORD step = LastStep;
    for (DWORD waited = 0; StepsTurn.Taken() && LastStep == step && waited < LongestStep; ++waited) {
        Sleep(1);
    }
}
