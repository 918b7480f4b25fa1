// From lines to frames. What a frame is made of is looked at by the fuzz target and by the simulated decoder.
#include <gtest/gtest.h>

#include <sstream>

#include "firmware/firmware_frame.h"
#include "tests/firmware/firmware_text.h"

namespace {

// A file of lines "address+data bytes", the address in hexadecimal; "2:" in front makes it a line of type 2.
std::string FileOf(const std::string& lines) {
    std::istringstream words(lines);
    std::string text;
    for (std::string word; words >> word;) {
        const bool s2 = word.starts_with("2:");
        unsigned address = 0;
        std::size_t size = 0;
        std::sscanf(word.c_str() + (s2 ? 2 : 0), "%X+%zu", &address, &size);
        text += RecordLine(s2 ? '2' : '3', address, Octets(size));
    }
    return text + std::string(EndLine);
}

// The frames in the same form.
std::string Shape(const std::vector<Octets>& frames) {
    std::string text;
    for (const Octets& frame : frames) {
        char part[32];
        const unsigned address = unsigned{frame[3]} << 24 | frame[4] << 16 | frame[5] << 8 | frame[6];
        std::snprintf(part, sizeof part, "%s%X+%zu", text.empty() ? "" : " ", address,
                      frame.size() - FrameHeader - FrameTrailer);
        text += part;
    }
    return text;
}

TEST(FirmwareFrame, Borders) {
    struct {
        const char *What, *Lines, *Frames;
    } const cases[] = {
        {"three lines pass the mark, a block boundary ends a frame",
         "10000+32 10020+32 10040+32 10060+32 10080+32 100A0+32 100C0+32 100E0+32 10100+32",
         "10000+96 10060+96 100C0+64 10100+32"},
        {"93 bytes are exactly 100 with the header: not yet sent", "0+93 5D+1", "0+94"},
        {"94 bytes pass the mark", "0+94 5E+1", "0+94 5E+1"},
        {"block boundary with little in the frame", "100E0+32 10100+32", "100E0+32 10100+32"},
        {"jump forwards and back", "10020+8 20000+8 10028+8", "10020+8 20000+8 10028+8"},
        {"gap of one byte", "0+4 5+4", "0+4 5+4"},
        {"overlap of one byte", "0+4 3+4", "0+4 3+4"},
        {"the same line twice", "0+4 0+4", "0+4 0+4"},
        {"a line across the boundary is not cut, the next begins a frame", "F8+16 108+16", "F8+16 108+16"},
        {"S2 and S3 share a frame", "2:20+4 24+4 2:28+4", "20+12"},
        {"the same low bytes under another high byte", "2:20+4 1000024+4", "20+4 1000024+4"},
        {"the end of the address space does not go on at 0", "FFFFFFF0+16 0+16", "FFFFFFF0+16 0+16"},
        {"93 and 156 fit together", "0+93 5D+156", "0+249"},
        {"93 and 157 do not", "0+93 5D+157", "0+93 5D+157"},
        {"1 and 248 do, 1 and 249 do not", "0+1 1+248 200+1 201+249", "0+249 200+1 201+249"},
        {"after a full frame the next line counts as a start", "0+100 64+50 96+44 C2+4", "0+100 64+94 C2+4"},
        {"nothing but an end", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Shape(FramesOf(FileOf(c.Lines))), c.Frames) << c.What;
    }
}

}  // namespace
