#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/base.h"
#include "platform/linux/kernel/terminal.h"

namespace {

template <class... Arguments>
std::string Format(const char16_t* format, Arguments... arguments) {
    std::array<WCHAR, 1024> text;
    text.fill(u'#');
    const int length = wsprintfW(text.data(), format, arguments...);
    EXPECT_EQ(text[static_cast<std::size_t>(length)], 0);
    return layer::ToUtf8({text.data(), static_cast<std::size_t>(length)});
}

TEST(Text, FormatsAsThePlatformDoes) {
    EXPECT_EQ(Format(u"%d|%u|%s|100%% %", INT32_MIN, 0xFFFFFFFFu, u"\u20AC"),
              "-2147483648|4294967295|\xE2\x82\xAC|100% ");
    const std::u16string longText(2000, u'x');
    EXPECT_EQ(Format(u"ab%s%d", longText.c_str(), 5), "ab" + std::string(1021, 'x'));
    std::array<WCHAR, 4> cut{u'#', u'#', u'#', u'#'};
    EXPECT_EQ(lstrcpynW(cut.data(), u"abcdef", 3), cut.data());
    EXPECT_EQ(std::u16string_view(cut.data(), 4), std::u16string_view(u"ab\0#", 4));
}

}  // namespace
