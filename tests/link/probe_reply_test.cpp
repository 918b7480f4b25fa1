#include "link/probe_reply.h"

#include <gtest/gtest.h>

#include "hex_bytes.h"

namespace {

std::vector<BYTE> Revision(std::string_view text, int length = -1) {
    std::vector<BYTE> reply{0, 0xA4, 0, 0};
    reply.insert(reply.end(), text.begin(), text.end());
    reply[0] = static_cast<BYTE>(length < 0 ? static_cast<int>(reply.size()) : length);
    // A checksum that looks like text must not be taken for it.
    reply.push_back(' ');
    reply.push_back('P');
    return reply;
}

TEST(RevisionReply, NamesTheEngineInItsThirdField) {
    const struct {
        std::vector<BYTE> Reply;
        RevisionAnswer Expected;
    } cases[] = {
        {Revision("CAAABS00-001-R00 16 P2"), RevisionAnswer::Imager},
        {Revision("CAAABS00-001-R00 16 GX"), RevisionAnswer::Laser},
        {Revision("A  B  P"), RevisionAnswer::Imager},
        {Revision("A B X"), RevisionAnswer::Unknown},
        {Revision("A B"), RevisionAnswer::Unnamed},
        {Revision("A B "), RevisionAnswer::Unnamed},
        {Revision(std::string_view("A B\0 G", 6)), RevisionAnswer::Unnamed},
        // With a length that cannot be right all that came counts.
        {Revision("A B G", 200), RevisionAnswer::Laser},
        {Bytes("04 A4"), RevisionAnswer::Unnamed},
        {Bytes("04 D0 00 00 FF 2C"), RevisionAnswer::NoRevision},
        {{}, RevisionAnswer::NoRevision},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].Expected, ParseRevisionReply(cases[i].Reply)) << i;
}

TEST(DecoderAnswer, NeedsSixtyBytesAndNoRefusal) {
    EXPECT_FALSE(IsDecoderAnswer(std::vector<BYTE>(59, 'x')));
    EXPECT_TRUE(IsDecoderAnswer(std::vector<BYTE>(60, 'x')));
    EXPECT_FALSE(IsDecoderAnswer(TextBytes(std::string(60, 'x') + "NG\r")));
    EXPECT_TRUE(IsDecoderAnswer(TextBytes(std::string(60, 'x') + std::string(1, '\0') + "NG\r")));
    EXPECT_TRUE(IsDecoderAnswer(TextBytes(std::string(60, 'x') + "NG")));
}

TEST(RfidAnswer, TellsModelsAndRepeats) {
    EXPECT_EQ(RfidAnswer::Model90, ParseRfidAnswer(TextBytes("ISO 15693\r\n")));
    EXPECT_EQ(RfidAnswer::Model100, ParseRfidAnswer(TextBytes("Multi ISO 1.0\r\n")));
    EXPECT_EQ(RfidAnswer::Model90, ParseRfidAnswer(TextBytes(std::string(3, '\0') + "ISO")));
    EXPECT_EQ(RfidAnswer::AskAgain, ParseRfidAnswer(TextBytes(std::string(1, '\0') + "S ISO")));
    EXPECT_EQ(RfidAnswer::None, ParseRfidAnswer(TextBytes("Multi")));
    EXPECT_EQ(RfidAnswer::None, ParseRfidAnswer(TextBytes(std::string("x\0ISO", 5))));
    EXPECT_EQ(RfidAnswer::None, ParseRfidAnswer(std::vector<BYTE>(5, 0)));
    EXPECT_EQ(RfidAnswer::None, ParseRfidAnswer({}));
}

}  // namespace
