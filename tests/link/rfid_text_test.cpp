#include "link/rfid_text.h"

#include <gtest/gtest.h>

#include "hex_bytes.h"

namespace {

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
