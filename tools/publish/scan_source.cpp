#include "tools/publish/scan_source.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/program.h"
#include "platform/window.h"
#include "tools/record_json.h"
#include "tools/status.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds Settling{1000};  // between the last scan and the look at the counter
constexpr milliseconds LookAgain{15'000};

struct Source {
    const PublishOptions* Options;
    ScanStore* Store;
    std::function<void()> Stored;
    UINT MsgDecode;

    std::mutex Mutex;
    std::condition_variable Changed;
    Account Counted;
    std::int64_t Taken = 0;    // scans stored since the last look at the counter
    std::int64_t Refused = 0;  // scans that the store had no room for and that nobody has been told of yet
    std::uint64_t Arrivals = 0;
};
Source TheSource;

QJsonObject Head(std::int64_t sequence) {
    return {{"terminal", QString::fromStdString(TheSource.Options->Terminal)},
            {"sequence", static_cast<qint64>(sequence)},
            {"time", QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)}};
}

std::string Text(const QJsonObject& json) {
    return QJsonDocument(json).toJson(QJsonDocument::Compact).toStdString();
}

std::string ScanJson(std::int64_t sequence, const ScanRecord& record) {
    QJsonObject json = Head(sequence);
    json["source"] = record.Source == 32 ? "rfid" : "barcode";
    json["type"] =
        record.CodeType != 0 ? QString(QChar::fromLatin1(static_cast<char>(record.CodeType))) : QString();
    json["length"] = static_cast<qint64>(record.Data.size());
    if (record.Source == 32) {
        json["uid"] = QString::fromLatin1(reinterpret_cast<const char*>(record.Uid.data()),
                                          static_cast<qsizetype>(record.Uid.size()));
    }
    const QByteArray data(reinterpret_cast<const char*>(record.Data.data()),
                          static_cast<qsizetype>(record.Data.size()));
    // All of it at once, the first character too: without the flags it waits for the rest of a character that
    // is cut off, and drops a mark of the byte order.
    using Flag = QStringDecoder::Flag;
    QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    const QString text = decoder(data);
    if (decoder.hasError()) {
        json["base64"] = QString::fromLatin1(data.toBase64());
    } else {
        json["data"] = text;
    }
    return Text(json);
}

// Both with the mutex held.

bool StoreMissed(std::int64_t missed, const Account& account) {
    const bool stored = TheSource.Store->Append(
        [missed](std::int64_t sequence) {
            QJsonObject json = Head(sequence);
            json["missed"] = static_cast<qint64>(missed);
            return Text(json);
        },
        account);
    if (stored) {
        TheSource.Counted = account;
        std::fprintf(stderr, "vantrel-publish: %lld scans were missed\n", static_cast<long long>(missed));
    }
    return stored;
}

bool StoreScan(const ScanRecord& record) {
    Source& source = TheSource;
    Account account = source.Counted;
    if (source.Refused != 0) {
        account.Scans += source.Refused;
        if (!StoreMissed(source.Refused, account)) {
            return false;
        }
        source.Taken += source.Refused;
        source.Refused = 0;
    }
    ++account.Scans;
    const auto payload = [&record](std::int64_t sequence) { return ScanJson(sequence, record); };
    if (!source.Store->Append(payload, account)) {
        return false;
    }
    source.Counted = account;
    ++source.Taken;
    return true;
}

void TakeRecord(const COPYDATASTRUCT& copy) {
    const auto* bytes = static_cast<const BYTE*>(copy.lpData);
    const auto record = ReadRecord({bytes, bytes == nullptr ? 0 : copy.cbData});
    if (!record) {
        return;
    }
    Source& source = TheSource;
    {
        const std::scoped_lock lock(source.Mutex);
        ++source.Arrivals;
        if (!StoreScan(*record) && source.Refused++ == 0) {
            std::fputs("vantrel-publish: no room for another scan; what waits is kept, new scans are lost\n",
                       stderr);
        }
    }
    source.Changed.notify_one();
    source.Stored();
}

// Compares the program's counter with what was taken. The program answers in between scans at best: only an
// answer that nothing happened around says something.
bool LookAtCounter() {
    Source& source = TheSource;
    std::unique_lock lock(source.Mutex);
    const std::uint64_t before = source.Arrivals;
    lock.unlock();
    const auto status = AskStatus();
    lock.lock();
    if (!status) {
        return true;
    }
    if (source.Counted.Run != status->Run) {
        // Of a run that is new only what came since the last look can have been taken.
        const Account account{status->Run, source.Taken};
        if (!source.Store->SetAccount(account)) {
            return false;
        }
        source.Counted = account;
    }
    if (before != source.Arrivals || status->ScansBegun != status->ScansDelivered || source.Refused != 0) {
        return false;
    }
    const Account account{status->Run, status->ScansBegun};
    const std::int64_t missed = account.Scans - source.Counted.Scans;
    if (missed > 0 ? !StoreMissed(missed, account) : missed < 0 && !source.Store->SetAccount(account)) {
        return false;
    }
    source.Counted = account;
    source.Taken = 0;
    lock.unlock();
    if (missed > 0) {
        source.Stored();
    }
    return true;
}

void WatchCounter() {
    Source& source = TheSource;
    std::uint64_t seen = ~std::uint64_t{0};
    for (;;) {
        const bool sure = LookAtCounter();
        std::unique_lock lock(source.Mutex);
        if (sure) {
            seen = source.Arrivals;
            source.Changed.wait_for(lock, LookAgain, [&] { return source.Arrivals != seen; });
        }
        lock.unlock();
        std::this_thread::sleep_for(Settling);
    }
}

LRESULT CALLBACK SourceProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) {
        const auto* copy = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        if (copy != nullptr && copy->dwData == TheSource.MsgDecode) {
            TakeRecord(*copy);
        }
        return TRUE;
    }
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int TakeScans(const PublishOptions& options, ScanStore& store, std::function<void()> stored) {
    layer::StartHiddenWindows();
    layer::TakeSignals();
    TheSource.Options = &options;
    TheSource.Store = &store;
    TheSource.Stored = std::move(stored);
    TheSource.MsgDecode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    TheSource.Counted = store.ReadAccount();
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = SourceProc;
    windowClass.lpszClassName = TEXT("VantrelPublish");
    RegisterClassW(&windowClass);
    if (CreateWindowExW(0, TEXT("VantrelPublish"), TEXT("Scan publisher"), 0, 0, 0, 0, 0, nullptr, nullptr,
                        nullptr, nullptr) == nullptr) {
        std::fputs("vantrel-publish: the window cannot be created\n", stderr);
        return 1;
    }
    std::thread counter = layer::StartHostThread(WatchCounter);
    if (!counter.joinable()) {
        std::fputs("vantrel-publish: no thread to count the scans\n", stderr);
        return 1;
    }
    counter.detach();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0)) {
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}
