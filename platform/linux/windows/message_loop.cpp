#include "platform/linux/windows/message_loop.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QSocketNotifier>
#include <QThread>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "platform/linux/kernel/posix.h"
#include "platform/linux/windows/window_object.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

// What other threads hand to the main thread. Never freed: threads outlive the end of WinMain.
struct Mailbox {
    std::mutex Mutex;
    std::deque<std::function<void()>> Work;
    std::deque<MSG> Posted;
    Waker Bell;  // wakes Qt's loop
    bool Rung = false;
};

Mailbox& Box() {
    static auto* box = new Mailbox;
    return *box;
}

// The main thread's own.
bool Quit = false;
int QuitCode = 0;
int Quiet = 0;
int Pumps = 0;      // loops of this file that are running
int PumpLevel = 0;  // Qt's loop level inside the innermost of them
// Of the message being handled; negative while nobody has said or asked.
constexpr std::int64_t AtThePointer = -1;
std::atomic<std::int64_t> Position{AtThePointer};

bool TakePosted(MSG& message) {
    Mailbox& box = Box();
    std::scoped_lock lock(box.Mutex);
    if (box.Posted.empty()) {
        return false;
    }
    message = box.Posted.front();
    box.Posted.pop_front();
    return true;
}

void RunOneWork() {
    Mailbox& box = Box();
    std::function<void()> work;
    bool more;
    {
        std::scoped_lock lock(box.Mutex);
        if (box.Work.empty()) {
            return;
        }
        work = std::move(box.Work.front());
        box.Work.pop_front();
        more = !box.Work.empty();
    }
    // The work may run a loop of its own, which has to see the rest.
    if (more) {
        WakeMainThread();
    }
    work();
}

bool InLoopOfQt() {
    return QThread::currentThread()->loopLevel() > (Pumps > 0 ? PumpLevel : 0);
}

// A question that Qt asks by itself runs in a loop of Qt's; messages and timers go on meanwhile.
void ServeLoopOfQt() {
    MSG message{};
    while (TakePosted(message) || (!Quit && TakeDueTimer(message))) {
        DispatchMessageW(&message);
    }
    if (Quit) {
        QCoreApplication::exit();
    }
    ArmAlarm();
}

void AnswerBell() {
    {
        Mailbox& box = Box();
        std::scoped_lock lock(box.Mutex);
        box.Bell.Clear();
        box.Rung = false;
    }
    if (Quiet == 0) {
        RunOneWork();
        if (InLoopOfQt()) {
            ServeLoopOfQt();
        }
    }
}

// Widgets destroyed outside of any event of Qt's would otherwise stay for ever. Only the outermost loop does
// it: inside another one, a widget whose event is being handled may be among them.
void DeleteDestroyedWidgets() {
    if (Pumps == 1) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

class PumpScope {
  public:
    PumpScope() : level_(PumpLevel) {
        ++Pumps;
        PumpLevel = QThread::currentThread()->loopLevel();
    }
    ~PumpScope() {
        --Pumps;
        PumpLevel = level_;
    }
    PumpScope(const PumpScope&) = delete;
    PumpScope& operator=(const PumpScope&) = delete;

  private:
    int level_;
};

enum class Taken { Message, End, Nothing };

Taken TakeMessage(MSG& message) {
    if (TakePosted(message)) {
        return Taken::Message;
    }
    if (Quit) {
        return Taken::End;
    }
    return TakeDueTimer(message) ? Taken::Message : Taken::Nothing;
}

void StampMessage(MSG& message) {
    message.time = static_cast<DWORD>(CurrentClock().Now());
    Position = AtThePointer;
}

void WaitForInput() {
    ArmAlarm();
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace

void OpenMailbox() {
    // A descriptor rather than an event of Qt's: other threads then share nothing with Qt.
    auto* notifier = new QSocketNotifier(Box().Bell.Number(), QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, AnswerBell);
    auto* alarm = new QSocketNotifier(OpenAlarm(), QSocketNotifier::Read, qApp);
    // The loops of this file look at the timers themselves when they wake.
    QObject::connect(alarm, &QSocketNotifier::activated, alarm, [] {
        ClearAlarm();
        if (Quiet == 0 && InLoopOfQt()) {
            ServeLoopOfQt();
        }
    });
    WakeMainThread();
}

void WakeMainThread() {
    Mailbox& box = Box();
    std::scoped_lock lock(box.Mutex);
    if (!box.Rung) {
        box.Rung = true;
        box.Bell.Wake();
    }
}

void RunOnMainThread(const std::function<void()>& work) {
    if (OnMainThread()) {
        work();
        return;
    }
    ParkAtEnd();
    struct Call {
        std::mutex Mutex;
        std::condition_variable Changed;
        bool Done = false;
    };
    auto call = std::make_shared<Call>();
    PostToMainThread([call, &work] {
        work();
        std::scoped_lock lock(call->Mutex);
        call->Done = true;
        call->Changed.notify_one();
    });
    {
        std::unique_lock lock(call->Mutex);
        call->Changed.wait(lock, [&] { return call->Done; });
    }
    ParkAtEnd();
}

void PostToMainThread(std::function<void()> work) {
    {
        Mailbox& box = Box();
        std::scoped_lock lock(box.Mutex);
        box.Work.push_back(std::move(work));
    }
    WakeMainThread();
}

bool RunModalLoop(const std::function<bool()>& done) {
    PumpScope scope;
    MSG message{};
    while (!done()) {
        switch (TakeMessage(message)) {
            case Taken::Message:
                StampMessage(message);
                DispatchMessageW(&message);
                break;
            case Taken::End:
                return false;
            case Taken::Nothing:
                WaitForInput();
                break;
        }
    }
    return true;
}

bool QuitPending() {
    return Quit;
}

void ForgetQuit() {
    Quit = false;
}

void PumpMessages() {
    PumpScope scope;
    MSG message{};
    bool busy = true;
    while (busy) {
        busy = false;
        while (TakeMessage(message) == Taken::Message) {
            StampMessage(message);
            DispatchMessageW(&message);
            busy = true;
        }
        QCoreApplication::processEvents();
        DeleteDestroyedWidgets();
        std::scoped_lock lock(Box().Mutex);
        busy = busy || !Box().Work.empty() || !Box().Posted.empty();
    }
    ArmAlarm();
}

void SetMessagePosition(const QPoint& screen) {
    Position = static_cast<DWORD>(MAKELONG(screen.x(), screen.y()));
}

void BeQuiet(bool quiet) {
    Quiet += quiet ? 1 : -1;
    if (Quiet == 0) {
        WakeMainThread();
    }
}

}  // namespace layer

BOOL GetMessageW(MSG* message, HWND, UINT, UINT) {
    layer::PumpScope scope;
    for (;;) {
        *message = {};
        switch (layer::TakeMessage(*message)) {
            case layer::Taken::Message:
                layer::StampMessage(*message);
                return TRUE;
            case layer::Taken::End:
                layer::Quit = false;
                message->message = WM_QUIT;
                message->wParam = static_cast<WPARAM>(layer::QuitCode);
                layer::StampMessage(*message);
                return FALSE;
            case layer::Taken::Nothing:
                layer::DeleteDestroyedWidgets();
                layer::WaitForInput();
                break;
        }
    }
}

BOOL TranslateMessage(const MSG*) {
    // Characters reach the controls through Qt.
    return FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
    return layer::Send(message->hwnd, message->message, message->wParam, message->lParam);
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    layer::ParkAtEnd();
    // Only windows of this program are posted to.
    if (!layer::IsOwnWindow(window)) {
        return FALSE;
    }
    {
        layer::Mailbox& box = layer::Box();
        std::scoped_lock lock(box.Mutex);
        box.Posted.push_back(MSG{window, message, wParam, lParam, 0, {}});
    }
    layer::WakeMainThread();
    return TRUE;
}

void PostQuitMessage(int exitCode) {
    layer::OnMain([=] {
        layer::Quit = true;
        layer::QuitCode = exitCode;
        layer::ClosePopup();
        layer::CloseMessageBoxes();
        layer::WakeMainThread();
    });
}

DWORD GetMessagePos() {
    // The display server is asked only for those who want to know.
    if (layer::Position == layer::AtThePointer) {
        layer::OnMain([] { layer::SetMessagePosition(QCursor::pos()); });
    }
    return static_cast<DWORD>(layer::Position);
}
