#include "platform/linux/resources/resource_file.h"

#include "platform/linux/resources/resource_cursor.h"

namespace resource {
namespace {

constexpr int kMaximumMenuDepth = 8;

constexpr std::uint32_t kStyleHasFont = 0x40;  // DS_SETFONT, also part of DS_SHELLFONT

// A name in the file is a number after 0xFFFF, or a text.
struct Name {
    std::uint16_t Number = 0;
    std::u16string Text;
};

Name ReadName(Cursor& cursor) {
    Name name;
    Cursor ahead = cursor;
    if (ahead.U16() == 0xFFFF) {
        name.Number = ahead.U16();
        cursor = ahead;
    } else {
        name.Text = cursor.Text();
    }
    return name;
}

// In a dialog a single 0 stands for no menu and no class of its own, which reads as an empty text.
struct DialogHead {
    bool Extended = false;
    std::uint16_t Count = 0;
};

DialogHead ReadDialogHead(Cursor& cursor, Dialog& dialog) {
    DialogHead head;
    Cursor ahead = cursor;
    std::uint16_t version = ahead.U16();
    head.Extended = ahead.U16() == 0xFFFF && version == 1;
    if (head.Extended) {
        ahead.U32();  // help number
        cursor = ahead;
        dialog.ExtendedStyle = cursor.U32();
        dialog.Style = cursor.U32();
    } else {
        dialog.Style = cursor.U32();
        dialog.ExtendedStyle = cursor.U32();
    }
    head.Count = cursor.U16();
    dialog.X = cursor.S16();
    dialog.Y = cursor.S16();
    dialog.Width = cursor.S16();
    dialog.Height = cursor.S16();
    ReadName(cursor);  // menu
    ReadName(cursor);  // window class
    dialog.Title = cursor.Text();
    if ((dialog.Style & kStyleHasFont) != 0) {
        dialog.FontPoints = cursor.U16();
        if (head.Extended) {
            dialog.FontWeight = cursor.U16();
            dialog.FontItalic = cursor.U8() != 0;
            cursor.U8();  // character set
        }
        dialog.FontName = cursor.Text();
    }
    return head;
}

Control ReadControl(Cursor& cursor, bool extended) {
    Control control;
    cursor.AlignTo(4);
    if (extended) {
        cursor.U32();  // help number
        control.ExtendedStyle = cursor.U32();
        control.Style = cursor.U32();
    } else {
        control.Style = cursor.U32();
        control.ExtendedStyle = cursor.U32();
    }
    control.X = cursor.S16();
    control.Y = cursor.S16();
    control.Width = cursor.S16();
    control.Height = cursor.S16();
    // The longer form has room for 32 bits, but -1 must mean the same in both.
    control.Id = extended ? cursor.U32() : cursor.U16();
    if (control.Id == 0xFFFFFFFF) {
        control.Id = 0xFFFF;
    }
    Name kind = ReadName(cursor);
    control.Atom = kind.Number;
    control.ClassName = std::move(kind.Text);
    Name text = ReadName(cursor);
    control.TextResource = text.Number;
    control.Text = std::move(text.Text);
    // The shorter form counts the size word into the creation data when there are any.
    std::uint16_t extra = cursor.U16();
    if (!extended && extra >= 2) {
        extra -= 2;
    }
    cursor.Skip(extra);
    return control;
}

constexpr std::uint16_t kMenuPopup = 0x10;
constexpr std::uint16_t kMenuLast = 0x80;

// The items of one level up to the one that is marked as its last.
bool ReadMenuLevel(Cursor& cursor, std::vector<MenuItem>& items, int depth) {
    if (depth > kMaximumMenuDepth) {
        return false;
    }
    bool last = false;
    while (!last) {
        MenuItem item;
        std::uint16_t flags = cursor.U16();
        last = (flags & kMenuLast) != 0;
        item.Popup = (flags & kMenuPopup) != 0;
        item.Id = item.Popup ? 0 : cursor.U16();
        item.Text = cursor.Text();
        item.Flags = flags & (MenuGrayed | MenuDisabled | MenuChecked);
        item.Separator = !item.Popup && item.Id == 0 && item.Text.empty();
        if (!cursor.Ok() || (item.Popup && !ReadMenuLevel(cursor, item.Items, depth + 1))) {
            return false;
        }
        items.push_back(std::move(item));
    }
    return true;
}

}  // namespace

std::optional<Bytes> Find(Bytes file, Type type, std::uint16_t number) {
    Cursor cursor(file);
    while (cursor.Left() > 0) {
        std::size_t start = cursor.At();
        std::uint32_t dataSize = cursor.U32();
        std::uint32_t headSize = cursor.U32();
        if (headSize < 8) {
            return std::nullopt;
        }
        Cursor head(cursor.Take(headSize - 8));
        Bytes data = cursor.Take(dataSize);
        Name typeName = ReadName(head);
        Name resourceName = ReadName(head);
        if (!cursor.Ok() || !head.Ok() || cursor.At() == start) {
            return std::nullopt;
        }
        // A name that is a text has no number, and no resource has the number 0.
        if (number != 0 && typeName.Number == static_cast<std::uint16_t>(type) &&
            resourceName.Number == number) {
            return data;
        }
        cursor.AlignTo(4);
    }
    return std::nullopt;
}

std::optional<std::u16string> FindString(Bytes file, std::uint16_t number) {
    // Texts lie in blocks of sixteen; block n + 1 begins with text 16 * n.
    std::optional<Bytes> block = Find(file, Type::StringBlock, static_cast<std::uint16_t>(number / 16 + 1));
    if (!block) {
        return std::nullopt;
    }
    Cursor cursor(*block);
    for (int before = number % 16; before > 0; --before) {
        cursor.Skip(2 * std::size_t{cursor.U16()});
    }
    std::u16string text(cursor.U16(), u'\0');
    if (text.size() * 2 > cursor.Left()) {
        return std::nullopt;
    }
    for (char16_t& character : text) {
        character = cursor.U16();
    }
    if (!cursor.Ok() || text.empty()) {
        return std::nullopt;
    }
    return text;
}

std::optional<Dialog> FindDialog(Bytes file, std::uint16_t number) {
    std::optional<Bytes> data = Find(file, Type::Dialog, number);
    if (!data) {
        return std::nullopt;
    }
    Cursor cursor(*data);
    Dialog dialog;
    DialogHead head = ReadDialogHead(cursor, dialog);
    for (int left = head.Count; left > 0 && cursor.Ok(); --left) {
        dialog.Controls.push_back(ReadControl(cursor, head.Extended));
    }
    if (!cursor.Ok()) {
        return std::nullopt;
    }
    return dialog;
}

std::optional<std::vector<MenuItem>> FindMenu(Bytes file, std::uint16_t number) {
    std::optional<Bytes> data = Find(file, Type::Menu, number);
    if (!data) {
        return std::nullopt;
    }
    Cursor cursor(*data);
    std::uint16_t version = cursor.U16();
    cursor.Skip(cursor.U16());
    std::vector<MenuItem> items;
    if (version != 0 || !ReadMenuLevel(cursor, items, 0)) {
        return std::nullopt;
    }
    return items;
}

}  // namespace resource
