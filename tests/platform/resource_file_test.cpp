#include "platform/linux/resource_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "resources/embedded.h"
#include "resources/resource.h"
#include "tests/platform/resource_builder.h"

namespace {

using resource::Bytes;
using resource::Control;
using resource::Dialog;
using resource::Image;
using resource::MenuItem;
using resource::Type;
using testing::ElementsAre;

constexpr std::uint16_t kDialogs[] = {IDD_PAGE_1D, IDD_TEXT_EDITOR, IDD_NUMBER_EDITOR,    IDD_PAIR_EDITOR,
                                      IDD_ABOUT,   IDD_CAUTION,     IDD_DOWNLOAD_PROGRESS};

std::u16string Text(unsigned number) {
    return resource::FindString(CompiledResources(), static_cast<std::uint16_t>(number)).value_or(u"(none)");
}

Dialog TheDialog(std::uint16_t number) {
    std::optional<Dialog> dialog = resource::FindDialog(CompiledResources(), number);
    EXPECT_TRUE(dialog) << number;
    return dialog.value_or(Dialog());
}

std::vector<std::uint32_t> ControlIds(const Dialog& dialog) {
    std::vector<std::uint32_t> ids;
    for (const Control& control : dialog.Controls) {
        ids.push_back(control.Id);
    }
    return ids;
}

// Everything that a file may hold, asked for in one go; what comes of it must be the same as before or
// nothing.
int AskEverything(Bytes file) {
    int found = 0;
    for (std::uint16_t number : kDialogs) {
        found += resource::FindDialog(file, number).has_value();
    }
    found += resource::FindMenu(file, IDM_TRAY).has_value();
    found += resource::FindIcon(file, IDI_TRAY).has_value();
    found += resource::FindIcon(file, IDI_ABOUT).has_value();
    found += resource::FindBitmap(file, IDB_STATE_IMAGES).has_value();
    for (unsigned number : {101U, 119U, 415U, 790U, 24109U, 25603U}) {
        found += resource::FindString(file, static_cast<std::uint16_t>(number)).has_value();
    }
    return found;
}

// A copy of its own, so that a sanitizer sees a read beyond the end.
std::vector<std::byte> Head(Bytes bytes, std::size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(CompiledResources, TextsStandUnderTheNumbersThatAreComputed) {
    EXPECT_EQ(Text(IDS_1D_SYMBOLOGY_FIRST + 18), u"EAN-128");
    EXPECT_EQ(Text(IDS_GROUP_FIRST + 13), u"Macro PDF");
    EXPECT_EQ(Text(IDS_1D_OPTION_BASE + 17), u"Verify Checksum");
    EXPECT_EQ(Text(IDS_BASE_OFF_ON + '1'), u"ON");
    EXPECT_EQ(Text(IDS_BASE_DISABLED_ENABLED + '0'), u"Disabled");
    EXPECT_EQ(Text(IDS_BASE_NO_YES + '1'), u"YES");
    EXPECT_EQ(Text(IDS_CHOICE_SOUND + 0), u"Mute");
    EXPECT_EQ(Text(IDS_CHOICE_SOUND + 9), u"Sound 9");
    EXPECT_EQ(Text(IDS_CHOICE_MSI_VERIFY_CHECKSUM + 2), u"Modulo 11 && 10");
    EXPECT_EQ(Text(IDS_CHOICE_SECURITY_LEVEL + 3), u"Security Level 3");
    EXPECT_EQ(Text(IDS_DECODE_SUPPLEMENTARY_DIGITS_ADDON25), u"Decode Supplementary Digits (Addon 2 & 5)");
}

TEST(CompiledResources, NumbersWithoutTextAreNotFound) {
    // The gaps of the two length values, both ends of a list, a block that does not exist, the first and the
    // last.
    for (unsigned number : {0U, 207U, 208U, 403U, 727U, 24003U, 24099U, 24110U, 60000U, 65535U}) {
        EXPECT_FALSE(resource::FindString(CompiledResources(), static_cast<std::uint16_t>(number))) << number;
    }
    EXPECT_FALSE(resource::FindDialog(CompiledResources(), 16));
    EXPECT_FALSE(resource::Find(CompiledResources(), Type::Dialog, 0));
}

TEST(CompiledResources, EveryDialogHasItsControlsInTabOrderAndInsideItsFrame) {
    struct Expected {
        std::uint16_t Number;
        int Width, Height, Points;
        std::vector<std::uint32_t> Ids;
    };
    const Expected table[] = {
        {11, 136, 152, 8, {201, 701}},
        {12, 136, 152, 8, {201, 702}},
        {13, 132, 36, 8, {601, 201, 1, 2}},
        {14, 132, 36, 8, {601, 201, 911, 1, 2}},
        {15, 132, 36, 8, {601, 201, 911, 602, 202, 912, 1, 2}},
        {19, 136, 152, 8, {201, 703}},
        {20, 104, 56, 8, {0xFFFF, 601, 1}},
        {30, 128, 120, 9, {201, 1, 2}},
        {31, 100, 28, 7, {751}},
    };
    for (const Expected& expected : table) {
        SCOPED_TRACE(expected.Number);
        Dialog dialog = TheDialog(expected.Number);
        EXPECT_EQ(dialog.Width, expected.Width);
        EXPECT_EQ(dialog.Height, expected.Height);
        EXPECT_EQ(dialog.FontName, u"MS Shell Dlg");
        EXPECT_EQ(dialog.FontPoints, expected.Points);
        EXPECT_EQ(ControlIds(dialog), expected.Ids);
        for (std::size_t i = 0; i < dialog.Controls.size(); ++i) {
            const Control& a = dialog.Controls[i];
            EXPECT_TRUE(a.X >= 0 && a.Y >= 0 && a.X + a.Width <= dialog.Width &&
                        a.Y + a.Height <= dialog.Height)
                << a.Id;
            for (std::size_t k = 0; k < i; ++k) {
                const Control& b = dialog.Controls[k];
                bool apart = a.X >= b.X + b.Width || b.X >= a.X + a.Width || a.Y >= b.Y + b.Height ||
                             b.Y >= a.Y + a.Height;
                // Up-down controls sit in the edit control before them, the page's edit control takes no
                // room.
                EXPECT_TRUE(apart || a.ClassName == u"MSCTLS_UPDOWN32" || b.Width == 0)
                    << a.Id << ' ' << b.Id;
            }
        }
    }
}

TEST(CompiledResources, ControlsSayWhatTheyAre) {
    Dialog number = TheDialog(IDD_NUMBER_EDITOR);
    EXPECT_EQ(number.Controls[1].Atom, resource::EditClass);
    EXPECT_TRUE(number.Controls[1].Style & 0x2000) << "digits only";
    EXPECT_EQ(number.Controls[2].ClassName, u"MSCTLS_UPDOWN32");
    EXPECT_EQ(number.Controls[2].Style & 0xFFFF, 0x36U)
        << "buddy before it, its number, right side, arrow keys";
    EXPECT_EQ(number.Controls[3].Text, u"OK");
    EXPECT_TRUE(number.Controls[3].Style & 1) << "default button";

    Dialog page = TheDialog(IDD_PAGE_GENERAL);
    EXPECT_TRUE(page.Style & 0x40000000) << "child";
    EXPECT_FALSE(page.Controls[0].Style & 0x10010000) << "neither shown nor a tab stop";
    EXPECT_EQ(page.Controls[1].ClassName, u"SYSTREEVIEW32");
    EXPECT_EQ(page.Controls[1].Style & 0xFFFF, 0x27U) << "buttons, lines, lines at the root, selection shown";

    EXPECT_EQ(TheDialog(IDD_ABOUT).Controls[0].TextResource, IDI_ABOUT);
    Dialog caution = TheDialog(IDD_CAUTION);
    EXPECT_EQ(caution.Title, u"Caution");
    EXPECT_EQ(caution.Controls[1].Text, u"Next");
    EXPECT_EQ(caution.Controls[0].Style & 0x00800844, 0x00800844U)
        << "border, read-only, many lines, scrolling";
}

TEST(CompiledResources, TrayMenuKeepsItsOrder) {
    std::optional<std::vector<MenuItem>> menu = resource::FindMenu(CompiledResources(), IDM_TRAY);
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->size(), 1U);
    ASSERT_TRUE(menu->front().Popup);
    std::vector<std::u16string> texts;
    std::vector<unsigned> ids;
    for (const MenuItem& item : menu->front().Items) {
        texts.push_back(item.Separator ? u"-" : item.Text);
        ids.push_back(item.Id);
    }
    EXPECT_THAT(texts,
                ElementsAre(u"BC Reader", u"RFID Reader", u"-", u"Settings...", u"-", u"About", u"Exit"));
    EXPECT_THAT(ids, ElementsAre(152, 153, 0, 151, 0, 198, 199));
}

TEST(CompiledResources, IconsComeInFourSizesWithRoundTransparentCorners) {
    for (std::uint16_t number : {IDI_TRAY, IDI_ABOUT}) {
        std::optional<std::vector<Image>> images = resource::FindIcon(CompiledResources(), number);
        ASSERT_TRUE(images);
        std::vector<int> sizes;
        for (const Image& image : *images) {
            sizes.push_back(image.Width);
            EXPECT_EQ(image.Height, image.Width);
            EXPECT_LT(image.Pixels.front() >> 24, 0x80U);
            std::size_t middle = image.Pixels.size() / 2 + static_cast<std::size_t>(image.Width) / 2;
            EXPECT_EQ(image.Pixels[middle], 0xFFFF3B30U) << "the beam, at size " << image.Width;
        }
        EXPECT_THAT(sizes, testing::UnorderedElementsAre(16, 24, 32, 48));
    }
}

TEST(CompiledResources, StateImagesAreSevenDifferentOnesOnGreen) {
    std::optional<Image> strip = resource::FindBitmap(CompiledResources(), IDB_STATE_IMAGES);
    ASSERT_TRUE(strip);
    ASSERT_EQ(strip->Width, 105);
    ASSERT_EQ(strip->Height, 15);
    std::set<std::vector<std::uint32_t>> different;
    for (std::size_t index = 0; index < 7; ++index) {
        std::vector<std::uint32_t> one;
        for (std::size_t y = 0; y < 15; ++y) {
            auto row = strip->Pixels.begin() + static_cast<std::ptrdiff_t>(y * 105 + index * 15);
            one.insert(one.end(), row, row + 15);
        }
        EXPECT_EQ(one.back(), 0xFF00FF00U) << "transparent corner of " << index;
        EXPECT_GT(std::count_if(one.begin(), one.end(), [](auto p) { return p != 0xFF00FF00U; }), 40);
        different.insert(one);
    }
    EXPECT_EQ(different.size(), 7U);
}

TEST(CompiledResources, SoundsAreShortWaveFiles) {
    std::set<std::string> contents;
    for (const EmbeddedSound& sound : EmbeddedSounds()) {
        SCOPED_TRACE(sound.FileName);
        ASSERT_GT(sound.Bytes.size(), 44U);
        std::string text(reinterpret_cast<const char*>(sound.Bytes.data()), sound.Bytes.size());
        EXPECT_EQ(text.substr(0, 4) + text.substr(8, 8), "RIFFWAVEfmt ");
        std::uint32_t rate = 0;
        std::uint32_t length = 0;
        for (std::size_t i = 4; i > 0; --i) {
            rate = rate << 8 | static_cast<unsigned char>(text[27 + i]);
            length = length << 8 | static_cast<unsigned char>(text[3 + i]);
        }
        EXPECT_EQ(length + 8, sound.Bytes.size());
        EXPECT_LT((sound.Bytes.size() - 44) / 2, rate) << "a second or longer";
        EXPECT_TRUE(sound.FileName.ends_with(".wav"));
        contents.insert(text);
    }
    EXPECT_EQ(contents.size(), 9U);
}

TEST(DamagedResources, TruncatedFileNeverGivesMoreAndIsNeverOverrun) {
    Bytes whole = CompiledResources();
    int all = AskEverything(whole);
    int before = 0;
    for (std::size_t length = 0; length < whole.size(); length += 7) {
        int found = AskEverything(Head(whole, length));
        EXPECT_GE(found, before) << length;
        before = found;
    }
    EXPECT_LT(before, all) << "the last entry was cut";
}

TEST(DamagedResources, EntryCutShortAtAnyByteIsNotFound) {
    struct Case {
        Type What;
        std::uint16_t Number;
    };
    std::vector<Case> cases = {{Type::Menu, IDM_TRAY}, {Type::Bitmap, IDB_STATE_IMAGES}};
    for (std::uint16_t number : kDialogs) {
        cases.push_back({Type::Dialog, number});
    }
    for (const Case& one : cases) {
        std::optional<Bytes> data = resource::Find(CompiledResources(), one.What, one.Number);
        ASSERT_TRUE(data);
        std::size_t step = one.What == Type::Bitmap ? 31 : 1;
        for (std::size_t length = 0; length < data->size(); length += step) {
            // Once the entry is honest about its length, once the file ends in the middle of it.
            std::vector<std::byte> part = Head(*data, length);
            auto honest = ResourceBytes().Append(part).File(one.What, one.Number);
            auto lying =
                ResourceBytes().Entry(one.What, one.Number, part, static_cast<std::uint32_t>(data->size()));
            ASSERT_EQ(AskEverything(honest), 0) << one.Number << " cut at " << length;
            ASSERT_EQ(AskEverything(Head(lying.Data(), 32 + length)), 0)
                << one.Number << " ends at " << length;
        }
    }
}

TEST(DamagedResources, TextsBeforeTheCutStay) {
    std::optional<Bytes> block = resource::Find(CompiledResources(), Type::StringBlock, 24100 / 16 + 1);
    ASSERT_TRUE(block);
    for (std::size_t length = 0; length < block->size(); ++length) {
        auto file = ResourceBytes().Append(Head(*block, length)).File(Type::StringBlock, 24100 / 16 + 1);
        for (unsigned number = 24096; number < 24112; ++number) {
            auto text = resource::FindString(file, static_cast<std::uint16_t>(number));
            ASSERT_TRUE(!text || *text == Text(number)) << number << " cut at " << length;
        }
    }
}

TEST(DamagedResources, AnyByteMayBeAnything) {
    std::vector<Bytes> entries;
    for (std::uint16_t number : kDialogs) {
        entries.push_back(*resource::Find(CompiledResources(), Type::Dialog, number));
    }
    entries.push_back(*resource::Find(CompiledResources(), Type::Menu, IDM_TRAY));
    entries.push_back(*resource::Find(CompiledResources(), Type::GroupIcon, IDI_TRAY));
    entries.push_back(resource::Find(CompiledResources(), Type::Bitmap, IDB_STATE_IMAGES)->first(60));
    const Type types[] = {Type::Dialog, Type::Menu, Type::GroupIcon, Type::Bitmap, Type::Icon};
    for (Bytes entry : entries) {
        for (Type type : types) {
            // Under a wrong type as well: a group's data read as a dialog, a dialog as a bitmap.
            std::uint16_t number = type == Type::Menu     ? IDM_TRAY
                                   : type == Type::Dialog ? IDD_ABOUT
                                   : type == Type::Bitmap ? IDB_STATE_IMAGES
                                                          : IDI_TRAY;
            std::vector<std::byte> file = ResourceBytes().Append(entry).File(type, number);
            for (std::size_t at = 0; at < file.size(); ++at) {
                std::byte good = file[at];
                for (unsigned bad : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU}) {
                    file[at] = static_cast<std::byte>(bad);
                    EXPECT_LE(AskEverything(file), 1);
                }
                file[at] = good;
            }
        }
    }
}

TEST(DamagedResources, LyingHeadersEndTheSearch) {
    std::vector<std::byte> data(4);
    for (std::uint32_t headSize : {0U, 7U, 8U, 12U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        auto file = ResourceBytes().U32(4).U32(headSize).U16(0xFFFF).U16(5).U16(0xFFFF).U16(11).Append(data);
        EXPECT_FALSE(resource::Find(file.Data(), Type::Dialog, 11)) << headSize;
    }
    for (std::uint32_t dataSize : {5U, 0xFFFFFFF0U, 0xFFFFFFFFU}) {
        auto file = ResourceBytes().Entry(Type::Dialog, 11, data, dataSize);
        EXPECT_FALSE(resource::Find(file.Data(), Type::Dialog, 11)) << dataSize;
    }
}

TEST(ResourceForms, NamedEntriesAreSteppedOverAndTheFirstOfTwoCounts) {
    std::vector<std::byte> first(5, std::byte{1});
    std::vector<std::byte> second(3, std::byte{2});
    ResourceBytes file;
    ResourceBytes named;
    named.Text(u"DIALOGS").Text(u"A NAME").Align();
    file.U32(2).U32(static_cast<std::uint32_t>(8 + named.Data().size())).Append(named.Data()).U16(0).Align();
    file.Entry(Type::Dialog, 3, first).Entry(Type::Dialog, 3, second);
    auto data = resource::Find(file.Data(), Type::Dialog, 3);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size(), 5U) << "three bytes of padding do not belong to it";
}

TEST(ResourceForms, ExtendedDialog) {
    ResourceBytes data;
    data.U16(1).U16(0xFFFF).U32(77).U32(0x8).U32(0x48).U16(2).U16(0xFFFE).U16(3).U16(50).U16(60);
    data.U16(0xFFFF).U16(9).Text(u"Class").Text(u"Title").U16(10).U16(700).U8(1).U8(0).Text(u"Font").Align();
    data.U32(0).U32(0x200).U32(0x50000000).U16(1).U16(2).U16(3).U16(4).U32(0x12345).Text(u"Own").Text(u"a");
    data.U16(3).U8(1).U8(2).U8(3).Align();
    data.U32(0).U32(0).U32(0).U16(5).U16(6).U16(7).U16(8).U32(0xFFFFFFFF).U16(0xFFFF).U16(0x82);
    data.U16(0xFFFF).U16(999).U16(0);
    auto dialog = resource::FindDialog(data.File(Type::Dialog, 1), 1);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->ExtendedStyle, 0x8U);
    EXPECT_EQ(dialog->X, -2);
    EXPECT_EQ(dialog->Title, u"Title");
    EXPECT_EQ(dialog->FontName, u"Font");
    EXPECT_EQ(dialog->FontWeight, 700);
    EXPECT_TRUE(dialog->FontItalic);
    EXPECT_THAT(ControlIds(*dialog), ElementsAre(0x12345, 0xFFFF));
    EXPECT_EQ(dialog->Controls[0].ClassName, u"Own");
    EXPECT_EQ(dialog->Controls[1].Atom, resource::StaticClass);
    EXPECT_EQ(dialog->Controls[1].TextResource, 999);
    EXPECT_EQ(dialog->Controls[1].Height, 8);
}

TEST(ResourceForms, MenusNestButNotWithoutEnd) {
    ResourceBytes nested;
    nested.U16(0).U16(0);
    for (int depth = 0; depth < 4; ++depth) {
        nested.U16(0x90).Text(u"p");
    }
    nested.U16(0x89).U16(7).Text(u"leaf");
    auto menu = resource::FindMenu(nested.File(Type::Menu, 1), 1);
    ASSERT_TRUE(menu);
    const MenuItem& leaf = menu->front().Items.front().Items.front().Items.front().Items.front();
    EXPECT_EQ(leaf.Id, 7);
    EXPECT_EQ(leaf.Flags, resource::MenuChecked | resource::MenuGrayed);

    ResourceBytes endless;
    endless.U16(0).U16(0);
    for (int depth = 0; depth < 100000; ++depth) {
        endless.U16(0x90).U16(0);
    }
    EXPECT_FALSE(resource::FindMenu(endless.File(Type::Menu, 1), 1));
}

ResourceBytes BitmapHead(int width, int height, unsigned bits, unsigned colours) {
    ResourceBytes head;
    head.U32(40)
        .U32(static_cast<std::uint32_t>(width))
        .U32(static_cast<std::uint32_t>(height))
        .U16(1)
        .U16(bits);
    return head.U32(0).U32(0).U32(0).U32(0).U32(colours).U32(0);
}

TEST(ResourceForms, BitmapsOfEveryDepthAndDirection) {
    auto decode = [](const ResourceBytes& data) {
        auto image = resource::FindBitmap(data.File(Type::Bitmap, 1), 1);
        return image ? image->Pixels : std::vector<std::uint32_t>();
    };
    constexpr std::uint32_t kRed = 0xFFFF0000, kBlue = 0xFF0000FF, kBlack = 0xFF000000;
    // Two rows of three pixels: the last row is stored first.
    ResourceBytes four = BitmapHead(3, 2, 4, 2);
    four.U32(0xFF0000).U32(0x0000FF).U8(0x01).U8(0x00).U16(0).U8(0x11).U8(0x10).U16(0);
    EXPECT_THAT(decode(four), ElementsAre(kBlue, kBlue, kBlue, kRed, kBlue, kRed));
    ResourceBytes eight = BitmapHead(3, -2, 8, 2);
    eight.U32(0xFF0000).U32(0x0000FF).U8(0).U8(1).U8(200).U8(0).U8(1).U8(1).U8(1).U8(0);
    EXPECT_THAT(decode(eight), ElementsAre(kRed, kBlue, kBlack, kBlue, kBlue, kBlue))
        << "no such colour: black";
    ResourceBytes one = BitmapHead(9, 1, 1, 0);
    one.U32(0).U32(0xFF0000).U8(0x01).U8(0x80).U16(0);
    EXPECT_THAT(decode(one), ElementsAre(kBlack, kBlack, kBlack, kBlack, kBlack, kBlack, kBlack, kRed, kRed));
    ResourceBytes deep = BitmapHead(1, 2, 32, 0);
    deep.U32(0x000000FF).U32(0x80FF0000);
    EXPECT_THAT(decode(deep), ElementsAre(kRed, kBlue));
}

TEST(ResourceForms, BitmapsThatCannotBeAreNotFound) {
    struct Case {
        int Width, Height;
        unsigned Bits, Colours;
    };
    const Case cases[] = {{0, 1, 8, 0},         {-1, 1, 8, 0},          {1, 0, 8, 0},
                          {1, INT32_MIN, 8, 0}, {INT32_MAX, 1, 32, 0},  {INT32_MAX, INT32_MAX, 32, 0},
                          {5000, 1, 8, 0},      {1, 5000, 8, 0},        {1, 1, 16, 0},
                          {1, 1, 8, 257},       {1, 1, 24, 0xFFFFFFFF}, {1, 1, 4, 17}};
    for (const Case& one : cases) {
        ResourceBytes data = BitmapHead(one.Width, one.Height, one.Bits, one.Colours);
        data.Append(std::vector<std::byte>(8192));
        EXPECT_FALSE(resource::FindBitmap(data.File(Type::Bitmap, 1), 1))
            << one.Width << " by " << one.Height << ", " << one.Bits;
    }
}

TEST(ResourceForms, IconWithoutAlphaTakesItsMaskAndBadImagesAreLeftOut) {
    ResourceBytes masked = BitmapHead(2, 2, 32, 0);
    masked.U32(0x00112233).U32(0x00445566).U8(0x40).U8(0).U16(0);
    ResourceBytes group;
    group.U16(0).U16(1).U16(3);
    for (unsigned number : {1U, 2U, 3U}) {
        group.U32(0).U32(0).U32(0).U16(number);
    }
    ResourceBytes file;
    file.Entry(Type::GroupIcon, 5, group.Data()).Entry(Type::Icon, 1, masked.Data());
    file.Entry(Type::Icon, 2, std::vector<std::byte>(64));
    auto icon = resource::FindIcon(file.Data(), 5);
    ASSERT_TRUE(icon);
    ASSERT_EQ(icon->size(), 1U) << "one image is no bitmap, one is missing";
    EXPECT_THAT(icon->front().Pixels, ElementsAre(0xFF112233U, 0U));
}

}  // namespace
