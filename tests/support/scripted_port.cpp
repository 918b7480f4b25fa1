#include "tests/support/scripted_port.h"

#include <algorithm>
#include <utility>

#include "platform/linux/kernel/thread.h"

struct ScriptedPorts::State {
    Conversation& Talk;
    std::function<void()> OnIdle;
    std::set<int> Open;
    std::map<int, DWORD> Rates, WriteTimes;
};

class ScriptedPorts::Port : public layer::SerialPort {
  public:
    Port(std::shared_ptr<State> state, int number) : state_(std::move(state)), number_(number) {
        line_.DCBlength = sizeof line_;
        line_.BaudRate = state_->Rates.contains(number) ? state_->Rates[number] : 9600;
        line_.fBinary = 1;
        line_.ByteSize = 8;
    }

    BOOL Read(void* buffer, DWORD size, DWORD& read) override;
    BOOL Write(const void* buffer, DWORD size, DWORD& written) override;
    BOOL GetState(DCB& state) override;
    BOOL SetState(const DCB& state) override;
    BOOL GetTimeouts(COMMTIMEOUTS& timeouts) override;
    BOOL SetTimeouts(const COMMTIMEOUTS& timeouts) override;
    BOOL Purge(DWORD flags) override;
    BOOL SetMask(DWORD mask) override;
    BOOL WaitEvent(DWORD& events) override;
    BOOL ClearError(DWORD& errors, COMSTAT& status) override;
    BOOL SetBreak(bool on) override;
    bool Close() override;

  private:
    Conversation& Talk() { return state_->Talk; }
    WireInput& Input() { return Talk().InputOf(number_); }
    bool Did(WireAct act, DWORD value = 0) {
        WireStep step;
        step.Act = act;
        step.Port = number_;
        step.Value = value;
        return Talk().Did(std::move(step));
    }
    // A wait that the close of the port ends.
    bool Wait(Conversation::Lock& lock, std::uint64_t deadline, const std::function<bool()>& done);

    const std::shared_ptr<State> state_;
    const int number_;
    DCB line_{};
    COMMTIMEOUTS timeouts_{};
    DWORD mask_ = 0;
    unsigned masksSet_ = 0, readsAborted_ = 0;
    bool closed_ = false;
};

bool ScriptedPorts::Port::Wait(Conversation::Lock& lock, std::uint64_t deadline,
                               const std::function<bool()>& done) {
    return Talk().Wait(lock, deadline, [&] { return closed_ || done(); });
}

BOOL ScriptedPorts::Port::Read(void* buffer, DWORD size, DWORD& read) {
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
        if (!Wait(lock, end, changed) && end == layer::Forever) {
            lock.unlock();
            state_->OnIdle();
            return FALSE;
        }
    }
}

BOOL ScriptedPorts::Port::Write(const void* buffer, DWORD size, DWORD& written) {
    written = 0;
    const auto lock = Talk().Acquire();
    if (closed_ || Input().Unplugged)
        return FALSE;
    WireStep step;
    step.Act = WireAct::Write;
    step.Port = number_;
    const auto* bytes = static_cast<const BYTE*>(buffer);
    step.Bytes.assign(bytes, bytes + size);
    if (!Talk().Did(std::move(step)))
        return FALSE;
    written = size;
    return TRUE;
}

BOOL ScriptedPorts::Port::GetState(DCB& state) {
    const auto lock = Talk().Acquire();
    state = line_;
    return !closed_;
}

BOOL ScriptedPorts::Port::SetState(const DCB& state) {
    const auto lock = Talk().Acquire();
    if (closed_ || state.ByteSize != 8 || state.Parity != NOPARITY || state.StopBits != ONESTOPBIT)
        return FALSE;
    const DCB before = std::exchange(line_, state);
    state_->Rates[number_] = state.BaudRate;
    if (before.BaudRate != state.BaudRate)
        Did(WireAct::Rate, state.BaudRate);
    if (before.fDtrControl != state.fDtrControl)
        Did(WireAct::Dtr, state.fDtrControl);
    if (before.fRtsControl != state.fRtsControl)
        Did(WireAct::Rts, state.fRtsControl);
    return TRUE;
}

BOOL ScriptedPorts::Port::GetTimeouts(COMMTIMEOUTS& timeouts) {
    const auto lock = Talk().Acquire();
    timeouts = timeouts_;
    return !closed_;
}

BOOL ScriptedPorts::Port::SetTimeouts(const COMMTIMEOUTS& timeouts) {
    const auto lock = Talk().Acquire();
    if (closed_)
        return FALSE;
    timeouts_ = timeouts;
    state_->WriteTimes[number_] = timeouts.WriteTotalTimeoutConstant;
    Did(WireAct::Interval, timeouts.ReadIntervalTimeout);
    return TRUE;
}

BOOL ScriptedPorts::Port::Purge(DWORD flags) {
    const auto lock = Talk().Acquire();
    if (closed_)
        return FALSE;
    if (flags & PURGE_RXABORT)
        ++readsAborted_;
    if (flags & PURGE_RXCLEAR)
        Input().Bytes.clear();
    Did(WireAct::Purge, flags);
    Talk().Changed().notify_all();
    return TRUE;
}

BOOL ScriptedPorts::Port::SetMask(DWORD mask) {
    const auto lock = Talk().Acquire();
    if (closed_)
        return FALSE;
    mask_ = mask;
    Input().Broke = false;
    ++masksSet_;
    Did(WireAct::Mask, mask);
    Talk().Changed().notify_all();
    return TRUE;
}

BOOL ScriptedPorts::Port::WaitEvent(DWORD& events) {
    events = 0;
    auto lock = Talk().Acquire();
    const unsigned masksSet = masksSet_;
    for (;;) {
        if (closed_)
            return FALSE;
        if (masksSet != masksSet_)
            return TRUE;
        WireInput& input = Input();
        if (input.Broke && (mask_ & EV_BREAK))
            events |= EV_BREAK;
        if (!input.Bytes.empty() && (mask_ & EV_RXCHAR))
            events |= EV_RXCHAR;
        if (events != 0) {
            if (events & EV_BREAK)
                input.Broke = false;
            return TRUE;
        }
        if (input.Unplugged) {
            // Fails again and again; once nothing more is to come, that would have no end.
            const bool over = !Talk().AnythingLeft();
            lock.unlock();
            if (over && layer::OnMainThread())
                state_->OnIdle();
            return FALSE;
        }
        const auto news = [&] {
            return masksSet != masksSet_ || (Input().Broke && (mask_ & EV_BREAK)) ||
                   (!Input().Bytes.empty() && (mask_ & EV_RXCHAR)) || Input().Unplugged;
        };
        if (!Wait(lock, layer::Forever, news)) {
            lock.unlock();
            state_->OnIdle();
            return FALSE;
        }
    }
}

BOOL ScriptedPorts::Port::ClearError(DWORD& errors, COMSTAT& status) {
    const auto lock = Talk().Acquire();
    errors = 0;
    status = COMSTAT{};
    status.cbInQue = static_cast<DWORD>(Input().Bytes.size());
    return !closed_;
}

BOOL ScriptedPorts::Port::SetBreak(bool on) {
    const auto lock = Talk().Acquire();
    if (closed_)
        return FALSE;
    Did(WireAct::LineBreak, on);
    return TRUE;
}

bool ScriptedPorts::Port::Close() {
    const auto lock = Talk().Acquire();
    closed_ = true;
    state_->Open.erase(number_);
    Did(WireAct::Close);
    Talk().Changed().notify_all();
    return true;
}

ScriptedPorts::ScriptedPorts(Conversation& conversation, std::function<void()> onIdle)
    : state_(std::make_shared<State>(State{conversation, std::move(onIdle), {}, {}, {}})) {
    layer::InstallSerialOpener(
        [state = state_](const std::string& name) -> std::shared_ptr<layer::SerialPort> {
            if (name.size() != 5 || name.compare(0, 3, "COM") != 0 || name[4] != ':')
                return nullptr;
            const int number = name[3] - '0';
            const auto lock = state->Talk.Acquire();
            WireStep step;
            step.Act = WireAct::Open;
            step.Port = number;
            if (state->Open.contains(number) || !state->Talk.Did(std::move(step)))
                return nullptr;
            state->Open.insert(number);
            return std::make_shared<Port>(state, number);
        });
}

ScriptedPorts::~ScriptedPorts() {
    layer::InstallSerialOpener(nullptr);
}

bool ScriptedPorts::IsOpen(int port) const {
    const auto lock = state_->Talk.Acquire();
    return state_->Open.contains(port);
}

DWORD ScriptedPorts::RateOf(int port) const {
    const auto lock = state_->Talk.Acquire();
    const auto found = state_->Rates.find(port);
    return found == state_->Rates.end() ? 0 : found->second;
}

DWORD ScriptedPorts::WriteTimeOf(int port) const {
    const auto lock = state_->Talk.Acquire();
    return state_->WriteTimes[port];
}
