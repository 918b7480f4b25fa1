#include "platform/linux/windows/start_windows.h"

#include <pthread.h>
#include <unistd.h>

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QSocketNotifier>
#include <QStyleOption>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/posix.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/window_object.h"
#include "platform/program.h"

namespace layer {

namespace {

Waker* SignalBell = nullptr;
bool CloseRequested = false;

bool IsSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != 0;
}

void ChoosePlatform() {
    if (IsSet("QT_QPA_PLATFORM")) {
        return;
    }
    if (IsSet("DISPLAY")) {
        // A display that cannot be reached leaves a program without windows rather than no program.
        setenv("QT_QPA_PLATFORM", "xcb;offscreen", 1);
    } else if (IsSet("WAYLAND_DISPLAY")) {
        setenv("QT_QPA_PLATFORM", "wayland;offscreen", 1);
    } else if (access("/dev/fb0", R_OK | W_OK) == 0) {
        setenv("QT_QPA_PLATFORM", "linuxfb", 1);
    } else {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
}

// The window that stands for the program is its first one.
void CloseMainWindow() {
    for (const WindowPtr& window : TopLevelWindows()) {
        if (!CloseRequested && dynamic_cast<UserWindow*>(window.get()) != nullptr) {
            CloseRequested = true;
            RequestClose(*window);
            return;
        }
    }
    PostQuitMessage(0);
}

// Somebody outside wants the program to end: the session, a display server.
class QuitFilter : public QObject {
  public:
    using QObject::QObject;
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Quit) {
            return false;
        }
        CloseMainWindow();
        return true;
    }
};

bool Exiting = false;

// Qt ends the program by exit() when the display server dies, at any moment, that of the program's own end
// included. Threads still run then: do what is left of the end, and leave without touching what they use, nor
// windows, for which statics of Qt's that are younger than this call have gone already.
void EndAtOnce() {
    Exiting = true;
    BeginEnd();
    _exit(1);
}

QtMessageHandler StandardHandler = nullptr;

// Platforms without a window manager say at every window that they have none.
void HandleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (!text.startsWith(QLatin1String("This plugin does not support"))) {
        StandardHandler(type, context, text);
    }
    // Of a thread of its own that it cannot start Qt waits for what never comes: the display's events, the
    // bus.
    if (text.startsWith(QLatin1String("QThread::start: Thread creation"))) {
        EndAtOnce();
    }
}

std::atomic<bool> SignalCame{false};

void NoteSignal(int) {
    const int saved = errno;
    SignalCame = true;
    HurryMainThread();
    SignalBell->Wake();
    errno = saved;
}

// A dotted frame in what has the focus, however it came there: a default button looks the same with and
// without it, and a tab shows it only to the keyboard.
class FocusStyle : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_UnderlineShortcut ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
    }
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        QProxyStyle::drawControl(element, option, painter, widget);
        const bool button = element == CE_PushButtonLabel && (option->state & State_HasFocus) != 0;
        const bool tab = element == CE_TabBarTabLabel && (option->state & State_Selected) != 0 &&
                         widget != nullptr && widget->hasFocus();
        if (button || tab) {
            constexpr int inside = 2;
            painter->setPen(QPen(option->palette.color(QPalette::ButtonText), 1, Qt::DotLine));
            painter->setBrush(Qt::NoBrush);
            painter->drawRect(option->rect.adjusted(inside, inside, -inside - 1, -inside - 1));
        }
    }
};

}  // namespace

void StartWindows() {
    if (QCoreApplication::instance() != nullptr) {
        return;
    }
    SetMainThread();
    ChoosePlatform();
    StandardHandler = qInstallMessageHandler(HandleQtMessage);
    // Qt keeps both; the command line is not read.
    static char name[] = "vantrel";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    AwaitDisplay();
    // Never deleted: threads may still run when the program ends.
    auto* application = new QApplication(count, arguments);
    DisplayHasCome();
    QApplication::setStyle(new FocusStyle);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    application->installEventFilter(new QuitFilter(application));
    // White on it has a contrast of 5.9 : 1.
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Highlight, QColor(0x15, 0x65, 0xC0));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::setPalette(palette);
    OpenMailbox();
}

bool EndRequested() {
    return SignalCame;
}

void TakeSignals() {
    if (SignalBell != nullptr) {
        return;
    }
    SignalBell = new Waker;
    if (SignalBell->Number() < 0) {
        return;
    }
    auto* notifier = new QSocketNotifier(SignalBell->Number(), QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [] {
        SignalBell->Clear();
        TellWatchdog();
        CloseMainWindow();
    });
    struct sigaction action {};
    action.sa_handler = NoteSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaction(signal, &action, nullptr);
    }
    AtEnd([] {
        if (!Exiting) {
            RemoveNotificationIcons();
        }
    });
    std::atexit(EndAtOnce);
}

void StartHiddenWindows() {
    SpeakOnCrash();
    // Any display will do, and none is asked for.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    StartWindows();
    TakeSignals();
}

// Whoever waits for an event is not woken by a signal: a thread of its own takes the signals that end
// programs.
void EndOnSignal() {
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&endings, signal);
    }
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    std::thread thread = StartHostThread([endings] {
        int signal = 0;
        sigwait(&endings, &signal);
        EndProgram(0);
    });
    if (thread.joinable()) {
        thread.detach();
    } else {
        pthread_sigmask(SIG_UNBLOCK, &endings, nullptr);  // they end it in the host's way
    }
}

void EndProgram(int code) {
    BeginEnd();
    std::fflush(nullptr);
    _exit(code);
}

}  // namespace layer
