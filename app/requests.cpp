#include "app/main_window.h"

#include <vector>

#include "app/settings_window.h"
#include "link/serial_ports.h"
#include "platform/keyboard.h"
#include "settings/settings_change.h"
#include "settings/settings_file.h"
#include "shell/shell_state.h"
#include "shell/status.h"

namespace {

constexpr LRESULT Version = 129;

DWORD RateOf(HANDLE port) {
    DCB state = {};
    state.DCBlength = sizeof state;
    return port && GetCommState(port, &state) ? state.BaudRate : 0;
}

// A release that came while the scan was still being typed has not ended the read; nobody holds the key,
// though.
bool Reading() {
    return ShellState.BarcodeReadActive && !ShellState.TriggerReleased;
}

DWORD Flags() {
    DWORD flags = 0;
    const auto set = [&flags](DWORD flag, bool on) { flags |= on ? flag : 0; };
    set(StatusInitialized, ShellState.InitDone);
    set(StatusBarcodeOn, ShellState.BarcodeEnabled);
    set(StatusRfidOn, ShellState.RfidEnabled);
    set(StatusBarcodeReading, Reading());
    set(StatusRfidReading, ShellState.RfidReadActive);
    set(StatusTransferBusy, ShellState.TransferBusy);
    set(StatusSettingsOpen, ShellState.SettingsSheet != nullptr);
    set(StatusApplying, ShellState.Applying);
    set(StatusUpgrading, ShellState.UpgradeActive);
    set(StatusError, ShellState.ErrorShown);
    return flags;
}

LRESULT Status(StatusValue value, DWORD start) {
    switch (value) {
        case StatusValue::Version:
            return Version;
        case StatusValue::Run:
            return start ? start : 1;
        case StatusValue::Flags:
            return Flags();
        case StatusValue::Devices:
            return DeviceFlags;
        case StatusValue::BarcodeRate:
            return RateOf(ShellState.BarcodePort);
        case StatusValue::RfidRate:
            return RateOf(ShellState.RfidPort);
        case StatusValue::ScansBegun:
            return ShellState.ScansBegun;
        case StatusValue::ScansDelivered:
            return ShellState.ScansDelivered;
        case StatusValue::SinceLastScan:
            return static_cast<DWORD>(GetTickCount() - ShellState.LastScanTick);
        case StatusValue::SinceStart:
            return static_cast<DWORD>(GetTickCount() - start);
        case StatusValue::Keys:
            return static_cast<LRESULT>(WhoTakesKeys());
    }
    return 0;
}

bool Busy() {
    return !ShellState.InitDone || ShellState.Applying || ShellState.UpgradeActive ||
           ShellState.TransferBusy || Reading() || ShellState.RfidReadActive || ShellState.RfidPort;
}

// As OK in the settings window does, without the window.
ChangeAnswer ChangeSettings(HWND window, std::span<const BYTE> change) {
    if (ShellState.ErrorShown || ShellState.Closing) {
        return ChangeAnswer::Refused;
    }
    if (ShellState.SettingsSheet) {
        return ChangeAnswer::SheetOpen;
    }
    if (Busy()) {
        return ChangeAnswer::Busy;
    }
    if (!IsChange(change)) {
        return ChangeAnswer::Refused;
    }
    // What was never applied still counts from the snapshots before it.
    const DWORD applied = ShellState.SettingsApplied.Exchange(0);
    if (applied) {
        TakeSnapshots();
    }
    std::vector<WORD> before;
    for (std::size_t word = 0; word < RecordWords; ++word) {
        before.push_back(RecordWord(word));
    }
    TakeChange(change);
    if (SaveSettings() != 1) {
        for (std::size_t word = 0; word < RecordWords; ++word) {
            RecordWord(word) = before[word];
        }
        ShellState.SettingsApplied = applied;
        return ChangeAnswer::NotSaved;
    }
    if (SwitchReadersOff()) {
        SendSettings(window);
    }
    return ChangeAnswer::Taken;
}

}  // namespace

bool HandleRequest(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer) {
    static const DWORD start = GetTickCount();  // of the first message that the window gets
    static const UINT queryStatus = RegisterWindowMessageW(QueryStatusMessage);
    static const UINT changeSettings = RegisterWindowMessageW(ChangeSettingsMessage);
    if (message == queryStatus) {
        answer = Status(static_cast<StatusValue>(wParam), start);
        return true;
    }
    const auto* copy = message == WM_COPYDATA ? reinterpret_cast<const COPYDATASTRUCT*>(lParam) : nullptr;
    if (!copy || copy->dwData != changeSettings) {
        return false;
    }
    const auto* bytes = static_cast<const BYTE*>(copy->lpData);
    answer = static_cast<LRESULT>(ChangeSettings(window, {bytes, bytes ? copy->cbData : 0}));
    return true;
}
