#include "tools/status.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <iterator>

#include "platform/keyboard.h"
#include "platform/window.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

DWORD Ask(HWND window, UINT message, StatusValue value) {
    return static_cast<DWORD>(SendMessageW(window, message, static_cast<WPARAM>(value), 0));
}

std::string TimeBefore(DWORD milliseconds) {
    const auto time = std::chrono::system_clock::now() - std::chrono::milliseconds(milliseconds);
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    char text[40] = "null";
    if (const std::tm* utc = std::gmtime(&seconds)) {
        std::strftime(text, sizeof text, "\"%Y-%m-%dT%H:%M:%SZ\"", utc);
    }
    return text;
}

std::string Number(DWORD number) {
    return std::to_string(number);
}
const char* Bool(bool value) {
    return value ? "true" : "false";
}

// By KeysGoTo.
const char* KeysName(DWORD kind) {
    constexpr const char* names[] = {"unknown", "none", "trace", "xtest", "wayland", "uinput", "windows"};
    static_assert(std::size(names) == static_cast<std::size_t>(KeysGoTo::Count));
    return names[kind < std::size(names) ? kind : 0];
}

std::string Reader(DWORD rate, bool on, bool reading) {
    return std::string("\"rate\":") + (rate != 0 ? Number(rate) : "null") + ",\"on\":" + Bool(on) +
           ",\"reading\":" + Bool(reading) + "}";
}

}  // namespace

std::optional<ProgramStatus> AskStatus() {
    const HWND window = FindWindowW(WindowClassName, WindowTitle);
    if (window == nullptr) {
        return std::nullopt;
    }
    const UINT message = RegisterWindowMessageW(QueryStatusMessage);
    ProgramStatus status;
    status.Run = Ask(window, message, StatusValue::Run);
    if (status.Run == 0) {
        return std::nullopt;
    }
    status.ScansDelivered = Ask(window, message, StatusValue::ScansDelivered);
    status.ScansBegun = Ask(window, message, StatusValue::ScansBegun);
    status.Version = Ask(window, message, StatusValue::Version);
    status.Flags = Ask(window, message, StatusValue::Flags);
    status.Devices = Ask(window, message, StatusValue::Devices);
    status.BarcodeRate = Ask(window, message, StatusValue::BarcodeRate);
    status.RfidRate = Ask(window, message, StatusValue::RfidRate);
    status.SinceLastScan = Ask(window, message, StatusValue::SinceLastScan);
    status.Keys = Ask(window, message, StatusValue::Keys);
    status.SinceStart = Ask(window, message, StatusValue::SinceStart);
    return status;
}

std::string StatusJson(const ProgramStatus& status) {
    const auto is = [&status](DWORD flag) { return (status.Flags & flag) != 0; };
    std::string readers;
    if (const ReaderType type = BarcodeReaderOf(status.Devices); type != ReaderType::None) {
        readers = std::string("\"barcode\":{\"type\":\"") +
                  ReaderIdentities[static_cast<std::size_t>(type)].Name + "\"," +
                  Reader(status.BarcodeRate, is(StatusBarcodeOn), is(StatusBarcodeReading));
    }
    if ((status.Devices & DeviceRfid) != 0) {
        readers += std::string(readers.empty() ? "" : ",") + "\"rfid\":{" +
                   Reader(status.RfidRate, is(StatusRfidOn), is(StatusRfidReading));
    }
    char version[16];
    std::snprintf(version, sizeof version, "%u.%02u", static_cast<unsigned>(status.Version / 100 % 1000),
                  static_cast<unsigned>(status.Version % 100));
    const bool ready = is(StatusInitialized) && !is(StatusApplying) && !is(StatusError);
    const bool busy = is(StatusTransferBusy) || status.ScansBegun != status.ScansDelivered;
    return std::string("{\"version\":\"") + version + "\",\"run\":" + Number(status.Run) +
           ",\"started\":" + TimeBefore(status.SinceStart) + ",\"ready\":" + Bool(ready) + ",\"readers\":{" +
           readers + "},\"busy\":" + Bool(busy) + ",\"keys\":\"" + KeysName(status.Keys) +
           "\",\"settingsOpen\":" + Bool(is(StatusSettingsOpen)) +
           ",\"applying\":" + Bool(is(StatusApplying)) + ",\"upgrading\":" + Bool(is(StatusUpgrading)) +
           ",\"error\":" + Bool(is(StatusError)) + ",\"scans\":" + Number(status.ScansBegun) +
           ",\"delivered\":" + Number(status.ScansDelivered) +
           ",\"lastScan\":" + (status.ScansBegun != 0 ? TimeBefore(status.SinceLastScan) : "null") + "}";
}

int PrintStatus() {
    const auto status = AskStatus();
    if (!status) {
        std::fputs("vantrel-watch: vantrel does not run on this terminal, or does not answer\n", stderr);
        return 1;
    }
    std::puts(StatusJson(*status).c_str());
    return 0;
}
