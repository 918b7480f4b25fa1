// Which files are firmware files, byte by byte.
#include <gtest/gtest.h>

#include "firmware/srecord.h"
#include "tests/firmware/firmware_text.h"

namespace {

const std::string Good = RecordLine('3', 0x00010000, {1, 2, 3, 4});
const std::string Digits = Good.substr(0, Good.size() - 2);

// What the reader says to the last byte of the text that it takes, and how many records there were.
struct Reading {
    SrecordStep Last = SrecordStep::More;
    std::size_t Taken = 0, Records = 0;
    bool MayEnd = false;
};
Reading ReadText(std::string_view text) {
    Reading reading;
    SrecordReader reader{};
    for (const char c : text) {
        ++reading.Taken;
        reading.Last = FeedSrecord(reader, static_cast<BYTE>(c));
        reading.Records += reading.Last == SrecordStep::Record ? 1 : 0;
        if (reading.Last == SrecordStep::Bad || reading.Last == SrecordStep::End) {
            break;
        }
    }
    reading.MayEnd = reading.Last != SrecordStep::Bad && BetweenSrecords(reader);
    return reading;
}

struct Refused {
    const char* What;
    std::string Text;
    std::size_t At;  // how many bytes it takes to see it
};

TEST(Srecord, RefusesAtTheFirstByteThatIsWrong) {
    const std::string longest = RecordLine('3', 0, Octets(249));
    const Refused cases[] = {
        {"lower-case digit in the data", "S3090001000001020a04E2\r\n", 18},
        {"lower-case digit in the count", "S30f", 4},
        {"lower-case letter at the start", "s309", 1},
        {"line end without CR", Digits + "\n", 23},
        {"line end without LF", Digits + "\rS", 24},
        {"a digit too few", Digits.substr(0, 21) + "\r\n", 22},
        {"a digit too many", Digits + "0\r\n", 23},
        {"header", "S00600004844521B\r\n", 2},
        {"two bytes of address", "S1051000AABB85\r\n", 2},
        {"end of a file with S2 records", "S804000000FB\r\n", 2},
        {"no data in S3", "S30500010000F9\r\n", 4},
        {"no data in S2", "S204123456", 4},
        {"count 0", "S300", 4},
        {"a byte too long for the frame, S3", "S3FF", 4},
        {"a byte too long for the frame, S2", "S2FE", 4},
        {"empty line at the start", "\r\n", 1},
        {"zero byte", std::string("S3\0009", 4), 3},
        {"byte above 7F in the data", "S3090001000001\xFF", 15},
        {"empty line at the end", Good + "\r\n", Good.size() + 1},
    };
    for (const Refused& c : cases) {
        for (const std::string& before : {std::string(), Good, longest}) {
            const Reading reading = ReadText(before + c.Text);
            EXPECT_EQ(reading.Last, SrecordStep::Bad) << c.What;
            EXPECT_EQ(reading.Taken, before.size() + c.At) << c.What;
        }
    }
}

TEST(Srecord, TakesWhatItDoesNotCheck) {
    struct {
        const char* What;
        std::string Text;
        SrecordStep Last;
        std::size_t Records;
    } const cases[] = {
        {"wrong checksum", Good.substr(0, 20) + "00\r\n" + std::string(EndLine), SrecordStep::End, 1},
        {"no end record", Good + Good, SrecordStep::Record, 2},
        {"end record alone", "S9", SrecordStep::End, 0},
        {"what follows the end record", Good + "S9030000FC\nrubbish", SrecordStep::End, 1},
    };
    for (const auto& c : cases) {
        const Reading reading = ReadText(c.Text);
        EXPECT_EQ(reading.Last, c.Last) << c.What;
        EXPECT_EQ(reading.Records, c.Records) << c.What;
        EXPECT_TRUE(reading.MayEnd) << c.What;
    }
    EXPECT_TRUE(ReadText("").MayEnd);
    for (std::size_t cut = 1; cut < Good.size(); ++cut) {
        EXPECT_FALSE(ReadText(std::string_view(Good).substr(0, cut)).MayEnd) << cut;
    }
}

}  // namespace
