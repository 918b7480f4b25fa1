// Which files are firmware files, byte by byte.
#include <gtest/gtest.h>

#include "tests/firmware/firmware_text.h"

namespace {

const std::string Good = RecordLine('3', 0x00010000, {1, 2, 3, 4});

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
        {"line end without CR",
         "S30900010000"
         "01020304EB\n",
         23},
        {"line end without LF",
         "S30900010000"
         "01020304EB\rS",
         24},
        {"LF before CR",
         "S30900010000"
         "01020304EB\n\r",
         23},
        {"a digit too few",
         "S30900010000"
         "01020304E\r\n",
         22},
        {"a digit too many",
         "S30900010000"
         "01020304EB0\r\n",
         23},
        {"a byte too many",
         "S30900010000"
         "01020304EB00\r\n",
         23},
        {"blank in front of the line end",
         "S30900010000"
         "01020304EB \r\n",
         23},
        {"header", "S00600004844521B\r\n", 2},
        {"two bytes of address", "S1051000AABB85\r\n", 2},
        {"count of 16 bits", "S5030001FB\r\n", 2},
        {"count of 24 bits", "S604000001FA\r\n", 2},
        {"end of a file with S2 records", "S804000000FB\r\n", 2},
        {"type 4", "S4", 2},
        {"no data in S3", "S30500010000F9\r\n", 4},
        {"no data in S2", "S204123456", 4},
        {"no room for the address", "S304000100", 4},
        {"count 0", "S300", 4},
        {"a byte too long for the frame, S3", "S3FF", 4},
        {"a byte too long for the frame, S2", "S2FE", 4},
        {"empty line at the start", "\r\n", 1},
        {"binary",
         std::string("\x7F"
                     "ELF",
                     4),
         1},
        {"zero byte", std::string("S3\0009", 4), 3},
        {"byte above 7F in the data", "S3090001000001\xFF", 15},
        {"empty line at the end", Good + "\r\n", Good.size() + 1},
        {"byte order mark", "\xEF\xBB\xBFS3", 1},
    };
    for (const Refused& c : cases) {
        for (const std::string& before : {std::string(), Good, longest}) {
            const Reading reading = ReadText(before + c.Text);
            EXPECT_EQ(reading.Last, SrecordStep::Bad) << c.What;
            EXPECT_EQ(reading.Taken, before.size() + c.At) << c.What;
        }
    }
}

TEST(Srecord, StaysRefused) {
    SrecordReader reader{};
    EXPECT_EQ(FeedSrecord(reader, 'x'), SrecordStep::Bad);
    for (const char c : Good) {
        ASSERT_EQ(FeedSrecord(reader, static_cast<BYTE>(c)), SrecordStep::Bad);
    }
}

TEST(Srecord, TakesWhatItDoesNotCheck) {
    struct {
        const char* What;
        std::string Text;
        SrecordStep Last;
        std::size_t Records;
    } const cases[] = {
        {"wrong checksum",
         "S3090001000001020304"
         "00\r\n" +
             std::string(EndLine),
         SrecordStep::End, 1},
        {"no end record", Good + Good, SrecordStep::Record, 2},
        {"end record alone", "S9", SrecordStep::End, 0},
        {"what follows the end record",
         Good + "S9"
                "030000FC\nrubbish",
         SrecordStep::End, 1},
        {"end record cut after its type", Good + "S7", SrecordStep::End, 1},
        {"a record twice", Good + Good + Good + "S7", SrecordStep::End, 3},
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

TEST(Srecord, GivesAddressAndData) {
    struct {
        char Type;
        std::uint32_t Address;
        std::size_t Size;
    } const cases[] = {{'3', 0xFFFFFFFF, 1}, {'3', 0, 249},         {'2', 0xFFFFFF, 249},
                       {'2', 0x000100, 1},   {'3', 0x89ABCDEF, 32}, {'3', 0x80000000, 248}};
    SrecordReader reader{};
    std::uint8_t seed = 0;
    for (const auto& c : cases) {
        Octets data(c.Size);
        for (auto& byte : data) {
            byte = seed = static_cast<std::uint8_t>(seed * 5 + 0xB1);
        }
        const std::string line = RecordLine(c.Type, c.Address, data);
        for (std::size_t i = 0; i < line.size(); ++i) {
            const SrecordStep step = FeedSrecord(reader, static_cast<BYTE>(line[i]));
            ASSERT_EQ(step, i + 1 == line.size() ? SrecordStep::Record : SrecordStep::More) << line << i;
        }
        EXPECT_EQ(reader.Record.Address, c.Address);
        ASSERT_EQ(reader.Record.Size, data.size());
        EXPECT_TRUE(std::equal(data.begin(), data.end(), reader.Record.Data.begin()));
    }
}

}  // namespace
