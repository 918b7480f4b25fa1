#include "tests/support/conversation.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/linux/kernel/thread.h"

namespace {

bool IsReaderAct(WireAct act) {
    return act >= WireAct::Receive;
}

std::string TimeOf(const WireStep& step) {
    return step.Least == step.Most ? std::to_string(step.Least)
                                   : std::to_string(step.Least) + ".." + std::to_string(step.Most);
}

std::string Describe(const WireStep& step) {
    if (step.Act == WireAct::Nothing)
        return "~ " + TimeOf(step) + "ms, and nothing else";
    const WireActForm& form = *std::find_if(std::begin(WireActForms), std::end(WireActForms),
                                            [&](const WireActForm& each) { return each.Act == step.Act; });
    std::string text = std::to_string(step.Port) + form.Words + Hex(step.Bytes);
    if (form.Value == WireActForm::OnOff)
        text += step.Value ? " on" : " off";
    else if (form.Value != WireActForm::None)
        text += " " + std::to_string(step.Value);
    return text;
}

}  // namespace

std::string Hex(const std::vector<BYTE>& bytes) {
    std::string text;
    char digits[4];
    for (const BYTE byte : bytes) {
        std::snprintf(digits, sizeof digits, " %02X", byte);
        text += digits;
    }
    return text;
}

Conversation::Conversation(layer::ManualClock& clock, Complaint complain)
    : clock_(clock), complain_(std::move(complain)) {
    clock_.AddSource(*this);
}

Conversation::~Conversation() {
    clock_.RemoveSource(*this);
}

void Conversation::Watch(std::set<WireAct> acts) {
    const Lock lock(mutex_);
    watched_ = std::move(acts);
}

void Conversation::Begin(std::vector<WireStep> steps, int line) {
    const Lock lock(mutex_);
    steps_.assign(steps.begin(), steps.end());
    line_ = line;
    last_ = clock_.Now();
    active_ = true;
    Deliver(last_);
}

void Conversation::End() {
    const Lock lock(mutex_);
    const std::uint64_t passed = clock_.Now() - last_;
    if (!steps_.empty() && steps_.front().Act == WireAct::Nothing) {
        const WireStep& step = steps_.front();
        if (passed < step.Least || passed > step.Most)
            Complain(step.Line, "expected " + TimeOf(step) + " ms, but it took " + std::to_string(passed));
        steps_.pop_front();
    }
    if (!steps_.empty())
        Complain(steps_.front().Line, "never happened: " + Describe(steps_.front()));
    steps_.clear();
    active_ = false;
}

bool Conversation::Did(WireStep act) {
    if (!active_ || failed_)
        return true;
    const WireStep* head = steps_.empty() ? nullptr : &steps_.front();
    const bool fails = head != nullptr && head->Port == act.Port &&
                       ((act.Act == WireAct::Write && head->Act == WireAct::FailWrite) ||
                        (act.Act == WireAct::Open && head->Act == WireAct::FailOpen));
    if (!fails && !watched_.contains(act.Act))
        return true;
    if (head == nullptr) {
        Complain(line_, "unexpected: " + Describe(act));
        return true;
    }
    const bool same = head->Act == act.Act && head->Port == act.Port && head->Bytes == act.Bytes &&
                      head->Value == act.Value;
    if (!fails && !same) {
        Complain(head->Line, "expected " + Describe(*head) + "\n     but got " + Describe(act));
        return true;
    }
    const std::uint64_t now = clock_.Now(), passed = now - last_;
    if (head->Timed && (passed < head->Least || passed > head->Most)) {
        Complain(head->Line, "expected " + Describe(*head) + " after " + TimeOf(*head) +
                                 " ms, but it came after " + std::to_string(passed));
        return true;
    }
    last_ = now;
    steps_.pop_front();
    Deliver(now);
    return !fails;
}

bool Conversation::Wait(Lock& lock, std::uint64_t deadline, const std::function<bool()>& done) {
    if (!layer::OnMainThread())
        return clock_.WaitUntil(lock, changed_, deadline, done);
    while (!done()) {
        const std::uint64_t next = std::min(deadline, Due());
        const std::uint64_t now = clock_.Now();
        if (next != layer::Forever) {
            if (now >= deadline)
                return false;
            clock_.WaitUntil(lock, changed_, std::max(next, now + 1), done);
            continue;
        }
        if (!steps_.empty() && steps_.front().Act != WireAct::Nothing && !failed_)
            Complain(steps_.front().Line,
                     "the system waits for the reader; expected " + Describe(steps_.front()));
        return false;
    }
    return true;
}

std::uint64_t Conversation::NextArrival() {
    const Lock lock(mutex_);
    return !steps_.empty() && steps_.front().Act != WireAct::Nothing ? Due() : layer::Forever;
}

std::uint64_t Conversation::NextDue() {
    const Lock lock(mutex_);
    return Due();
}

std::uint64_t Conversation::Due() const {
    if (steps_.empty() || failed_ || !IsReaderAct(steps_.front().Act))
        return layer::Forever;
    const std::uint64_t due = last_ + steps_.front().Least;
    // Time that has passed stands for itself.
    return steps_.front().Act == WireAct::Nothing && due <= clock_.Now() ? layer::Forever : due;
}

void Conversation::RunDue(std::uint64_t now) {
    const Lock lock(mutex_);
    Deliver(now);
}

void Conversation::Deliver(std::uint64_t now) {
    while (!steps_.empty() && IsReaderAct(steps_.front().Act) && steps_.front().Act != WireAct::Nothing &&
           last_ + steps_.front().Least <= now) {
        const WireStep& step = steps_.front();
        last_ += step.Least;
        WireInput& input = inputs_[step.Port];
        input.Bytes.insert(input.Bytes.end(), step.Bytes.begin(), step.Bytes.end());
        input.LastArrival = now;
        input.Broke |= step.Act == WireAct::ReceiveBreak;
        input.Unplugged = step.Act == WireAct::Unplug || (input.Unplugged && step.Act != WireAct::Plug);
        steps_.pop_front();
    }
    changed_.notify_all();
}

void Conversation::Complain(int line, const std::string& what) {
    if (failed_)
        return;
    failed_ = true;
    complain_(line, what);
    changed_.notify_all();
}
