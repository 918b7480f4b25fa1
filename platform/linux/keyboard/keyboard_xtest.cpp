// Key events for the X client in front, through the XTEST extension.
//
// A key is pressed and released in one go when it goes down, so none is ever left down, whatever becomes of
// this program; the Shift key is remembered and becomes part of the character. The character is looked up in
// the map in force, because the layout may be any.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bitset>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/keyboard.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/keyboard/keyboard_map.h"
#include "platform/linux/keyboard/us_keyboard.h"

namespace layer {
namespace {

constexpr std::uint64_t ReconnectPause = 1000;
constexpr unsigned AllModifiers = 0xFF;
// What the server tells of the keyboard's state by itself, so that nobody has to ask.
constexpr unsigned long StateNews = XkbModifierLockMask | XkbModifierLatchMask | XkbGroupStateMask;
// For how long an answer of the server's holds: that the user holds no key, what is locked, and the map.
// Asking for each key would take longer than typing it.
constexpr std::chrono::milliseconds RestHolds{1};

std::atomic<Display*> ours{nullptr};
XErrorHandler othersHandler = nullptr;
XIOErrorHandler othersLoss = nullptr;

// A request that the server refuses must not end the program, which is Xlib's habit.
int OnError(Display* display, XErrorEvent* error) {
    if (display == ours.load() || othersHandler == nullptr) {
        return 0;
    }
    return othersHandler(display, error);
}

// Nor must a server that has gone; only for other connections that is somebody else's decision.
int OnIoError(Display* display) {
    if (display == ours.load() || othersLoss == nullptr) {
        return 0;
    }
    return othersLoss(display);
}

// A connection of our own to the X server that outlives the server's death: it just becomes unusable.
class XConnection {
  public:
    XConnection() = default;
    ~XConnection() { Close(); }
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    // Connects to $DISPLAY. The object must stay where it is while the connection lasts.
    bool Open();
    void Close();
    Display* Get() const { return display_; }
    bool Usable() const { return display_ != nullptr && !lost_; }

  private:
    static void OnLost(Display* display, void* self);

    Display* display_ = nullptr;
    bool lost_ = false;
};

bool XConnection::Open() {
    Close();
    const char* name = std::getenv("DISPLAY");
    if (name == nullptr || *name == 0) {
        return false;
    }
    struct sigaction pipeAction {};
    if (sigaction(SIGPIPE, nullptr, &pipeAction) == 0 && pipeAction.sa_handler == SIG_DFL) {
        std::signal(SIGPIPE, SIG_IGN);  // writing to a dead server is an error, not an end
    }
    display_ = XOpenDisplay(name);
    if (display_ == nullptr) {
        return false;
    }
    lost_ = false;
    ours = display_;
    if (const XErrorHandler previous = XSetErrorHandler(OnError); previous != OnError) {
        othersHandler = previous;
    }
    if (const XIOErrorHandler previous = XSetIOErrorHandler(OnIoError); previous != OnIoError) {
        othersLoss = previous;
    }
    XSetIOErrorExitHandler(display_, &XConnection::OnLost, this);
    return true;
}

void XConnection::Close() {
    if (display_ != nullptr && lost_) {
        // What extensions have left half-made of it crashes XCloseDisplay: its memory stays.
        close(ConnectionNumber(display_));
    } else if (display_ != nullptr) {
        XCloseDisplay(display_);
    }
    ours = nullptr;
    display_ = nullptr;
}

void XConnection::OnLost(Display*, void* self) {
    static_cast<XConnection*>(self)->lost_ = true;
}

class XtestKeyboard : public KeyboardBackend {
  public:
    ~XtestKeyboard() override;
    bool Connect();
    void Key(BYTE key, bool up) override;
    void Flush() override;
    void ReleaseAll() override;

  private:
    // A key without symbols of its own, and those that it has been lent.
    struct Borrowed {
        KeyCode key;
        KeySym symbols[MaxLevels];
        int used;
    };

    void Disconnect();
    bool Ready();
    void NoteLoss();
    void FetchMap();
    void TakeNews(int howFar);
    void Type(const KeyMeaning& meaning, bool shift);
    bool Look();
    bool Choose(const KeyMeaning& meaning, unsigned locked, int group, KeyChoice& choice);
    bool Borrow(KeySym symbol);
    void Emit(const KeyChoice& choice);
    void EmitBesideHeldKeys(const KeyChoice& choice);
    void Fake(KeyCode key, bool down) { XTestFakeKeyEvent(connection_.Get(), key, down, CurrentTime); }
    void Press(KeyCode key) { PressSynthetic(connection_.Get(), key); }

    XConnection connection_;
    XkbDescPtr map_ = nullptr;
    int eventBase_ = 0;
    unsigned keyboard_ = XkbUseCoreKbd;  // whose map tells what our keys give
    bool stale_ = true;
    std::uint64_t lastTry_ = 0;
    bool shift_ = false;
    bool unsent_ = false;
    XkbStateRec state_{};  // locks, latches and group as last heard
    bool atRest_ = false;  // no key was down then
    std::chrono::steady_clock::time_point lookAgain_{};
    std::vector<Borrowed> borrowed_;
    std::bitset<256> again_;  // modifiers pressed again for the user
};

XtestKeyboard::~XtestKeyboard() {
    ReleaseAll();
    Disconnect();
}

bool XtestKeyboard::Connect() {
    lastTry_ = CurrentClock().Now();
    int major = XkbMajorVersion, minor = XkbMinorVersion, opcode = 0, error = 0, a = 0, b = 0, c = 0, d = 0;
    if (!connection_.Open()) {
        return false;
    }
    Display* display = connection_.Get();
    if (!XkbQueryExtension(display, &opcode, &eventBase_, &error, &major, &minor) ||
        !XTestQueryExtension(display, &a, &b, &c, &d)) {
        connection_.Close();
        return false;
    }
    XTestGrabControl(display, True);  // also while a client has grabbed the server
    XkbSelectEvents(display, XkbUseCoreKbd, XkbMapNotifyMask | XkbNewKeyboardNotifyMask,
                    XkbMapNotifyMask | XkbNewKeyboardNotifyMask);
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, StateNews, StateNews);
    keyboard_ = XtestDevice(display);
    FetchMap();
    return connection_.Usable() && map_ != nullptr;
}

void XtestKeyboard::Disconnect() {
    if (map_ != nullptr) {
        XkbFreeKeyboard(map_, 0, True);
    }
    map_ = nullptr;
    borrowed_.clear();
    atRest_ = false;
    connection_.Close();
}

bool XtestKeyboard::Ready() {
    if (connection_.Usable() && map_ != nullptr) {
        return true;
    }
    if (CurrentClock().Now() - lastTry_ < ReconnectPause) {
        return false;
    }
    Disconnect();
    return Connect();
}

void XtestKeyboard::FetchMap() {
    XkbDescPtr fresh = XkbGetMap(connection_.Get(), XkbAllMapComponentsMask, keyboard_);
    if (fresh == nullptr) {
        return;
    }
    if (map_ != nullptr) {
        XkbFreeKeyboard(map_, 0, True);
    }
    map_ = fresh;
    stale_ = false;
    XkbGetState(connection_.Get(), XkbUseCoreKbd, &state_);
    // A new layout takes back what was lent.
    std::erase_if(borrowed_, [&](const Borrowed& lent) {
        return XkbKeyNumGroups(map_, lent.key) == 0 ||
               XkbKeySymEntry(map_, lent.key, 0, 0) != lent.symbols[0];
    });
}

// The map and the state may have changed since the last key.
void XtestKeyboard::TakeNews(int howFar) {
    XkbEvent event;
    while (connection_.Usable() && XEventsQueued(connection_.Get(), howFar) > 0) {
        XNextEvent(connection_.Get(), &event.core);
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.core.xmapping);
        }
        if (event.type == eventBase_ && event.any.xkb_type == XkbStateNotify) {
            state_.locked_mods = static_cast<unsigned char>(event.state.locked_mods);
            state_.latched_mods = static_cast<unsigned char>(event.state.latched_mods);
            state_.group = static_cast<unsigned char>(event.state.group);
        } else if (event.type == eventBase_ || event.type == MappingNotify) {
            stale_ = true;
        }
    }
    if (stale_) {
        FetchMap();
    }
}

void XtestKeyboard::Key(BYTE key, bool up) {
    if (key == VK_SHIFT) {
        shift_ = !up;
    } else if (!up && Ready()) {
        Type(MeaningOf(key, shift_), shift_);
        if (!connection_.Usable() && !unsent_) {
            // Nothing has been lost with it.
            Disconnect();
            if (Connect()) {
                Type(MeaningOf(key, shift_), shift_);
            }
        }
        NoteLoss();
    }
}

void XtestKeyboard::Type(const KeyMeaning& meaning, bool shift) {
    if (meaning.symbol == NoSymbol) {
        return;
    }
    if (!Look()) {
        return;
    }
    KeyChoice choice{};
    if (!connection_.Usable() || !Choose(meaning, state_.locked_mods, state_.group, choice)) {
        return;
    }
    if (!meaning.isCharacter && shift) {
        choice.press |= ShiftMask;
    }
    if (atRest_) {
        Emit(choice);
    } else {
        EmitBesideHeldKeys(choice);
    }
    unsent_ = true;
}

void XtestKeyboard::Flush() {
    if (std::exchange(unsent_, false) && connection_.Usable()) {
        XFlush(connection_.Get());
        NoteLoss();
    }
}

// What is left of the line must not come by the next connection: a line without its beginning is a wrong one.
void XtestKeyboard::NoteLoss() {
    if (!connection_.Usable()) {
        lastTry_ = CurrentClock().Now();
        unsent_ = false;
        Say(LogPriority::Error, "the X display was lost while keys went there: they are missing");
    }
}

// Learns the keyboard's state, unless that was only just done and nothing was down.
bool XtestKeyboard::Look() {
    const auto now = std::chrono::steady_clock::now();
    if (atRest_ && now < lookAgain_) {
        return true;
    }
    char down[32] = {};
    XQueryKeymap(connection_.Get(), down);
    TakeNews(QueuedAlready);  // what came before this answer is here
    atRest_ = state_.latched_mods == 0 && again_.none() &&
              std::all_of(std::begin(down), std::end(down), [](char bits) { return bits == 0; });
    lookAgain_ = std::chrono::steady_clock::now() + RestHolds;
    return connection_.Usable();
}

bool XtestKeyboard::Choose(const KeyMeaning& meaning, unsigned locked, int group, KeyChoice& choice) {
    for (const KeySym symbol : {meaning.symbol, meaning.substitute}) {
        if (symbol != NoSymbol && FindKey(map_, symbol, locked, group, choice)) {
            return true;
        }
    }
    const KeySym last = meaning.substitute != NoSymbol ? meaning.substitute : meaning.symbol;
    return Borrow(last) && FindKey(map_, last, locked, group, choice);
}

// Puts the symbol on a key that has none. It stays there: a client may look at the map only when it gets
// round to the key event, and must then still find it. A key takes as many symbols as it can.
bool XtestKeyboard::Borrow(KeySym symbol) {
    const SpareType type = TypeForSpareKeys(map_);
    if (borrowed_.empty() || borrowed_.back().used >= type.levels) {
        bool taken[256] = {};
        for (const Borrowed& key : borrowed_) {
            taken[key.key] = true;
        }
        KeyCode key = SpareKey(map_, taken);
        if (key == 0) {
            if (borrowed_.empty()) {
                return false;
            }
            key = borrowed_.front().key;
            borrowed_.erase(borrowed_.begin());
        }
        borrowed_.push_back({key, {}, 0});
    }
    Borrowed& lent = borrowed_.back();
    lent.symbols[lent.used++] = symbol;
    GiveSymbols(connection_.Get(), map_, lent.key, type, lent.symbols);
    FetchMap();
    return connection_.Usable();
}

void XtestKeyboard::EmitBesideHeldKeys(const KeyChoice& choice) {
    Display* display = connection_.Get();
    HeldKeys::Forget(display, again_);
    const HeldKeys held(display, map_);
    held.Release();
    if (state_.latched_mods != 0) {
        XkbLatchModifiers(display, XkbUseCoreKbd, AllModifiers, 0);
    }
    Emit(choice);
    held.Restore(again_);
}

void XtestKeyboard::Emit(const KeyChoice& choice) {
    Display* display = connection_.Get();
    unsigned locks = choice.locked;
    KeyCode pressed[8];
    int count = 0;
    for (unsigned bit = 1; bit <= Mod5Mask; bit <<= 1) {
        if ((choice.press & bit) == 0) {
            continue;
        }
        const KeyCode key = ModifierKey(map_, bit);
        if (key != 0) {
            pressed[count++] = key;
        } else {
            locks |= bit;  // no key holds it down
        }
    }
    if (locks != state_.locked_mods) {
        XkbLockModifiers(display, XkbUseCoreKbd, AllModifiers, locks);
    }
    for (int i = 0; i < count; ++i) {
        Press(pressed[i]);
    }
    Press(choice.key);
    Fake(choice.key, false);
    for (int i = count; i-- > 0;) {
        Fake(pressed[i], false);
    }
    if (locks != state_.locked_mods) {
        XkbLockModifiers(display, XkbUseCoreKbd, AllModifiers, state_.locked_mods);
    }
}

void XtestKeyboard::ReleaseAll() {
    shift_ = false;
    if (!connection_.Usable()) {
        return;
    }
    HeldKeys::Forget(connection_.Get(), again_);
    TakeNews(QueuedAfterReading);
    KeySym none[] = {NoSymbol};
    for (const Borrowed& key : borrowed_) {
        XChangeKeyboardMapping(connection_.Get(), key.key, 1, none, 1);
    }
    borrowed_.clear();
    XSync(connection_.Get(), False);
}

}  // namespace

std::unique_ptr<KeyboardBackend> MakeXtestKeyboard() {
    auto keyboard = std::make_unique<XtestKeyboard>();
    return keyboard->Connect() ? std::move(keyboard) : nullptr;
}

}  // namespace layer
