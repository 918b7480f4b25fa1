// From lines to frames.
#include <gtest/gtest.h>

#include <numeric>

#include "firmware/firmware_frame.h"
#include "tests/firmware/firmware_text.h"

namespace {

Octets Ascending(std::size_t size) {
    Octets data(size);
    std::iota(data.begin(), data.end(), std::uint8_t{0});
    return data;
}

// "address+data bytes" of each frame.
std::string Shape(const std::vector<Octets>& frames) {
    std::string text;
    for (const Octets& frame : frames) {
        char part[32];
        std::snprintf(part, sizeof part, "%02X%02X%02X%02X+%zu ", frame[3], frame[4], frame[5], frame[6],
                      frame.size() - FrameHeader - FrameTrailer);
        text += part;
    }
    return text;
}

struct Line {
    char Type;
    std::uint32_t Address;
    std::size_t Size;
};

std::string FileOf(std::initializer_list<Line> lines) {
    std::string text;
    for (const Line& line : lines) {
        text += RecordLine(line.Type, line.Address, Ascending(line.Size));
    }
    return text + std::string(EndLine);
}

TEST(FirmwareFrame, BytesOfAFrame) {
    const std::vector<Octets> s3{{0x53, 0x33, 0x09, 0, 1, 0, 0, 1, 2, 3, 4, 0xEB, 0x0D}};
    EXPECT_EQ(FramesOf("S30900010000"
                       "01020304EB\r\nS70500000000FA\r\n"),
              s3);
    const std::vector<Octets> s2{{0x53, 0x33, 0x07, 0, 0x12, 0x34, 0x56, 0xAA, 0xBB, 0xF7, 0x0D}};
    EXPECT_EQ(FramesOf("S206123456"
                       "AABBF8\r\nS9030000FC\r\n"),
              s2);
    // A count that fills its byte, and a checksum of 00.
    const auto longest = FramesOf(RecordLine('3', 0x10, Ascending(249)) + "S7");
    ASSERT_EQ(longest.size(), 1u);
    EXPECT_EQ(longest[0].size(), 258u);
    EXPECT_EQ(longest[0][2], 254);
    EXPECT_EQ(longest[0][255], 248);
    EXPECT_EQ(longest[0][256], 0xFF - (254 + 0x10 + 248 * 249 / 2) % 256);
    EXPECT_EQ(longest[0][257], 0x0D);
    EXPECT_EQ(FramesOf(RecordLine('3', 0, {0xF9}) + "S7")[0][8], 0x00);
}

TEST(FirmwareFrame, Borders) {
    struct {
        const char* What;
        std::string File;
        const char* Frames;
    } const cases[] = {
        {"three lines pass the mark, a block boundary ends a frame",
         FileOf({{'3', 0x10000, 32},
                 {'3', 0x10020, 32},
                 {'3', 0x10040, 32},
                 {'3', 0x10060, 32},
                 {'3', 0x10080, 32},
                 {'3', 0x100A0, 32},
                 {'3', 0x100C0, 32},
                 {'3', 0x100E0, 32},
                 {'3', 0x10100, 32}}),
         "00010000+96 00010060+96 000100C0+64 00010100+32 "},
        {"93 bytes are exactly 100 with the header: not yet sent", FileOf({{'3', 0, 93}, {'3', 93, 1}}),
         "00000000+94 "},
        {"94 bytes pass the mark", FileOf({{'3', 0, 94}, {'3', 94, 1}}), "00000000+94 0000005E+1 "},
        {"block boundary with little in the frame", FileOf({{'3', 0x100E0, 32}, {'3', 0x10100, 32}}),
         "000100E0+32 00010100+32 "},
        {"jump forwards and back", FileOf({{'3', 0x10020, 8}, {'3', 0x20000, 8}, {'3', 0x10028, 8}}),
         "00010020+8 00020000+8 00010028+8 "},
        {"gap of one byte", FileOf({{'3', 0, 4}, {'3', 5, 4}}), "00000000+4 00000005+4 "},
        {"overlap of one byte", FileOf({{'3', 0, 4}, {'3', 3, 4}}), "00000000+4 00000003+4 "},
        {"the same line twice", FileOf({{'3', 0, 4}, {'3', 0, 4}}), "00000000+4 00000000+4 "},
        {"a record across the boundary is not cut, the next begins a frame",
         FileOf({{'3', 0xF8, 16}, {'3', 0x108, 16}}), "000000F8+16 00000108+16 "},
        {"S2 and S3 share a frame", FileOf({{'2', 0x20, 4}, {'3', 0x24, 4}, {'2', 0x28, 4}}), "00000020+12 "},
        {"the same low bytes under another high byte", FileOf({{'2', 0x20, 4}, {'3', 0x1000024, 4}}),
         "00000020+4 01000024+4 "},
        {"the end of the address space does not go on at 0", FileOf({{'3', 0xFFFFFFF0, 16}, {'3', 0, 16}}),
         "FFFFFFF0+16 00000000+16 "},
        {"93 and 156 fit together", FileOf({{'3', 0, 93}, {'3', 93, 156}}), "00000000+249 "},
        {"93 and 157 do not", FileOf({{'3', 0, 93}, {'3', 93, 157}}), "00000000+93 0000005D+157 "},
        {"1 and 248 do, 1 and 249 do not",
         FileOf({{'3', 0, 1}, {'3', 1, 248}, {'3', 0x200, 1}, {'3', 0x201, 249}}),
         "00000000+249 00000200+1 00000201+249 "},
        {"after a full frame the next record counts as a start",
         FileOf({{'3', 0, 100}, {'3', 100, 50}, {'3', 150, 44}, {'3', 194, 4}}),
         "00000000+100 00000064+94 000000C2+4 "},
        {"nothing but an end", FileOf({}), ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Shape(FramesOf(c.File)), c.Frames) << c.What;
    }
}

TEST(FirmwareFrame, SealingAgainChangesNothingAndNothingIsSealed) {
    FirmwareFrame frame{};
    EXPECT_TRUE(SealFrame(frame).empty());
    Srecord record{0xFFFFFFFF, 249, {}};
    record.Data.fill(0xFF);
    AddRecord(frame, record);
    const auto first = SealFrame(frame);
    const Octets once(first.begin(), first.end());
    const auto second = SealFrame(frame);
    EXPECT_EQ(Octets(second.begin(), second.end()), once);
    frame.Size = FrameLimit + 1;
    EXPECT_TRUE(SealFrame(frame).empty());
}

}  // namespace
