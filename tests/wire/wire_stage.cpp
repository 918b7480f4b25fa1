#include "tests/wire/wire_stage.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "firmware/decoder.h"
#include "link/barcode_receiver.h"
#include "link/detection.h"
#include "link/parameter_download.h"
#include "link/read_control.h"
#include "link/reading.h"
#include "link/rfid_channel.h"
#include "link/serial_ports.h"
#include "settings/defaults.h"
#include "settings/pages.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

// The handlers are plain functions: what they record has to be global.
std::mutex receivedMutex;
std::deque<std::vector<BYTE>> received;

void Record(const BYTE* bytes, DWORD length) {
    const std::lock_guard lock(receivedMutex);
    received.emplace_back(bytes, bytes + length);
}

int RecordBarcode(const BYTE* message, DWORD length) {
    Record(message, length);
    ShellState.TransferBusy = 0;  // as after a delivery without keys
    return 1;
}

int RecordRfid(const char* line, DWORD length) {
    Record(reinterpret_cast<const BYTE*>(line), length);
    return 1;
}

std::string HexOf(const std::vector<BYTE>& bytes) {
    return Hex(bytes) + " (" + std::to_string(bytes.size()) + " bytes)";
}

struct Variable {
    std::function<DWORD()> Get;
    std::function<void(DWORD)> Set;
};

template <class T>
Variable Word(Relaxed<T>& word) {
    return {[&] { return DWORD{word}; }, [&](DWORD value) { word = static_cast<T>(value); }};
}

const std::map<std::string, Variable>& Variables() {
    static const std::map<std::string, Variable> variables{
        {"TransferBusy", Word(ShellState.TransferBusy)},
        {"TriggerReleased", Word(ShellState.TriggerReleased)},
        {"LaserHold", Word(ShellState.LaserHold)},
        {"ReaderReady", Word(ShellState.ReaderReady)},
        {"InitDone", Word(ShellState.InitDone)},
        {"Applying", Word(ShellState.Applying)},
        {"ReconfigureReaders", Word(ShellState.ReconfigureReaders)},
        {"BarcodeEnabled", Word(ShellState.BarcodeEnabled)},
        {"RfidEnabled", Word(ShellState.RfidEnabled)},
        {"BarcodeReadActive", Word(ShellState.BarcodeReadActive)},
        {"RfidReadActive", Word(ShellState.RfidReadActive)},
        {"BarcodeThreadRun", Word(ShellState.BarcodeThreadRun)},
        {"RfidThreadRun", Word(ShellState.RfidThreadRun)},
        {"RfidReaderModel",
         {[] { return DWORD{RfidReaderModel}; }, [](DWORD value) { RfidReaderModel = value; }}}};
    return variables;
}

const Variable& VariableByName(const std::string& name) {
    const auto found = Variables().find(name);
    if (found == Variables().end())
        throw std::runtime_error("nothing is known about " + name);
    return found->second;
}

// "general.AimDuration"; those of the symbologies begin with "1d." or "engine.".
const Setting& SettingByName(const std::string& name) {
    const std::string layout = name.substr(0, name.find('.') + 1);
    const Setting* found = nullptr;
    const auto look = [&](const Setting& setting) {
        const char* own = setting.Block == SettingBlock::General ? "general."
                          : IsIn(setting, ReaderType::Decoder1D) ? "1d."
                                                                 : "engine.";
        if (layout == own && layout + setting.Name == name)
            found = &setting;
    };
    ForEachGeneralField(look);
    ForEachSymbologyField(look);
    if (!found)
        throw std::runtime_error("no such setting: " + name);
    return *found;
}

HANDLE PortOf(const std::string& number) {
    return number == "2" ? ShellState.RfidPort : ShellState.BarcodePort;
}

WORD DeviceBits(const std::string& name) {
    static const std::map<std::string, WORD> names{{"none", 0},
                                                   {"1d", Device1D},
                                                   {"laser", DeviceLaser},
                                                   {"imager", DeviceImager},
                                                   {"rfid", DeviceRfid}};
    return names.at(name);
}

// `purge` as in `@ purge 12`.
WireAct SystemAct(const std::string& word) {
    for (const WireActForm& form : WireActForms) {
        if (form.Words == "^ " + word || form.Words == "@ " + word)
            return form.Act;
    }
    throw std::runtime_error("no act of the system: " + word);
}

void CloseIfOpen(Relaxed<HANDLE>& handle) {
    if (HANDLE open = handle.Exchange(nullptr))
        CloseHandle(open);
}

constexpr std::uint64_t LongestCall = 10'000;

// Everything that a case before this one may have left.
void ClearState() {
    DeviceFlags = 0;
    for (auto& word : SymbologySettings)
        word = 0;
    for (auto& word : GeneralSettings)
        word = 0;
    TakeSnapshots();
    SnapshotsTaken = 0;
    for (const auto& [name, variable] : Variables())
        variable.Set(0);
    const std::lock_guard lock(receivedMutex);
    received.clear();
}

}  // namespace

DWORD ToNumber(const std::string& word) {
    return static_cast<DWORD>(std::stoul(word, nullptr, 0));
}

const std::string& At(const std::vector<std::string>& words, std::size_t index) {
    if (index >= words.size())
        throw std::runtime_error("something is missing after " + words.back());
    return words[index];
}

WireStage::WireStage(Conversation::Complaint complain)
    : complain_(std::move(complain)),
      talk_(clock_, complain_),
      watched_{WireAct::Write, WireAct::Rts, WireAct::Rate} {
    layer::InstallClock(&clock_);
    ClearState();
    ReceiveHandlers = {RecordBarcode, RecordRfid};
    ports_ = std::make_unique<ScriptedPorts>(talk_, [] {
        ShellState.BarcodeThreadRun = 0;
        ShellState.RfidThreadRun = 0;
    });
    talk_.Watch(watched_);
}

WireStage::~WireStage() {
    CloseRfidChannel();
    CloseIfOpen(ShellState.BarcodePort);
    CloseIfOpen(ShellState.RfidPort);
    // Whoever waits for a time to come ends with it.
    while (StageClock::Rest().has_value() && clock_.NextWake() != layer::Forever)
        clock_.AdvanceTo(clock_.NextWake());
    ports_.reset();
    layer::InstallClock(nullptr);
}

void WireStage::Run(const WireCommand& command) {
    const std::string& what = command.Words[0];
    if (what == "call")
        Call(command);
    else if (!command.Steps.empty())
        throw std::runtime_error("acts belong to a call");
    else if (what == "expect")
        Expect(command.Words, command.Line);
    else
        Prepare(command.Words);
}

void WireStage::Prepare(const Words& words) {
    const std::string& what = words[0];
    if (what == "device") {
        WORD flags = 0;
        for (std::size_t i = 1; i < words.size(); ++i)
            flags |= DeviceBits(words[i]);
        DeviceFlags = flags;
    } else if (what == "defaults") {
        ResetSettings(ResetAllGroups);
    } else if (what == "snapshot") {
        TakeSnapshots();
    } else if (what == "set") {
        const std::string& value = At(words, 2);
        const bool quoted = value.size() == 3 && value[0] == '\'';
        SetValue(SettingByName(At(words, 1)),
                 quoted ? static_cast<WORD>(value[1]) : static_cast<WORD>(ToNumber(value)));
    } else if (what == "open") {
        const bool rfid = At(words, 1) == "2";
        Relaxed<HANDLE>& handle = rfid ? ShellState.RfidPort : ShellState.BarcodePort;
        handle = OpenReaderPort(rfid ? RfidPortSelector : BarcodePortSelector);
        if (words.size() > 2)
            SetPortLine(handle, ToNumber(words[2]));
    } else if (what == "var") {
        VariableByName(At(words, 1)).Set(ToNumber(At(words, 2)));
    } else if (what == "watch" || what == "ignore") {
        for (std::size_t i = 1; i < words.size(); ++i) {
            if (what == "watch")
                watched_.insert(SystemAct(words[i]));
            else
                watched_.erase(SystemAct(words[i]));
        }
        talk_.Watch(watched_);
    } else {
        throw std::runtime_error("unknown command: " + what);
    }
}

void WireStage::Call(const WireCommand& command) {
    std::vector<WireStep> steps = command.Steps;
    // A receive thread purges its port first: what the reader sends at once would not reach it.
    if (command.Words.size() > 1 && command.Words[1].ends_with("Receiver") && !steps.empty() &&
        steps[0].Least == 0)
        steps[0].Least = steps[0].Most = 1;
    talk_.Begin(std::move(steps), command.Line);
    result_ = CallByName(command.Words);
    Settle();
    talk_.End();
}

DWORD WireStage::CallByName(const Words& words) {
    const auto number = [&](std::size_t i) { return ToNumber(At(words, i + 1)); };
    const auto port = [&] { return PortOf(At(words, 2)); };
    const auto result = [](auto value) { return static_cast<DWORD>(value); };
    const std::map<std::string, std::function<DWORD()>> calls{
        {"SendReaderCommand", [&] { return result(SendReaderCommand(port(), ReadWireBytes(words, 3))); }},
        {"SendTogether",
         [&] {
             std::atomic<DWORD> sent = 0;
             std::array<std::jthread, 2> threads;
             for (auto& thread : threads)
                 thread = std::jthread([&] { sent += SendReaderCommand(port(), ReadWireBytes(words, 3)); });
             Let(1000);
             return DWORD{sent};
         }},
        {"RequestReply", [&] { return result(RequestReply(port(), ReadWireBytes(words, 3), reply_)); }},
        {"ReadRfidRegister",
         [&] {
             char value[RegisterTextLimit + 1] = "untouched";
             const int read = ReadRfidRegister(static_cast<BYTE>(number(1)), number(2), value);
             value_ = value;
             return result(read);
         }},
        {"BarcodeReceiver",
         [] {
             ShellState.BarcodeThreadRun = 1;
             return BarcodeReceiveThread(nullptr);
         }},
        {"RfidReceiver",
         [] {
             ShellState.RfidThreadRun = 1;
             const DWORD channel = BeginRfidChannel();
             BeginRfidLines();
             return RfidReceiveThread(reinterpret_cast<LPVOID>(static_cast<UINT_PTR>(channel)));
         }},
        {"BarcodeTrigger", [&] { return result(BarcodeTrigger(static_cast<int>(number(1)))); }},
        {"RestartBarcodeRead", [] { return RestartBarcodeRead(), DWORD{Success}; }},
        {"OpenRfidChannel", [&] { return result(OpenRfidChannel()); }},
        {"CloseRfidChannel", [] { return CloseRfidChannel(), DWORD{Success}; }},
        {"StartRfidRead", [&] { return result(StartRfidRead()); }},
        {"DetectReaders", [&] { return result(DetectReaders(&mask_)); }},
        {"ProbeReaderRates", [&] { return result(ProbeReaderRates(port(), static_cast<WORD>(number(2)))); }},
        {"InitializeReader",
         [&] {
             const auto type = static_cast<WORD>(number(1));
             return result(InitializeReader(PortOf(type == DeviceRfid ? "2" : "1"), type));
         }},
        {"Save1DSettings", [&] { return result(Save1DSettings()); }},
        {"DownloadLaserSettings", [&] { return result(DownloadLaserSettings()); }},
        {"DownloadImagerSettings", [&] { return result(DownloadImagerSettings()); }},
        {"FirmwareExchange",
         [&] { return result(FirmwareExchange(ShellState.BarcodePort, ReadWireBytes(words, 2), reply_)); }},
        {"QueryFirmwareVersion",
         [&] {
             std::array<BYTE, 32> version{};
             const DWORD queried = QueryFirmwareVersion(ShellState.BarcodePort, number(1), version);
             const std::string_view all(reinterpret_cast<const char*>(version.data()), version.size());
             value_ = all.substr(0, all.find('\0'));
             return queried;
         }},
        {"EnterDownloadMode", [&] { return result(EnterDownloadMode()); }},
        {"SendFirmwareFrame",
         [&] {
             FirmwareFrame frame{};
             const auto bytes = ReadWireBytes(words, 2);
             frame.Size = bytes.size();
             std::copy(bytes.begin(), bytes.end(), frame.Bytes.begin());
             return result(SendFirmwareFrame(frame));
         }},
        {"SetPortTimeouts", [&] { return result(SetPortTimeouts(port(), number(2))); }},
        {"wait", [&] { return Let(number(1)), result_; }},  // of a timer's work
    };
    const auto found = calls.find(At(words, 1));
    if (found == calls.end())
        throw std::runtime_error("unknown call: " + words[1]);
    return found->second();
}

void WireStage::Step(std::uint64_t limit) {
    clock_.AdvanceTo(std::max(clock_.Now() + 1, std::min({limit, talk_.NextArrival(), NextTimer()})));
}

void WireStage::Let(std::uint64_t milliseconds) {
    const std::uint64_t end = clock_.Now() + milliseconds;
    for (;;) {
        auto threads = StageClock::Rest();
        for (auto before = threads; threads; before = threads) {
            RunMainWindow();
            threads = StageClock::Rest();
            if (threads == before)
                break;
        }
        if (!threads)
            complain_(0, "a thread neither waits nor ends");
        if (clock_.Now() >= end)
            return;
        Step(std::min(end, clock_.NextWake()));
    }
}

void WireStage::Settle() {
    // A thread that looks for something again and again is left at it.
    const std::uint64_t end = clock_.Now() + LongestCall;
    for (;;) {
        Let(0);
        const std::uint64_t next = std::min(clock_.NextWake(), talk_.NextArrival());
        if (next == layer::Forever || clock_.Now() >= end)
            return;
        Step(std::min(next, end));
    }
}

void WireStage::Same(int line, const std::string& what, std::uint64_t expected, std::uint64_t got) {
    if (expected != got)
        complain_(line, what + " should be " + std::to_string(expected) + " but is " + std::to_string(got));
}

void WireStage::ExpectMessage(const Words& words, int line) {
    const std::lock_guard lock(receivedMutex);
    const auto expected = ReadWireBytes(words, 2);
    if (received.empty()) {
        complain_(line, "nothing was handed over");
        return;
    }
    if (received.front() != expected)
        complain_(line, "handed over: " + HexOf(received.front()) + "\n    expected: " + HexOf(expected));
    received.pop_front();
}

void WireStage::Expect(const Words& words, int line) {
    const std::string& what = At(words, 1);
    const std::string second = words.size() > 2 ? words[2] : "0";
    if (what == "result") {
        Same(line, what, second[0] == '-' ? DWORD(-1) : ToNumber(second), result_);
    } else if (what == "message") {
        ExpectMessage(words, line);
    } else if (what == "no" && second == "message") {
        CheckEnd(line);
    } else if (what == "reply") {
        const std::vector<BYTE> got(reply_.Bytes.begin(), reply_.Bytes.begin() + reply_.Length);
        if (got != ReadWireBytes(words, 2))
            complain_(line, "the reply is " + HexOf(got));
    } else if (what == "value") {
        if ("\"" + value_ + "\"" != second)
            complain_(line, "the value is " + value_);
    } else if (what == "mask") {
        Same(line, what, ToNumber(second), mask_);
    } else if (what == "handle") {
        Same(line, "handle of port " + second, At(words, 3) == "stored", PortOf(second) != nullptr);
    } else if (what == "port" || what == "rate" || what == "write-time") {
        const PortLine port = ports_->LineOf(static_cast<int>(ToNumber(second)));
        const std::string& wanted = At(words, 3);
        Same(line, what, what == "port" ? wanted == "open" : ToNumber(wanted),
             what == "port"   ? port.Open
             : what == "rate" ? port.Rate
                              : port.WriteTime);
    } else {
        Same(line, what, ToNumber(second), VariableByName(what).Get());
    }
}

void WireStage::CheckEnd(int line) {
    const std::lock_guard lock(receivedMutex);
    if (!received.empty())
        complain_(line, "handed over, but not expected: " + HexOf(received.front()));
}
