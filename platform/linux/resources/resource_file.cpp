#include "platform/linux/resources/resource_file.h"

#include <algorithm>

namespace resource {
namespace {

constexpr std::uint32_t StyleHasFont = 0x40;  // DS_SETFONT
constexpr std::uint16_t FirstClass = 0x80;    // of the classes that templates name by number
constexpr const char16_t* Classes[] = {u"Button", u"Edit", u"Static", u"ListBox", u"ScrollBar", u"ComboBox"};
constexpr std::uint16_t MenuPopup = 0x10, MenuLast = 0x80;

// A name in the file is a number after 0xFFFF, or a text. In a dialog a single 0 stands for no menu and no
// class of its own, which reads as an empty text.
struct Name {
    std::uint16_t Number = 0;
    std::u16string Text;
};

Name ReadName(Cursor& cursor) {
    Cursor ahead = cursor;
    if (ahead.U16() != 0xFFFF) {
        return {0, cursor.Text()};
    }
    const Name name{ahead.U16(), {}};
    cursor = ahead;
    return name;
}

Control ReadControl(Cursor& cursor) {
    Control control;
    cursor.AlignTo4();
    control.Style = cursor.U32();
    cursor.U32();  // extended style
    control.X = cursor.S16();
    control.Y = cursor.S16();
    control.Width = cursor.S16();
    control.Height = cursor.S16();
    control.Id = cursor.U16();
    const Name kind = ReadName(cursor);
    const auto number = static_cast<std::uint16_t>(kind.Number - FirstClass);
    control.ClassName = number < std::size(Classes) ? Classes[number] : kind.Text;
    const Name text = ReadName(cursor);
    control.TextResource = text.Number;
    control.Text = text.Text;
    cursor.U16();  // size of creation data, which nobody here has
    return control;
}

// The items of one level up to the one that is marked as its last.
std::vector<MenuItem> ReadMenuLevel(Cursor& cursor) {
    std::vector<MenuItem> items;
    for (bool last = false; !last && cursor.Left() > 0;) {
        const std::uint16_t flags = cursor.U16();
        last = (flags & MenuLast) != 0;
        MenuItem& item = items.emplace_back();
        item.Popup = (flags & MenuPopup) != 0;
        item.Id = item.Popup ? 0 : cursor.U16();
        item.Text = cursor.Text();
        if (item.Popup) {
            item.Items = ReadMenuLevel(cursor);
        }
    }
    return items;
}

}  // namespace

Bytes Cursor::Take(std::size_t count) {
    const Bytes taken = data_.subspan(at_, std::min(count, Left()));
    at_ += taken.size();
    return taken;
}

std::u16string Cursor::Text() {
    std::u16string text;
    for (char16_t character = U16(); character != 0; character = U16()) {
        text += character;
    }
    return text;
}

std::uint32_t Cursor::Number(std::size_t size) {
    std::uint32_t value = 0;
    const Bytes bytes = Take(size);
    for (std::size_t i = bytes.size(); i > 0; --i) {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[i - 1]);
    }
    return value;
}

std::optional<Bytes> Find(Bytes file, Type type, std::uint16_t number) {
    Cursor cursor(file);
    while (cursor.Left() > 0) {
        const std::uint32_t dataSize = cursor.U32();
        const std::uint32_t headSize = cursor.U32();
        Cursor head(cursor.Take(headSize - 8));
        const Bytes data = cursor.Take(dataSize);
        const Name typeName = ReadName(head);
        const Name resourceName = ReadName(head);
        // A name that is a text has no number, and no resource has the number 0.
        if (number != 0 && typeName.Number == static_cast<std::uint16_t>(type) &&
            resourceName.Number == number) {
            return data;
        }
        cursor.AlignTo4();
    }
    return std::nullopt;
}

std::u16string FindString(Bytes file, std::uint16_t number) {
    // Texts lie in blocks of sixteen; block n + 1 begins with text 16 * n.
    Cursor cursor(
        Find(file, Type::StringBlock, static_cast<std::uint16_t>(number / 16 + 1)).value_or(Bytes()));
    for (int before = number % 16; before > 0; --before) {
        cursor.Take(2 * std::size_t{cursor.U16()});
    }
    std::u16string text(cursor.U16(), u'\0');
    std::generate(text.begin(), text.end(), [&] { return cursor.U16(); });
    return text;
}

std::optional<Dialog> FindDialog(Bytes file, std::uint16_t number) {
    const std::optional<Bytes> data = Find(file, Type::Dialog, number);
    if (!data || Cursor(*data).U32() == 0xFFFF0001) {  // the longer form (DIALOGEX)
        return std::nullopt;
    }
    Cursor cursor(*data);
    Dialog dialog;
    dialog.Style = cursor.U32();
    cursor.U32();  // extended style
    const int controls = cursor.U16();
    dialog.X = cursor.S16();
    dialog.Y = cursor.S16();
    dialog.Width = cursor.S16();
    dialog.Height = cursor.S16();
    ReadName(cursor);  // menu
    ReadName(cursor);  // window class
    dialog.Title = cursor.Text();
    if ((dialog.Style & StyleHasFont) != 0) {
        dialog.FontPoints = cursor.U16();
        dialog.FontName = cursor.Text();
    }
    for (int i = 0; i < controls; ++i) {
        dialog.Controls.push_back(ReadControl(cursor));
    }
    return dialog;
}

std::vector<MenuItem> FindMenu(Bytes file, std::uint16_t number) {
    Cursor cursor(Find(file, Type::Menu, number).value_or(Bytes()));
    cursor.U32();  // version, size of a longer head
    return ReadMenuLevel(cursor);
}

}  // namespace resource
