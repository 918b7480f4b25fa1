// A keyboard of our own, known by the kernel's key codes, in some layout: what the Wayland and the kernel
// back end share.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/base.h"
#include "platform/linux/keyboard/keyboard_backend.h"

struct xkb_keymap;

namespace layer {

// Which keys of a keyboard layout give what a US keyboard would give. Looks at the layout only.

// One key, by the kernel's code, and what is held down with it.
struct LayoutKey {
    unsigned short Code;
    bool Shift;
    bool ThirdLevel;  // the key KEY_RIGHTALT
    bool operator==(const LayoutKey&) const = default;
};

// The keys of one character: one, or a dead key and the space bar behind it. None: the layout lacks it.
struct LayoutStroke {
    LayoutKey Keys[2];
    int Count = 0;
    std::span<const LayoutKey> All() const& { return {Keys, static_cast<std::size_t>(Count)}; }
    std::span<const LayoutKey> All() const&& = delete;  // it would outlive the keys
};

class LayoutKeys {
  public:
    // `layout` as in "us" or "de(nodeadkeys)"; empty: what $XKB_DEFAULT_LAYOUT and its companions say, else
    // US. Nothing when there is no such layout.
    static std::optional<LayoutKeys> Load(const std::string& layout);

    // The keys for a virtual key of a US keyboard, with Caps Lock off or on.
    LayoutStroke For(BYTE virtualKey, bool shift, bool capsLock) const;
    // The characters of a US keyboard that the layout does not give, a space between any two.
    std::string Missing() const;
    // The layout as the text that clients and display servers exchange.
    std::string Text() const;

  private:
    using Table = std::unordered_map<unsigned, LayoutKey>;  // by key symbol
    void FillTable(bool capsLock);
    LayoutStroke ForSymbol(unsigned symbol, const Table& table) const;

    std::shared_ptr<xkb_keymap> map_;
    Table tables_[2];  // Caps Lock off, on
};

// How fast characters may follow each other. Who takes our keys has room for so many only, and what does not
// fit is lost there without a word.
struct StrokeRate {
    int Burst;                        // characters at once
    std::chrono::microseconds Pause;  // for each one more
};

// A key is pressed and released in one go when it goes down, so none is ever left down, whatever becomes of
// this program; the Shift key is remembered and becomes part of the character.
class StrokeKeyboard : public KeyboardBackend {
  public:
    StrokeKeyboard(LayoutKeys keys, StrokeRate rate) : keys_(std::move(keys)), rate_(rate) {}
    void Key(BYTE key, bool up) final;
    void ReleaseAll() override { shift_ = false; }

  protected:
    using Clock = std::chrono::steady_clock;

    const LayoutKeys& Layout() const { return keys_; }
    // Whether keys can be sent now; the place to look for a connection that was lost.
    virtual bool Ready() = 0;
    virtual bool CapsLock() { return false; }
    // Sends the key down and up again, with what is to be held down with it.
    virtual void Press(const LayoutKey& key) = 0;

  private:
    void WaitForRoom();

    const LayoutKeys keys_;
    const StrokeRate rate_;
    bool shift_ = false;
    Clock::time_point paidUntil_{};  // when everything sent so far has had its pause
};

}  // namespace layer
