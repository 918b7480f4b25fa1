#include "platform/linux/windows/listener.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QLocalSocket>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

constexpr std::size_t MostCallers = 64;
constexpr std::chrono::seconds LongestSilence{10};     // of a caller that owes us a line
constexpr std::chrono::milliseconds AcceptPause{200};  // after a caller that could not be taken

struct Listener {
    std::mutex Mutex;
    std::string Name;
    // The main thread's: the thread that serves, and what lives on it.
    QThread* Thread = nullptr;
    class Server* Serving = nullptr;
    // The serving thread's own.
    std::vector<class Caller*> Callers;
};

Listener& TheListener() {
    static auto* listener = new Listener;
    return *listener;
}

// Null when nothing is served any more. Main thread.
QObject* TheServer();

AnswerLine FindHere(const WindowLine& line) {
    AnswerLine answer;
    // Who looks for a window wants one that will be there.
    if (EndRequested()) {
        return answer;
    }
    const std::vector<HWND> found = OwnTopLevelWindows(line.ClassName, line.Title);
    if (!found.empty()) {
        answer.Window = reinterpret_cast<std::uintptr_t>(found.front());
    }
    return answer;
}

// A program that calls: its lines are answered one after the other, until it hangs up, keeps silent for too
// long or makes no sense. Lives on the serving thread.
class Caller : public QObject {
  public:
    Caller(QLocalSocket* socket, QObject* server) : QObject(server), socket_(socket) {
        socket->setParent(this);
        socket->setReadBufferSize(static_cast<qint64>(LongestLine) + 1);
        TheListener().Callers.push_back(this);
        silence_.setSingleShot(true);
        silence_.start(LongestSilence);
        connect(socket, &QLocalSocket::readyRead, this, [this] { TakeLines(); });
        connect(socket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
        connect(&silence_, &QTimer::timeout, this, &QObject::deleteLater);
    }

    ~Caller() override {
        // What was answered is on its way all the same.
        socket_->flush();
        std::erase(TheListener().Callers, this);
    }

  private:
    void TakeLines() {
        while (!handled_ && socket_->canReadLine()) {
            TakeLine(socket_->readLine());
        }
        if (!handled_ && socket_->bytesAvailable() > static_cast<qint64>(LongestLine)) {
            deleteLater();
        }
    }

    void TakeLine(QByteArray text) {
        text.chop(1);
        std::string reason;
        const std::optional<WindowLine> line =
            ReadLine({text.constData(), static_cast<std::size_t>(text.size())}, reason);
        if (!line) {
            AnswerLine refusal;
            refusal.Refusal = reason;
            Answer(WriteAnswer(refusal, WindowLine::Kind::Message));
            handled_ = true;  // nothing more is listened to
            socket_->disconnectFromServer();
        } else if (line->What == WindowLine::Kind::Find) {
            Answer(WriteAnswer(FindHere(*line), WindowLine::Kind::Find));
        } else {
            handled_ = true;
            silence_.stop();
            PostToMainThread([line = *line, caller = QPointer(this)] {
                const std::string answer = WriteAnswer(DeliverLine(line), WindowLine::Kind::Message);
                if (QObject* server = TheServer(); server != nullptr) {
                    QMetaObject::invokeMethod(server, [caller, answer] {
                        if (caller != nullptr) {
                            caller->handled_ = false;
                            caller->Answer(answer);
                            caller->TakeLines();
                        }
                    });
                }
            });
        }
    }

    void Answer(const std::string& line) {
        socket_->write(line.data(), static_cast<qint64>(line.size()));
        silence_.start(LongestSilence);
    }

    QLocalSocket* socket_;
    QTimer silence_;
    bool handled_ = false;  // its message is with the main thread
};

// The socket that others call, and its callers. Lives on the serving thread. Qt's own server would stop
// listening for good when a caller cannot be taken once, for want of a descriptor, say.
class Server : public QObject {
  public:
    explicit Server(Descriptor socket)
        : socket_(std::move(socket)), calls_(socket_.Number(), QSocketNotifier::Read, this), pause_(this) {
        pause_.setSingleShot(true);
        connect(&calls_, &QSocketNotifier::activated, this, [this] { TakeCallers(); });
        connect(&pause_, &QTimer::timeout, this, [this] {
            calls_.setEnabled(true);
            TakeCallers();
        });
    }
    ~Server() override { calls_.setEnabled(false); }

  private:
    void TakeCallers() {
        for (;;) {
            Descriptor caller(accept4(socket_.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
            if (!caller) {
                break;
            }
            if (TheListener().Callers.size() < MostCallers) {
                auto* socket = new QLocalSocket;
                socket->setSocketDescriptor(caller.Release());
                new Caller(socket, this);
            }
        }
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
            Say(LogPriority::Warning, "a program that calls has to wait: %s", std::strerror(errno));
            calls_.setEnabled(false);
            pause_.start(AcceptPause);
        }
    }

    Descriptor socket_;
    QSocketNotifier calls_;
    QTimer pause_;
};

QObject* TheServer() {
    return TheListener().Serving;
}

}  // namespace

bool StartListening() {
    static unsigned count = 0;
    Listener& listener = TheListener();
    if (listener.Thread != nullptr) {
        return true;
    }
    const std::string name = std::to_string(getpid()) + "-" + std::to_string(++count);
    const int socket = ListenAs(name);
    if (socket < 0) {
        Say(LogPriority::Error, "no socket for other programs' messages in %s: %s", WindowsFolder().c_str(),
            std::strerror(errno));
        return false;
    }
    listener.Serving = new Server(Descriptor(socket));
    listener.Thread = new QThread;
    listener.Serving->moveToThread(listener.Thread);
    listener.Thread->start();
    if (!listener.Thread->isRunning()) {
        // Nothing would ever be answered, and the end would wait for this thread's.
        Say(LogPriority::Error, "no thread for other programs' messages");
        RemoveSocket(name);
        delete std::exchange(listener.Serving, nullptr);
        delete std::exchange(listener.Thread, nullptr);
        return false;
    }
    {
        std::scoped_lock lock(listener.Mutex);
        listener.Name = name;
    }
    AtEnd(StopListening);
    // A program that ends by itself leaves no socket either.
    static const bool atExit [[maybe_unused]] = std::atexit(StopListening) == 0;
    return true;
}

void StopListening() {
    Listener& listener = TheListener();
    if (listener.Thread == nullptr) {
        return;
    }
    RemoveSocket(OwnProgram());
    // The message that ended the program has its answer too: it was posted before this.
    QMetaObject::invokeMethod(
        listener.Serving, [server = listener.Serving] { delete server; }, Qt::BlockingQueuedConnection);
    listener.Serving = nullptr;
    listener.Thread->quit();
    listener.Thread->wait();
    delete std::exchange(listener.Thread, nullptr);
    std::scoped_lock lock(listener.Mutex);
    listener.Name.clear();
}

std::string OwnProgram() {
    Listener& listener = TheListener();
    std::scoped_lock lock(listener.Mutex);
    return listener.Name;
}

}  // namespace layer
