#include "link/rfid_text.h"

#include <gtest/gtest.h>

#include "hex_bytes.h"

namespace {

TagLineStep Feed(TagLine& line, std::string_view text) {
    return CollectTagLine(line, TextBytes(text));
}

TEST(TagLine, EndsAtTheLineFeed) {
    const struct {
        std::string_view Read;
        TagLineStep Expected;
        std::string_view Line;
    } cases[] = {
        {"VE0040100\r\n", TagLineStep::Data, "VE0040100"},
        {std::string_view("\0\0V\0E0\r\r\n", 9), TagLineStep::Data, "VE0"},
        {"abc\r\nrest of the read", TagLineStep::Data, "abc"},
        {"12345678901234567890123\r\n", TagLineStep::Data, "12345678901234567890123"},
        {"123456789012345678901234", TagLineStep::End, ""},
        {"S\r\n", TagLineStep::Repeat, ""},
        {"SS\r\n", TagLineStep::End, "SS"},
        {"N\r\n", TagLineStep::End, "N"},
        {"\r\n", TagLineStep::End, ""},
        {"VE004", TagLineStep::More, "VE004"},
        // A greeting that comes late is no tag.
        {"MultiISO 1.2\r\nIE00", TagLineStep::More, "IE00"},
        {"ISO 1\r\nISO 1\r\nIE00\r\n", TagLineStep::Data, "IE00"},
    };
    for (const auto& c : cases) {
        TagLine line;
        EXPECT_EQ(c.Expected, Feed(line, c.Read)) << c.Read;
        if (c.Expected != TagLineStep::End || !c.Line.empty()) {
            EXPECT_EQ(c.Line, std::string_view(line.Text.data(), line.Length)) << c.Read;
        }
        EXPECT_EQ('\0', line.Text[line.Length]);
    }
}

TEST(TagLine, GoesOnOverReadsAndStartsAnewAfterARepeat) {
    TagLine line;
    EXPECT_EQ(TagLineStep::More, Feed(line, "S"));
    EXPECT_EQ(TagLineStep::More, Feed(line, "\r"));
    EXPECT_EQ(TagLineStep::Repeat, Feed(line, "\nV1"));
    EXPECT_EQ(TagLineStep::More, Feed(line, "VE0"));
    EXPECT_EQ(TagLineStep::Data, Feed(line, "16\r\n"));
    EXPECT_STREQ("VE016", line.Text.data());
}

TEST(RegisterReply, TellsTheAnswersApart) {
    const struct {
        std::string_view Reply;
        RegisterAnswer Expected;
        std::string_view Value;
    } cases[] = {
        {"41424344\r\n", RegisterAnswer::Value, "41424344"},
        {"\r\n\r\n41424344", RegisterAnswer::Value, "41424344"},
        {"S\r\n41424344\r\n", RegisterAnswer::Value, "41424344"},
        {"S\r\nN\r\n", RegisterAnswer::Value, "N"},
        {"F1f2F3f4\r\n", RegisterAnswer::Value, "F1f2F3f4"},
        {"S", RegisterAnswer::Again, ""},
        {"N\r\n4142", RegisterAnswer::Refused, ""},
        {"\r\n\n\r", RegisterAnswer::Refused, ""},
        {"F\r\n", RegisterAnswer::Failed, ""},
        {"F1F2F3\r\n", RegisterAnswer::Failed, ""},
        {"FAILURE!\r", RegisterAnswer::Failed, ""},
        {"I", RegisterAnswer::Broken, ""},
        {"4142", RegisterAnswer::Broken, ""},
        {"S\r\n414243", RegisterAnswer::Broken, ""},
        // Of another length but ended: what the reader says counts.
        {"4142\r\n", RegisterAnswer::Value, "4142"},
    };
    for (const auto& c : cases) {
        const RegisterReply reply = ParseRegisterReply(c.Reply, 4);
        EXPECT_EQ(c.Expected, reply.Answer) << c.Reply;
        EXPECT_EQ(c.Value, reply.Value) << c.Reply;
    }
}

TEST(Greeting, IsFoundWhereverTheReadsCutIt) {
    const std::string text = std::string(2, '\0') + "IIS\nIS OIISO 15693\r\nmore\n";
    const std::size_t end = text.find("\r\n") + 2;
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        GreetingSearch search;
        const bool first = FindGreeting(search, TextBytes(std::string_view(text).substr(0, cut)));
        EXPECT_EQ(cut >= end, first) << cut;
        if (!first) {
            EXPECT_TRUE(FindGreeting(search, TextBytes(std::string_view(text).substr(cut)))) << cut;
        }
    }
    GreetingSearch search;
    EXPECT_FALSE(FindGreeting(search, TextBytes("IS OIS0SOI")));
}

}  // namespace
