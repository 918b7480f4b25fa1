#include "platform/linux/keyboard/x_connection.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace layer {
namespace {

std::atomic<Display*> ours{nullptr};
XErrorHandler othersHandler = nullptr;
XIOErrorHandler othersLoss = nullptr;

// A request that the server refuses must not end the program, which is Xlib's habit.
int OnError(Display* display, XErrorEvent* error) {
    if (display == ours.load() || othersHandler == nullptr)
        return 0;
    return othersHandler(display, error);
}

// Nor must a server that has gone; only for other connections that is somebody else's decision.
int OnIoError(Display* display) {
    if (display == ours.load() || othersLoss == nullptr)
        return 0;
    return othersLoss(display);
}

}  // namespace

bool XConnection::Open() {
    Close();
    const char* name = std::getenv("DISPLAY");
    if (name == nullptr || *name == 0)
        return false;
    struct sigaction pipeAction {};
    if (sigaction(SIGPIPE, nullptr, &pipeAction) == 0 && pipeAction.sa_handler == SIG_DFL)
        std::signal(SIGPIPE, SIG_IGN);  // writing to a dead server is an error, not an end
    display_ = XOpenDisplay(name);
    if (display_ == nullptr)
        return false;
    lost_ = false;
    ours = display_;
    if (const XErrorHandler previous = XSetErrorHandler(OnError); previous != OnError)
        othersHandler = previous;
    if (const XIOErrorHandler previous = XSetIOErrorHandler(OnIoError); previous != OnIoError)
        othersLoss = previous;
    XSetIOErrorExitHandler(display_, &XConnection::OnLost, this);
    return true;
}

void XConnection::Close() {
    if (display_ != nullptr)
        XCloseDisplay(display_);
    ours = nullptr;
    display_ = nullptr;
}

void XConnection::OnLost(Display*, void* self) {
    static_cast<XConnection*>(self)->lost_ = true;
}

}  // namespace layer
