#include "tests/support/scripted_port.h"

#include <algorithm>
#include <utility>

#include "platform/linux/kernel/thread.h"

struct ScriptedPorts::State {
    Conversation& Talk;
    std::function<void()> OnIdle;
    std::map<int, PortLine> Lines;
};

class ScriptedPorts::Port : public layer::SerialPort {
  public:
    Port(std::shared_ptr<State> state, int number) : state_(std::move(state)), number_(number) {
        line_.DCBlength = sizeof line_;
        line_.BaudRate = Line().Rate != 0 ? Line().Rate : 9600;
        line_.fBinary = 1;
        line_.ByteSize = 8;
    }

    BOOL Read(void* buffer, DWORD size, DWORD& read) override {
        read = 0;
        auto lock = Talk().Acquire();
        const std::uint64_t start = Talk().Time().Now();
        const unsigned aborted = readsAborted_;
        const DWORD interval = timeouts_.ReadIntervalTimeout;  // the only one that is used
        for (;;) {
            WireInput& input = Input();
            if (closed_ || aborted != readsAborted_ || (input.Unplugged && input.Bytes.empty()))
                return FALSE;
            std::uint64_t end = layer::Forever;
            if (!input.Bytes.empty() && interval != 0)
                end = std::max(input.LastArrival, start) + interval;
            if (interval == MAXDWORD || input.Bytes.size() >= size || Talk().Time().Now() >= end) {
                read = static_cast<DWORD>(std::min<std::size_t>(size, input.Bytes.size()));
                std::copy_n(input.Bytes.begin(), read, static_cast<BYTE*>(buffer));
                input.Bytes.erase(input.Bytes.begin(), input.Bytes.begin() + read);
                return TRUE;
            }
            const std::size_t had = input.Bytes.size();
            const auto changed = [&] {
                return Input().Bytes.size() != had || Input().Unplugged || aborted != readsAborted_;
            };
            if (!Wait(lock, end, changed) && end == layer::Forever)
                return Idle(lock);
        }
    }

    BOOL Write(const void* buffer, DWORD size, DWORD& written) override {
        const auto lock = Talk().Acquire();
        const auto* bytes = static_cast<const BYTE*>(buffer);
        const bool taken =
            !closed_ && !Input().Unplugged && Did(WireAct::Write, 0, std::vector<BYTE>(bytes, bytes + size));
        written = taken ? size : 0;
        return taken;
    }

    BOOL GetState(DCB& state) override {
        const auto lock = Talk().Acquire();
        state = line_;
        return !closed_;
    }

    BOOL SetState(const DCB& state) override {
        const auto lock = Talk().Acquire();
        if (closed_ || state.ByteSize != 8 || state.Parity != NOPARITY || state.StopBits != ONESTOPBIT)
            return FALSE;
        const DCB before = std::exchange(line_, state);
        Line().Rate = state.BaudRate;
        if (before.BaudRate != state.BaudRate)
            Did(WireAct::Rate, state.BaudRate);
        if (before.fDtrControl != state.fDtrControl)
            Did(WireAct::Dtr, state.fDtrControl);
        if (before.fRtsControl != state.fRtsControl)
            Did(WireAct::Rts, state.fRtsControl);
        return TRUE;
    }

    BOOL GetTimeouts(COMMTIMEOUTS& timeouts) override {
        const auto lock = Talk().Acquire();
        timeouts = timeouts_;
        return !closed_;
    }

    BOOL SetTimeouts(const COMMTIMEOUTS& timeouts) override {
        return Change(WireAct::Interval, timeouts.ReadIntervalTimeout, [&] {
            timeouts_ = timeouts;
            Line().WriteTime = timeouts.WriteTotalTimeoutConstant;
        });
    }

    BOOL Purge(DWORD flags) override {
        return Change(WireAct::Purge, flags, [&] {
            readsAborted_ += flags & PURGE_RXABORT ? 1 : 0;
            if (flags & PURGE_RXCLEAR)
                Input().Bytes.clear();
        });
    }

    BOOL SetMask(DWORD mask) override {
        return Change(WireAct::Mask, mask, [&] {
            mask_ = mask;
            Input().Broke = false;
            ++masksSet_;
        });
    }

    BOOL WaitEvent(DWORD& events) override {
        events = 0;
        auto lock = Talk().Acquire();
        const unsigned masksSet = masksSet_;
        const auto pending = [&]() -> DWORD {
            return ((Input().Broke ? EV_BREAK : 0) | (Input().Bytes.empty() ? 0 : EV_RXCHAR)) & mask_;
        };
        const auto news = [&] { return masksSet != masksSet_ || pending() != 0 || Input().Unplugged; };
        if (!Wait(lock, layer::Forever, news))
            return Idle(lock);
        if (closed_)
            return FALSE;
        if (masksSet != masksSet_)
            return TRUE;
        events = pending();
        if (events & EV_BREAK)
            Input().Broke = false;
        // Unplugged, it fails again and again; once nothing more is to come, that would have no end.
        return events != 0 || (!Talk().AnythingLeft() && layer::OnMainThread() && Idle(lock));
    }

    BOOL ClearError(DWORD& errors, COMSTAT& status) override {
        const auto lock = Talk().Acquire();
        errors = 0;
        status = COMSTAT{};
        status.cbInQue = static_cast<DWORD>(Input().Bytes.size());
        return !closed_;
    }

    BOOL SetBreak(bool on) override {
        return Change(WireAct::LineBreak, on, [] {});
    }

    bool Close() override {
        return Change(WireAct::Close, 0, [&] {
            closed_ = true;
            Line().Open = false;
        });
    }

  private:
    Conversation& Talk() { return state_->Talk; }
    PortLine& Line() { return state_->Lines[number_]; }
    WireInput& Input() { return Talk().InputOf(number_); }
    bool Did(WireAct act, DWORD value, std::vector<BYTE> bytes = {}) {
        return Talk().Did({.Act = act, .Port = number_, .Bytes = std::move(bytes), .Value = value});
    }
    // What fails on a closed port and may end a wait.
    template <class Apply>
    BOOL Change(WireAct act, DWORD value, const Apply& apply) {
        const auto lock = Talk().Acquire();
        if (closed_)
            return FALSE;
        apply();
        Did(act, value);
        Talk().Changed().notify_all();
        return TRUE;
    }
    // A wait that the close of the port ends.
    bool Wait(Conversation::Lock& lock, std::uint64_t deadline, const std::function<bool()>& done) {
        return Talk().Wait(lock, deadline, [&] { return closed_ || done(); });
    }
    BOOL Idle(Conversation::Lock& lock) {
        lock.unlock();
        state_->OnIdle();
        return FALSE;
    }

    const std::shared_ptr<State> state_;
    const int number_;
    DCB line_{};
    COMMTIMEOUTS timeouts_{};
    DWORD mask_ = 0;
    unsigned masksSet_ = 0, readsAborted_ = 0;
    bool closed_ = false;
};

ScriptedPorts::ScriptedPorts(Conversation& conversation, std::function<void()> onIdle)
    : state_(std::make_shared<State>(State{conversation, std::move(onIdle), {}})) {
    layer::InstallSerialOpener(
        [state = state_](const std::string& name) -> std::shared_ptr<layer::SerialPort> {
            if (name.size() != 5 || !name.starts_with("COM") || name[4] != ':')
                return nullptr;
            const int number = name[3] - '0';
            const auto lock = state->Talk.Acquire();
            bool& open = state->Lines[number].Open;
            if (open || !state->Talk.Did({.Act = WireAct::Open, .Port = number}))
                return nullptr;
            open = true;
            return std::make_shared<Port>(state, number);
        });
}

ScriptedPorts::~ScriptedPorts() {
    layer::InstallSerialOpener(nullptr);
}

PortLine ScriptedPorts::LineOf(int port) const {
    const auto lock = state_->Talk.Acquire();
    return state_->Lines[port];
}
