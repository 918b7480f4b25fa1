#include "link/rfid_text.h"

#include <gtest/gtest.h>

namespace {

TEST(RegisterReply, TellsTheAnswersApart) {
    const struct {
        std::string_view Reply;
        RegisterAnswer Expected;
        std::string_view Value;
    } cases[] = {
        {"41424344\r\n", RegisterAnswer::Value, "41424344"},
        {"F1f2F3f4\r\n", RegisterAnswer::Value, "F1f2F3f4"},
        {"\r\n\r\n41424344", RegisterAnswer::Value, "41424344"},
        {"S\r\n41424344\r\n", RegisterAnswer::Value, "41424344"},
        {"S\r\nN\r\n", RegisterAnswer::Value, "N"},
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

}  // namespace
