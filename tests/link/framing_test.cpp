#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "link/framing.h"
#include "link/rfid_text.h"

namespace {

TEST(SsiPacket, FindsWhatAReadBeginsWith) {
    const struct {
        const char* Read;
        SsiFinding Expected;
        std::size_t Size;
        int Broken;  // the status of a broken decode in it, -1 when it does not look like one, -2: not known
    } cases[] = {
        {"06 F3 00 00 01 41 FE C5", SsiFinding::Decode, 8, 0},
        {"06 F3 00 02 01 41 FE C3 06 F3", SsiFinding::Decode, 8, 2},
        {"04 D0 00 00 FF 2C", SsiFinding::Other, 6, -1},
        {"04 D0 00 00 FF 2C 06 F3", SsiFinding::Other, 6, -1},
        // Broken: checksum, length byte, cut anywhere, the beginning gone.
        {"06 F3 00 01 01 41 FE C6", SsiFinding::Rest, 8, 1},
        // Either way round the resend bit makes such a checksum.
        {"06 F3 00 01 01 41 FE C5", SsiFinding::Rest, 8, -2},
        {"06 F3 00 00 01 41 FE C4", SsiFinding::Rest, 8, -2},
        {"9A 06 F3 00 02 01 41 FE C2", SsiFinding::Rest, 9, -2},
        {"03 F3 00 00 01 41 FE C5", SsiFinding::Rest, 8, 0},
        {"FF F3 00 03 01 41 FE C2", SsiFinding::Rest, 8, 3},
        {"06 F3 00 02 01 41 FE", SsiFinding::Rest, 7, 2},
        {"00 F3", SsiFinding::Rest, 2, -2},
        {"F3 00 01 01 41 FE C4", SsiFinding::Rest, 7, 1},
        {"9A 33 06 F3 00 01 01 41 FE C3", SsiFinding::Rest, 10, 1},
        {"06", SsiFinding::Rest, 1, -1},
        {"04 D0 00 00 FF 2D", SsiFinding::Rest, 6, -1},
        {"02 D0 00 00 FF F3", SsiFinding::Rest, 6, -1},
        // Noise in front, whatever length its first byte says; the tail of a packet, and its resend.
        {"00 06 F3 00 00 01 41 FE C5", SsiFinding::Noise, 1, -1},
        {"FF 06 F3 00 00 01 41 FE C5", SsiFinding::Noise, 1, -1},
        {"41 FE C5 06 F3 00 01 01 41 FE C4", SsiFinding::Noise, 3, -1},
        {"06 F3 00 00 01 06 F3 00 01 01 41 FE C4", SsiFinding::Noise, 5, 0},
        {"04 D0 00 00 FF 2D 06 F3 00 00 01 41 FE C5", SsiFinding::Noise, 6, -1},
        // Only a decode counts behind noise.
        {"9A 04 D0 00 00 FF 2C", SsiFinding::Rest, 7, -1},
    };
    for (const auto& c : cases) {
        const auto read = Bytes(c.Read);
        const SsiPiece piece = NextSsiPacket(read);
        EXPECT_EQ(c.Expected, piece.Finding) << c.Read;
        EXPECT_EQ(c.Size, piece.Size) << c.Read;
        const bool whole = piece.Finding == SsiFinding::Decode || piece.Finding == SsiFinding::Other;
        EXPECT_EQ(piece.Size - (whole ? 2 : 0), piece.Bytes.size()) << c.Read;
        const BrokenDecode broken = FindBrokenDecode(piece.Bytes);
        EXPECT_EQ(c.Broken, !broken.Found ? -1 : broken.Status ? *broken.Status : -2) << c.Read;
    }
}

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
