#include "platform/text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

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
    EXPECT_EQ(Format(u"%d|%5d|%05d|%-5d|", -42, -42, -42, -42), "-42|  -42|-0042|-42  |");
    EXPECT_EQ(Format(u"%d %u", INT32_MIN, 0xFFFFFFFFu), "-2147483648 4294967295");
    EXPECT_EQ(Format(u"%x %X %02x %08lX %#x %.4d", 0xABu, 0xABu, 7u, 0x1234u, 255u, 12),
              "ab AB 07 00001234 0xff 0012");
    EXPECT_EQ(Format(u"%s|%5s|%-5s|%.2s|%s", u"ab", u"ab", u"ab", u"abc", nullptr),
              "ab|   ab|ab   |ab|(null)");
    EXPECT_EQ(Format(u"%c%c|%3c|", u'A', 0x20AC, u'x'), "A\xE2\x82\xAC|  x|");
    EXPECT_EQ(Format(u"100%% %q %"), "100% q ");
    EXPECT_EQ(Format(u"%d"
                     u"%9999999999d",
                     1, 2)
                  .size(),
              1023u);
}

TEST(Text, FormattingEndsAt1024Characters) {
    const std::u16string longText(2000, u'x');
    EXPECT_EQ(Format(u"%s", longText.c_str()), std::string(1023, 'x'));
    EXPECT_EQ(Format(u"ab%s%d", longText.c_str(), 5).size(), 1023u);
    EXPECT_EQ(Format(longText.c_str()).size(), 1023u);
}

TEST(Text, CopiesEndInside) {
    std::array<WCHAR, 4> buffer{u'#', u'#', u'#', u'#'};
    EXPECT_EQ(lstrcpynW(buffer.data(), u"abcdef", 3), buffer.data());
    EXPECT_EQ(std::u16string_view(buffer.data()), u"ab");
    EXPECT_EQ(buffer[3], u'#');
    EXPECT_EQ(lstrcpynW(buffer.data(), u"x", 1)[0], 0);
    EXPECT_EQ(lstrcpynW(buffer.data(), u"x", 0), nullptr);
    std::array<WCHAR, 8> joined{};
    lstrcatW(lstrcpyW(joined.data(), u"abc"), u"de");
    EXPECT_EQ(std::u16string_view(joined.data()), u"abcde");
    EXPECT_EQ(lstrlenW(nullptr), 0);
    EXPECT_LT(lstrcmpW(u"ab", u"abc"), 0);
    EXPECT_GT(lstrcmpW(u"b", u"abc"), 0);
    EXPECT_EQ(lstrcmpW(u"", u""), 0);
}

TEST(Text, Utf8IsCheckedBothWays) {
    for (const char16_t* text : {u"", u"plain", u"\u00E9\u20AC\uFFFD", u"\U0001F600 end"}) {
        EXPECT_EQ(layer::FromUtf8(layer::ToUtf8(text)), text);
    }
    struct Case {
        std::string Bytes;
        std::u16string Text;
    };
    const Case cases[] = {
        {"a\xFFz", u"a\uFFFDz"},
        {"\xC3", u"\uFFFD"},
        {"\xC3(", u"\uFFFD("},
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xE2\x82", u"\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF8", u"\uFFFD"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(layer::FromUtf8(each.Bytes), each.Text) << each.Bytes;
    }
    EXPECT_EQ(layer::ToUtf8(u"\xD83Dx"), "\xEF\xBF\xBDx");
    EXPECT_EQ(layer::ToUtf8(u"\xDE00"), "\xEF\xBF\xBD");
}

}  // namespace
