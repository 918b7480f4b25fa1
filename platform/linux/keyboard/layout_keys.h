// Which keys of a keyboard layout give what a US keyboard would give. Looks at the layout only.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "platform/base.h"

struct xkb_keymap;

namespace layer {

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

}  // namespace layer
