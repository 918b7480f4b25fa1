// What a scan costs between the reader's message and its last key event.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "scan/barcode_data.h"
#include "scan/composition.h"
#include "scan/decode_record.h"
#include "scan/delivery.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

ScanData Scan(std::int64_t length) {
    ScanData scan{};
    scan.codeType = 'A';
    scan.length = static_cast<DWORD>(length);
    for (DWORD at = 0; at < scan.length; ++at) {
        scan.data[at] = static_cast<BYTE>('!' + at % 90);
    }
    return scan;
}

void Parse1D(benchmark::State& state) {
    std::array<BYTE, 1005> message{};
    message.fill('x');
    std::memcpy(message.data(),
                "\x1B"
                "A999",
                5);
    message.back() = '\r';
    for (auto _ : state) {
        ScanData scan;
        benchmark::DoNotOptimize(Parse1DMessage(message, scan));
    }
}
BENCHMARK(Parse1D);

// Argument 1: the verbose form.
void Compose(benchmark::State& state) {
    const ScanData scan = Scan(state.range(0));
    LineOptions options{};
    options.Enter = EnterPlace::AfterScan;
    options.EnterCharacter = '\r';
    options.IncludeCodeType = options.IncludeCodeLength = state.range(1) != 0;
    for (auto _ : state) {
        OutputLine line;
        ComposeLine(ReaderFamily::Packet, scan, options, line);
        benchmark::DoNotOptimize(line);
    }
}
BENCHMARK(Compose)->ArgsProduct({{13, 4095}, {0, 1}});

void BuildRecord(benchmark::State& state) {
    const ScanData scan = Scan(state.range(0));
    for (auto _ : state) {
        DecodeRecord record;
        BuildDecodeRecord(scan, record);
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(BuildRecord)->Arg(13)->Arg(4095);

class SilentKeyboard : public layer::KeyboardBackend {
  public:
    void Key(BYTE key, bool) override { benchmark::DoNotOptimize(key); }
    void ReleaseAll() override {}
};

HANDLE QueueEnd(BOOL reads) {
    MSGQUEUEOPTIONS options{};
    options.dwSize = sizeof options;
    options.dwMaxMessages = 1;
    options.cbMaxMessage = sizeof(DecodeRecord);
    options.bReadAccess = reads;
    return CreateMsgQueue(TEXT("QuenraDataQueue"), &options);
}

void DeliverTo(benchmark::State& state, std::unique_ptr<layer::KeyboardBackend> keyboard) {
    char folder[] = "/tmp/vantrel-bench-XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        state.SkipWithError("no folder for the terminal");
        return;
    }
    layer::UseTerminalFolder(folder);
    layer::InstallKeyboard(std::move(keyboard));
    DeviceFlags = DeviceImager;
    ShellState.QueueWriter = QueueEnd(FALSE);
    ShellState.QueueReader = QueueEnd(TRUE);
    ShellState.DecodeEventHandle = CreateEventW(nullptr, FALSE, FALSE, TEXT("DecodeEvent"));
    SetValue(general::DataOutput, static_cast<WORD>(state.range(1)));
    const ScanData scan = Scan(state.range(0));
    for (auto _ : state) {
        DeliverScan(ReaderFamily::Packet, scan);
    }
    CloseMsgQueue(ShellState.QueueReader.Exchange(nullptr));
    CloseMsgQueue(ShellState.QueueWriter.Exchange(nullptr));
    CloseHandle(ShellState.DecodeEventHandle.Exchange(nullptr));
    layer::InstallKeyboard(nullptr);
    std::filesystem::remove_all(folder);
}

// Argument 1 is the output setting: '1' (49) keys, '4' (52) queue and event, '5' (53) all of them.
void DeliverSilently(benchmark::State& state) {
    DeliverTo(state, std::make_unique<SilentKeyboard>());
}
BENCHMARK(DeliverSilently)->ArgsProduct({{13, 4095}, {'1', '4', '5'}})->Unit(benchmark::kMicrosecond);

void DeliverTraced(benchmark::State& state) {
    DeliverTo(state, layer::MakeTraceKeyboard("/dev/null"));
}
BENCHMARK(DeliverTraced)->Args({13, '1'})->Args({4095, '1'})->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
