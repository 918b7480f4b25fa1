#include "platform/linux/serial/tty.h"

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

constexpr DWORD DefaultSpeed = 9600;

}  // namespace

Tty::Tty(std::string path, std::uint64_t link, std::shared_ptr<TtyLine> line, Waker bell)
    : path_(std::move(path)),
      trace_(WireTrace::Of(path_.substr(path_.rfind('/') + 1))),
      link_(link),
      pseudo_(line->IsPseudo()),
      line_(std::move(line)),
      bell_(std::move(bell)) {
    state_.DCBlength = sizeof state_;
    state_.BaudRate = line_->Speed() != 0 ? line_->Speed() : DefaultSpeed;
    state_.fBinary = 1;
    state_.ByteSize = 8;
    // The kernel raises both lines when a tty is opened.
    state_.fDtrControl = DTR_CONTROL_ENABLE;
    state_.fRtsControl = RTS_CONTROL_ENABLE;
    Note("open");
    Note("rate " + std::to_string(state_.BaudRate));
}

// Tries to use a reader that has come back, as the lost one was set up.
bool Tty::Reopen() {
    if (closed_) {
        return false;
    }
    if (line_) {
        return true;
    }
    // A pseudo-terminal never comes back, but its name soon goes to a stranger's: somebody has to link anew.
    const std::uint64_t link = LinkIdentity(path_);
    if (pseudo_ && link == link_) {
        return false;
    }
    line_ = TtyLine::Open(path_, state_.BaudRate);
    if (!line_) {
        return false;
    }
    link_ = link;
    pseudo_ = line_->IsPseudo();
    line_->SetModemLines(state_.fDtrControl != DTR_CONTROL_DISABLE,
                         state_.fRtsControl != RTS_CONTROL_DISABLE);
    queue_.ForgetMark();
    Note("back");
    Say(LogPriority::Notice, "%s is back", path_.c_str());
    return true;
}

void Tty::Lose(const std::shared_ptr<TtyLine>& line) {
    if (!line || line_ != line) {
        return;
    }
    line_->Unlock();
    line_.reset();
    Note("lost");
    Say(LogPriority::Warning, "%s has gone", path_.c_str());
    WakeAll();
}

void Tty::Note(const std::string& what) const {
    if (trace_) {
        trace_->Changed(what);
    }
}

BOOL Tty::GetState(DCB& state) {
    const Lock lock(mutex_);
    state = state_;
    return !closed_;
}

BOOL Tty::SetState(const DCB& state) {
    const bool supported = KnownSpeed(state.BaudRate) && state.ByteSize == 8 && state.Parity == NOPARITY &&
                           state.StopBits == ONESTOPBIT && !state.fOutxCtsFlow && !state.fOutxDsrFlow &&
                           !state.fDsrSensitivity && !state.fOutX && !state.fInX && !state.fNull &&
                           state.fDtrControl <= DTR_CONTROL_ENABLE && state.fRtsControl <= RTS_CONTROL_ENABLE;
    if (!supported) {
        return FALSE;
    }
    const std::lock_guard turn(writing_);
    Lock lock(mutex_);
    if (!Reopen()) {
        return FALSE;
    }
    const std::shared_ptr<TtyLine> line = line_;
    const bool dropsRts = state.fRtsControl < state_.fRtsControl;
    if (dropsRts || state.BaudRate != state_.BaudRate) {
        // The reader must get the last bit as it got the first.
        lock.unlock();
        line->WaitSent();
        lock.lock();
        if (line_ != line) {
            return FALSE;
        }
    }
    if (!line->SetSpeed(state.BaudRate)) {
        return FALSE;
    }
    line->SetModemLines(state.fDtrControl != DTR_CONTROL_DISABLE, state.fRtsControl != RTS_CONTROL_DISABLE);
    if (state.BaudRate != state_.BaudRate) {
        Note("rate " + std::to_string(state.BaudRate));
    }
    if (state.fDtrControl != state_.fDtrControl) {
        Note(state.fDtrControl != DTR_CONTROL_DISABLE ? "dtr on" : "dtr off");
    }
    if (state.fRtsControl != state_.fRtsControl) {
        Note(state.fRtsControl != RTS_CONTROL_DISABLE ? "rts on" : "rts off");
    }
    state_ = state;
    return TRUE;
}

BOOL Tty::GetTimeouts(COMMTIMEOUTS& timeouts) {
    const Lock lock(mutex_);
    timeouts = timeouts_;
    return !closed_;
}

BOOL Tty::SetTimeouts(const COMMTIMEOUTS& timeouts) {
    const Lock lock(mutex_);
    if (timeouts.ReadTotalTimeoutMultiplier != 0 || timeouts.ReadTotalTimeoutConstant != 0 ||
        timeouts.WriteTotalTimeoutMultiplier != 0) {
        return FALSE;
    }
    timeouts_ = timeouts;
    WakeAll();
    return !closed_;
}

BOOL Tty::Purge(DWORD flags) {
    const Lock lock(mutex_);
    if (closed_) {
        return FALSE;
    }
    readsAborted_ += (flags & PURGE_RXABORT) != 0;
    if ((flags & PURGE_TXCLEAR) && line_) {
        line_->DiscardOutput();
    }
    if (flags & PURGE_RXCLEAR) {
        if (line_) {
            line_->DiscardInput();
        }
        queue_.Clear();
    }
    WakeAll();
    return TRUE;
}

BOOL Tty::ClearError(DWORD& errors, COMSTAT& status) {
    const Lock lock(mutex_);
    errors = 0;
    status = COMSTAT{};
    if (closed_ || !Pump(false)) {
        return FALSE;
    }
    status.cbInQue = static_cast<DWORD>(queue_.Count());
    status.cbOutQue = line_->Queued();
    return TRUE;
}

BOOL Tty::SetBreak(bool on) {
    const Lock lock(mutex_);
    if (!line_ || !line_->SetBreak(on)) {
        return FALSE;
    }
    Note(on ? "break on" : "break off");
    return TRUE;
}

bool Tty::Close() {
    const Lock lock(mutex_);
    if (!closed_) {
        Note("close");
    }
    closed_ = true;
    if (line_) {
        // A thread on its way out of a wait may hold the line a moment longer; the port is free already.
        line_->DiscardOutput();
        line_->Unlock();
        line_.reset();
    }
    WakeAll();
    return true;
}

std::shared_ptr<SerialPort> OpenTty(const std::string& name) {
    const std::string path = TerminalFolder() + "/" + name.substr(0, name.find(':'));
    const std::uint64_t link = LinkIdentity(path);
    std::shared_ptr<TtyLine> line = TtyLine::Open(path, 0);
    Waker bell;
    const bool usable = line != nullptr && bell.Number() >= 0;
    return usable ? std::make_shared<Tty>(path, link, std::move(line), std::move(bell)) : nullptr;
}

}  // namespace layer
