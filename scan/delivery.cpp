#include "scan/delivery.h"

#include <array>

#include "link/reading.h"
#include "platform/kernel.h"
#include "platform/window.h"
#include "scan/composition.h"
#include "scan/decode_record.h"
#include "scan/typing.h"
#include "settings/all_fields.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

// Bits of the data output setting.
constexpr WORD OutputKeyboard = 1;
constexpr WORD OutputMessage = 2;
constexpr WORD OutputEvent = 4;

constexpr int WriteTries = 3;
constexpr DWORD WriteWait = 10;  // ms

constexpr UINT BusyPerByte = 12;  // ms that the application in front gets for a typed byte

// By the digit of the ENTER character setting.
constexpr std::array<BYTE, 6> EnterCharacters = {0, '\r', '\t', ' ', ',', ';'};

void ReadLineOptions(LineOptions& options) {
    const WORD place = DigitOf(general::AutoEnter);
    options.Enter = place == 1   ? EnterPlace::AfterScan
                    : place == 2 ? EnterPlace::BeforeScan
                                 : EnterPlace::None;
    const WORD character = DigitOf(general::AutoEnterCharacter);
    options.EnterCharacter = character < EnterCharacters.size() ? EnterCharacters[character] : BYTE{0};
    GetText(general::PrefixCode, options.Prefix);
    GetText(general::SuffixCode, options.Suffix);
    options.IncludeCodeType = IsOn(general::IncludeCodeType);
    options.IncludeCodeLength = IsOn(general::IncludeCodeLength);
    options.ReadRfidUid = IsOn(general::ReadRfidUid);
    options.ReadRfidData = IsOn(general::ReadRfidData);
    options.UseDelimiter = IsOn(general::UseDelimiter);
    options.Delimiter = static_cast<WCHAR>(Value(general::Delimiter));
}

bool WantsRecord(WORD output) {
    return (output & (OutputMessage | OutputEvent)) != 0;
}

// The queue holds one record, the newest. A consumer that never reads must not stop the next scan, so what
// lies there is taken out; the other reader's thread can fill the queue again before the write.
bool QueueRecord(const DecodeRecord& record) {
    const HANDLE writer = ShellState.QueueWriter;
    if (writer == nullptr) {
        return false;
    }
    for (int tries = 0; tries < WriteTries; ++tries) {
        DecodeRecord unread;
        DWORD read = 0;
        DWORD flags = 0;
        if (ReadMsgQueue(ShellState.QueueReader, &unread, sizeof unread, &read, 0, &flags)) {
            Log(LogPriority::Info, TEXT("a record that nobody has taken was replaced"));
        }
        if (WriteMsgQueue(writer, const_cast<DecodeRecord*>(&record), sizeof record, WriteWait, 0)) {
            return true;
        }
    }
    return false;
}

bool PutRecord(const DecodeRecord& record, bool withEvent) {
    const ReadingStep step;
    if (!step || !QueueRecord(record)) {
        return false;
    }
    if (withEvent) {
        EventModify(ShellState.DecodeEventHandle, EVENT_SET);
    }
    return true;
}

// Puts the record into the message queue in place of one that nobody has read, then sets the event and
// broadcasts, as asked for. When the queue does not take the record (within 30 ms), there is no event and no
// broadcast. What is left when the reader is switched off does not happen. Returns when every window has
// taken the broadcasts.
void SendRecord(const DecodeRecord& record, WORD output) {
    if (!PutRecord(record, (output & OutputEvent) != 0)) {
        if (ReadingLasts()) {
            Log(LogPriority::Warning, TEXT("a record found no room in the queue"));
        }
        return;
    }
    if ((output & OutputMessage) != 0 && ReadingLasts()) {
        const HWND sender = ShellState.MainWindow;
        const UINT decode = ShellState.MsgDecode;
        COPYDATASTRUCT copy{};
        copy.dwData = decode;
        copy.cbData = sizeof record;
        copy.lpData = const_cast<DecodeRecord*>(&record);
        SendMessageW(HWND_BROADCAST, WM_COPYDATA, reinterpret_cast<WPARAM>(sender),
                     reinterpret_cast<LPARAM>(&copy));
        if (ReadingLasts()) {
            SendMessageW(HWND_BROADCAST, decode, record.source, 0);
        }
    }
}

// Types a line and what belongs around it. The trigger keys act again once the application in front has had
// the time to take the keys.
void Type(const OutputLine& line, const LineOptions& options, bool endTransfer) {
    const TypingTurn turn;
    if (!turn || (options.TabBefore() && !PressTab()) || !TypeBytes(line.Used())) {
        return;
    }
    if (endTransfer &&
        !SetTimer(ShellState.MainWindow, IDT_DELIVERY_BUSY, BusyPerByte * line.Count, nullptr)) {
        ShellState.TransferBusy = 0;  // nobody else would free the trigger
    }
    if (options.TabAfter()) {
        PressTab();
    }
}

// A scan on its way. Who compares the two counts knows whether one is, and whether he has seen all.
class Delivery {
  public:
    Delivery() {
        ShellState.LastScanTick = begun_;
        ShellState.ScansBegun.Add(1);
    }
    ~Delivery() {
        ShellState.ScansDelivered.Add(1);
        Log(LogPriority::Debug, TEXT("a read was handed on in %u ms"), GetTickCount() - begun_);
    }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

  private:
    const DWORD begun_ = GetTickCount();
};

}  // namespace

void DeliverScan(ReaderFamily family, const ScanData& scan) {
    const Delivery delivery;
    const WORD output = DigitOf(general::DataOutput);
    if (WantsRecord(output)) {
        DecodeRecord record;
        BuildDecodeRecord(scan, record);
        SendRecord(record, output);
    }
    if ((output & OutputKeyboard) == 0) {
        if (ReadingLasts()) {
            ShellState.TransferBusy = 0;
        }
        return;
    }
    LineOptions options;
    ReadLineOptions(options);
    OutputLine line;
    ComposeLine(family, scan, options, line);
    Type(line, options, true);
}

void DeliverScan(const RfidScanData& scan) {
    const Delivery delivery;
    const WORD output = DigitOf(general::DataOutput);
    if (WantsRecord(output)) {
        DecodeRecord record;
        BuildDecodeRecord(scan, IsOn(general::ReadRfidUid), IsOn(general::ReadRfidData), record);
        SendRecord(record, output);
    }
    if ((output & OutputKeyboard) == 0) {
        return;
    }
    LineOptions options;
    ReadLineOptions(options);
    OutputLine line;
    ComposeLine(scan, options, line);
    // The flag is the barcode reader's: a tag that cleared it could let a trigger message into a transfer.
    Type(line, options, false);
}
