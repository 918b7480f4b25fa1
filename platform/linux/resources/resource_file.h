#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Reads the compiled resource file (.res, 32-bit form) that is built into the program. Every function is pure
// and needs no lock. All resources are named by number.

namespace resource {

using Bytes = std::span<const std::byte>;

enum class Type : std::uint16_t {
    Bitmap = 2,
    Icon = 3,
    Menu = 4,
    Dialog = 5,
    StringBlock = 6,
    GroupIcon = 14,
};

// Walks little-endian data. What lies beyond the end reads as 0.
class Cursor {
  public:
    explicit Cursor(Bytes data) : data_(data) {}

    std::size_t Left() const { return data_.size() - at_; }
    Bytes Take(std::size_t count);
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return Number(4); }
    std::int16_t S16() { return static_cast<std::int16_t>(U16()); }
    // Records are padded from the start of the data; the last one's padding may be missing.
    void AlignTo4() { Take(-at_ % 4); }
    // A text with its ending 0.
    std::u16string Text();

  private:
    std::uint32_t Number(std::size_t size);

    Bytes data_;
    std::size_t at_ = 0;
};

struct Control {
    std::u16string ClassName;        // case means nothing, compilers change it
    std::uint16_t Id = 0;            // 0xFFFF for a control without one of its own
    std::u16string Text;             // empty when TextResource is set
    std::uint16_t TextResource = 0;  // number of the icon that a static control shows, or 0
    int X = 0, Y = 0;                // dialog units, from the dialog's client area
    int Width = 0, Height = 0;       // dialog units
    std::uint32_t Style = 0;
};

struct Dialog {
    std::u16string Title;
    std::uint32_t Style = 0;
    int X = 0, Y = 0;           // dialog units
    int Width = 0, Height = 0;  // dialog units, client area
    std::u16string FontName;    // empty: the system's font
    int FontPoints = 0;
    std::vector<Control> Controls;  // in template order, which is the tab order
};

struct MenuItem {
    std::u16string Text;   // empty and no number: a separator
    std::uint16_t Id = 0;  // 0 for separators and popups
    bool Popup = false;
    std::vector<MenuItem> Items;  // of a popup
};

// The raw data of a resource.
std::optional<Bytes> Find(Bytes file, Type type, std::uint16_t number);

// A text of the string table; empty without one.
std::u16string FindString(Bytes file, std::uint16_t number);

// A dialog template of the plain form (DIALOG).
std::optional<Dialog> FindDialog(Bytes file, std::uint16_t number);

// The top level of a menu; empty when there is none.
std::vector<MenuItem> FindMenu(Bytes file, std::uint16_t number);

}  // namespace resource
