#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Reads a compiled resource file (.res, 32-bit form) that lies in memory. Every function is pure, needs no
// lock, and checks every length it meets: a resource that is missing, cut short or makes no sense is "not
// found". All resources are named by number; of several languages the first counts.

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

// Classes of controls that a dialog names by number.
enum ClassAtom : std::uint16_t {
    ButtonClass = 0x80,
    EditClass = 0x81,
    StaticClass = 0x82,
    ListBoxClass = 0x83,
    ScrollBarClass = 0x84,
    ComboBoxClass = 0x85,
};

// Bits of MenuItem::Flags.
enum MenuFlag : std::uint16_t { MenuGrayed = 0x1, MenuDisabled = 0x2, MenuChecked = 0x8 };

struct Control {
    std::uint16_t Atom = 0;    // 0 when the class is named
    std::u16string ClassName;  // empty when the class has an atom; case means nothing, compilers change it
    std::uint32_t Id = 0;      // 0xFFFF for a control without one of its own
    std::u16string Text;       // empty when TextResource is set
    std::uint16_t TextResource = 0;  // number of the icon that a static control shows, or 0
    int X = 0, Y = 0;                // dialog units, from the dialog's client area
    int Width = 0, Height = 0;       // dialog units
    std::uint32_t Style = 0;
    std::uint32_t ExtendedStyle = 0;
};

struct Dialog {
    std::u16string Title;
    std::uint32_t Style = 0;
    std::uint32_t ExtendedStyle = 0;
    int X = 0, Y = 0;           // dialog units
    int Width = 0, Height = 0;  // dialog units, client area
    std::u16string FontName;    // empty: the system's font
    int FontPoints = 0;
    int FontWeight = 0;  // 0: not said
    bool FontItalic = false;
    std::vector<Control> Controls;  // in template order, which is the tab order
};

struct MenuItem {
    std::u16string Text;
    std::uint16_t Id = 0;     // 0 for separators and popups
    std::uint16_t Flags = 0;  // MenuFlag bits
    bool Separator = false;
    bool Popup = false;
    std::vector<MenuItem> Items;  // of a popup
};

// Pixels are 0xAARRGGBB, not premultiplied, row by row from the top.
struct Image {
    int Width = 0, Height = 0;
    std::vector<std::uint32_t> Pixels;
};

// The raw data of a resource.
std::optional<Bytes> Find(Bytes file, Type type, std::uint16_t number);

// A text of the string table. An entry without text is not found.
std::optional<std::u16string> FindString(Bytes file, std::uint16_t number);

// A dialog template of either form.
std::optional<Dialog> FindDialog(Bytes file, std::uint16_t number);

// The top level of a menu.
std::optional<std::vector<MenuItem>> FindMenu(Bytes file, std::uint16_t number);

// All images of an icon group that can be decoded (uncompressed, 1 to 32 bits a pixel, with mask or alpha),
// in the file's order. Not found when none can.
std::optional<std::vector<Image>> FindIcon(Bytes file, std::uint16_t number);

// An uncompressed bitmap of 1, 4, 8, 24 or 32 bits a pixel; every pixel comes out opaque.
std::optional<Image> FindBitmap(Bytes file, std::uint16_t number);

}  // namespace resource
