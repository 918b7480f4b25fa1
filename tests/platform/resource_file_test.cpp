#include "platform/linux/resources/resource_file.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/linux/resources/embedded.h"
#include "resources/resource.h"

namespace {

using namespace std::string_literals;
using resource::Control;
using resource::Dialog;
using resource::MenuItem;
using resource::Type;

Dialog TheDialog(std::uint16_t number) {
    std::optional<Dialog> dialog = resource::FindDialog(CompiledResources(), number);
    EXPECT_TRUE(dialog) << number;
    return dialog.value_or(Dialog());
}

std::vector<std::uint16_t> ControlIds(const Dialog& dialog) {
    std::vector<std::uint16_t> ids;
    for (const Control& control : dialog.Controls) {
        ids.push_back(control.Id);
    }
    return ids;
}

TEST(CompiledResources, NumbersWithoutTextAreNotFound) {
    // The gaps of the two length values, both ends of a list, a block that does not exist, the first and the
    // last.
    for (unsigned number : {0U, 207U, 208U, 403U, 727U, 24003U, 24099U, 24110U, 60000U, 65535U}) {
        EXPECT_EQ(resource::FindString(CompiledResources(), static_cast<std::uint16_t>(number)), u"")
            << number;
    }
    EXPECT_FALSE(resource::FindDialog(CompiledResources(), 16));
    EXPECT_FALSE(resource::Find(CompiledResources(), Type::Dialog, 0));
}

TEST(CompiledResources, DialogsHaveTheirControlsInTabOrderAndInsideTheirFrame) {
    const struct {
        std::uint16_t Number;
        int Width, Height, Points;
        std::vector<std::uint16_t> Ids;
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
    const std::vector<MenuItem> menu = resource::FindMenu(CompiledResources(), IDM_TRAY);
    ASSERT_EQ(menu.size(), 1U);
    ASSERT_TRUE(menu.front().Popup);
    std::u16string order;
    for (const MenuItem& item : menu.front().Items) {
        order += (item.Id == 0 ? u"-" : item.Text) + u"|";
    }
    EXPECT_EQ(order, u"BC Reader|RFID Reader|-|Settings...|-|About|Exit|");
}

// Compilers write resources that are named by a text, and several languages: neither may be taken for ours.
TEST(ResourceFile, NamedEntriesAreSteppedOverAndTheFirstOfTwoCounts) {
    const auto bytes = [](std::u16string_view words) { return std::as_bytes(std::span(words)); };
    std::u16string file = u"\x2\0\x28\0DIALOGS\0A NAME\0\0\0\0"s;
    file +=
        u"\x5\0\x10\0\xFFFF\x5\xFFFF\x3"
        u"abc\0"s;
    file +=
        u"\x2\0\x10\0\xFFFF\x5\xFFFF\x3"
        u"d\0"s;
    const auto data = resource::Find(bytes(file), Type::Dialog, 3);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size(), 5U) << "three bytes of padding do not belong to it";
    // A file that ends early ends the search.
    EXPECT_FALSE(resource::Find(bytes(file).first(40), Type::Dialog, 3));
}

TEST(ResourceFile, AFormThatIsNotReadIsNotTakenForAnother) {
    const std::u16string file = u"\x6\0\x10\0\xFFFF\x5\xFFFF\x3\x1\xFFFF\0\0"s;
    EXPECT_FALSE(resource::FindDialog(std::as_bytes(std::span(file)), 3));
}

}  // namespace
