#include "platform/linux/resources/resource_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/linux/resources/embedded.h"
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

TEST(CompiledResources, NumbersWithoutTextAreNotFound) {
    // The gaps of the two length values, both ends of a list, a block that does not exist, the first and the
    // last.
    for (unsigned number : {0U, 207U, 208U, 403U, 727U, 24003U, 24099U, 24110U, 60000U, 65535U}) {
        EXPECT_FALSE(resource::FindString(CompiledResources(), static_cast<std::uint16_t>(number))) << number;
    }
    EXPECT_FALSE(resource::FindDialog(CompiledResources(), 16));
    EXPECT_FALSE(resource::Find(CompiledResources(), Type::Dialog, 0));
}

TEST(CompiledResources, DialogsHaveTheirControlsInTabOrderAndInsideTheirFrame) {
    const struct {
        std::uint16_t Number;
        int Width, Height, Points;
        std::vector<std::uint32_t> Ids;
    } table[] = {
        {12, 136, 152, 8, {201, 702}},
        {15, 132, 36, 8, {601, 201, 911, 602, 202, 912, 1, 2}},
        {20, 104, 56, 8, {0xFFFF, 601, 1}},
        {30, 128, 120, 9, {201, 1, 2}},
        {31, 100, 28, 7, {751}},
    };
    for (const auto& expected : table) {
        SCOPED_TRACE(expected.Number);
        Dialog dialog = TheDialog(expected.Number);
        EXPECT_EQ(dialog.Width, expected.Width);
        EXPECT_EQ(dialog.Height, expected.Height);
        EXPECT_EQ(dialog.FontName, u"MS Shell Dlg");
        EXPECT_EQ(dialog.FontPoints, expected.Points);
        EXPECT_EQ(ControlIds(dialog), expected.Ids);
        for (const Control& a : dialog.Controls) {
            EXPECT_TRUE(a.X >= 0 && a.Y >= 0 && a.X + a.Width <= dialog.Width &&
                        a.Y + a.Height <= dialog.Height)
                << a.Id;
        }
    }
}

TEST(CompiledResources, TrayMenuKeepsItsOrder) {
    std::optional<std::vector<MenuItem>> menu = resource::FindMenu(CompiledResources(), IDM_TRAY);
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->size(), 1U);
    ASSERT_TRUE(menu->front().Popup);
    std::u16string order;
    for (const MenuItem& item : menu->front().Items) {
        order += (item.Separator ? u"-" : item.Text) + u"|";
    }
    EXPECT_EQ(order, u"BC Reader|RFID Reader|-|Settings...|-|About|Exit|");
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
    std::vector<std::pair<Type, std::uint16_t>> cases = {{Type::Menu, IDM_TRAY},
                                                         {Type::Bitmap, IDB_STATE_IMAGES}};
    for (std::uint16_t number : kDialogs) {
        cases.push_back({Type::Dialog, number});
    }
    for (const auto& [type, entry] : cases) {
        std::optional<Bytes> data = resource::Find(CompiledResources(), type, entry);
        ASSERT_TRUE(data);
        std::size_t step = type == Type::Bitmap ? 31 : 1;
        for (std::size_t length = 0; length < data->size(); length += step) {
            // Once the entry is honest about its length, once the file ends in the middle of it.
            std::vector<std::byte> part = Head(*data, length);
            auto honest = ResourceBytes().Append(part).File(type, entry);
            auto lying = ResourceBytes().Entry(type, entry, part, static_cast<std::uint32_t>(data->size()));
            ASSERT_EQ(AskEverything(honest), 0) << entry << " cut at " << length;
            ASSERT_EQ(AskEverything(Head(lying.Data(), 32 + length)), 0) << entry << " ends at " << length;
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
    EXPECT_EQ(dialog->Title + dialog->FontName, u"TitleFont");
    EXPECT_EQ(dialog->FontWeight, 700);
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
}

TEST(ResourceForms, BitmapsThatCannotBeAreNotFound) {
    const struct {
        int Width, Height;
        unsigned Bits, Colours;
    } cases[] = {{0, 1, 8, 0},         {-1, 1, 8, 0},          {1, 0, 8, 0},
                 {1, INT32_MIN, 8, 0}, {INT32_MAX, 1, 32, 0},  {INT32_MAX, INT32_MAX, 32, 0},
                 {5000, 1, 8, 0},      {1, 5000, 8, 0},        {1, 1, 16, 0},
                 {1, 1, 8, 257},       {1, 1, 24, 0xFFFFFFFF}, {1, 1, 4, 17}};
    for (const auto& one : cases) {
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
