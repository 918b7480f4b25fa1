#include "tools/settings/terminal_settings.h"

#include <array>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "platform/window.h"
#include "settings/settings_change.h"
#include "settings/settings_file.h"
#include "shell/shell_state.h"

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds Pause{50};
constexpr std::chrono::seconds LongestLoad{2};   // a program that saves has the file for itself
constexpr std::chrono::seconds LongestBusy{30};  // a start takes some seconds, typing a long label too
constexpr std::size_t FirstWordAt = 240;         // offset in the file

using Words = std::array<WORD, RecordWords>;

Words CopyRecord() {
    Words words;
    for (std::size_t i = 0; i < RecordWords; ++i) {
        words[i] = RecordWord(i);
    }
    return words;
}

// Whether the file holds these words: a save does not tell what becomes of its write.
bool FileHolds(const Words& words) {
    std::array<BYTE, SettingsFileSize> image{};
    DWORD read = 0;
    const HANDLE file = OpenSettingsFile(0);
    if (file == nullptr) {
        return false;
    }
    ReadFile(file, image.data(), SettingsFileSize, &read, nullptr);
    CloseHandle(file);
    bool same = read == SettingsFileSize;
    for (std::size_t i = 0; i < RecordWords; ++i) {
        const std::size_t at = FirstWordAt + 2 * i;
        same = same && (image[at] | image[at + 1] << 8) == words[i];
    }
    return same;
}

std::vector<BYTE> ChangeFrom(const Words& before) {
    std::vector<BYTE> change;
    const auto put = [&change](std::size_t word) {
        change.push_back(static_cast<BYTE>(word & 0xFF));
        change.push_back(static_cast<BYTE>(word >> 8));
    };
    put(DeviceFlags);
    for (std::size_t i = 0; i < RecordWords; ++i) {
        if (RecordWord(i) != before[i]) {
            put(i);
            put(RecordWord(i));
        }
    }
    return change;
}

std::string Load(std::chrono::seconds longest) {
    const auto until = SteadyClock::now() + longest;
    for (;;) {
        const int loaded = LoadSettings();
        if (loaded == 1) {
            return {};
        }
        if (loaded == 0) {
            return "this terminal has no settings file yet, or no whole one; vantrel makes it when it starts";
        }
        if (SteadyClock::now() > until) {
            return "the settings file is there, but cannot be opened";
        }
        std::this_thread::sleep_for(Pause);
    }
}

std::string SendChange(HWND window, std::vector<BYTE> change) {
    COPYDATASTRUCT copy{};
    copy.dwData = RegisterWindowMessageW(ChangeSettingsMessage);
    copy.cbData = static_cast<DWORD>(change.size());
    copy.lpData = change.data();
    const auto until = SteadyClock::now() + LongestBusy;
    for (;;) {
        const LRESULT answer = SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&copy));
        switch (static_cast<ChangeAnswer>(answer)) {
            case ChangeAnswer::Taken:
                return {};
            case ChangeAnswer::Busy:
                if (SteadyClock::now() < until) {
                    std::this_thread::sleep_for(Pause);
                    continue;
                }
                return "vantrel is busy reading; nothing was changed";
            case ChangeAnswer::SheetOpen:
                return "the settings are open on the terminal; nothing was changed";
            case ChangeAnswer::Refused:
                return "vantrel runs with other readers than the settings file names; nothing was changed";
            case ChangeAnswer::NotSaved:
                return "vantrel cannot write the settings file; nothing was changed";
        }
        return "vantrel does not answer; look with `vantrel-settings show` whether it has taken the change";
    }
}

}  // namespace

std::string LoadTerminal() {
    return Load(LongestLoad);
}

std::string ChangeTerminal(const std::function<bool()>& change) {
    // Whoever has the mutex is the only instance: while it is held here none starts, and one that has begun
    // to is found before long.
    const std::shared_ptr<void> mutex(CreateMutexW(nullptr, FALSE, WindowClassName), CloseHandle);
    const auto until = SteadyClock::now() + LongestBusy;
    HWND running = nullptr;
    while ((running = FindWindowW(WindowClassName, WindowTitle)) == nullptr &&
           WaitForSingleObject(mutex.get(), 100) == WAIT_TIMEOUT) {
        if (SteadyClock::now() > until) {
            return "vantrel neither runs nor has ended; nothing was changed";
        }
    }
    // A first start makes the file when it has found the readers.
    if (std::string wrong = Load(running != nullptr ? LongestBusy : LongestLoad); !wrong.empty()) {
        return wrong;
    }
    const Words before = CopyRecord();
    if (!change()) {
        return "nothing was changed";
    }
    const std::vector<BYTE> pairs = ChangeFrom(before);
    if (pairs.size() == sizeof(WORD)) {
        return {};
    }
    if (running != nullptr) {
        return SendChange(running, pairs);
    }
    const Words wanted = CopyRecord();
    if (!SaveSettings() || !FileHolds(wanted)) {
        return "the settings file cannot be written";
    }
    return {};
}
