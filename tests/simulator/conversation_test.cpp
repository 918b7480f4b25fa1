// Whole conversations with each reader, on a wire where time passes by hand.

#include <gtest/gtest.h>

#include "simulator/decoder_1d.h"
#include "simulator/rfid_reader.h"
#include "simulator/scan_engine.h"
#include "tests/simulator/manual_wire.h"

namespace readers {
namespace {

const std::string Ack = "04 D0 00 00 FF 2C";

// What the reader sends when these bytes arrive, at once and within a moment.
std::string Reply(ManualWire& wire, Reader& reader, std::span<const std::uint8_t> bytes,
                  Milliseconds moment = Milliseconds(0)) {
    wire.TakeSent();
    reader.Receive(bytes);
    wire.Pass(moment);
    return wire.TakeSent();
}

std::string Packet(ManualWire& wire, Reader& reader, std::string_view hex,
                   Milliseconds moment = Milliseconds(0)) {
    Bytes bytes = BytesFromHex(hex).value();
    const std::uint16_t checksum = SsiChecksum(bytes);
    bytes.push_back(static_cast<std::uint8_t>(checksum >> 8));
    bytes.push_back(static_cast<std::uint8_t>(checksum));
    return Reply(wire, reader, bytes, moment);
}

std::string Framed(ManualWire& wire, Reader& reader, const std::string& command) {
    return Reply(wire, reader, BytesOf(std::string(30, '\xFF') + "\x1B" + command + "\r"));
}

void Do(Reader& reader, std::string_view word, std::string_view rest = "") {
    std::string problem;
    ASSERT_TRUE(reader.Command(word, rest, problem)) << word;
    ASSERT_EQ(problem, "");
}

void Arm(ManualWire& wire, std::string_view words) {
    const auto all = WordsOf(words);
    std::string problem;
    ASSERT_TRUE(wire.Faults().Arm(*FindFault(all.front()), std::span(all).subspan(1), problem)) << problem;
}

TEST(ScanEngineTalk, UnansweredPacketsAreSentThreeTimes) {
    const std::string packet = "06 F3 00 00 03 78 FE 8C";
    ManualWire wire(115200);
    ScanEngine engine(wire, EngineModel::Imager);
    Do(engine, "label", "3 x");
    EXPECT_EQ(Packet(wire, engine, "04 E4 04 00", Milliseconds(1100)), Ack + " | " + packet + " | " + packet);
    EXPECT_EQ(Packet(wire, engine, "05 D1 04 00 01"), packet);
    EXPECT_EQ(Packet(wire, engine, "05 D1 04 00 01"), "");
    EXPECT_EQ(wire.LastEvent, "decode-lost");
    wire.Pass(Milliseconds(60000));
    EXPECT_EQ(wire.TakeSent(), "");
    Packet(wire, engine, "04 D0 04 00");
    EXPECT_EQ(wire.LastEvent, "unexpected-ack");
}

TEST(ScanEngineTalk, FaultsChangeOnePacketAndItsRepeatIsGood) {
    const std::string good = "06 F3 00 00 03 78 FE 8C";
    for (const auto& [fault, wrong] : {std::pair("checksum", "06 F3 00 00 03 78 FE D9"),
                                       std::pair("length-byte 3", "03 F3 00 00 03 78 FE 8C"),
                                       std::pair("opcode 0x11", "06 11 00 00 03 78 FF 6E")}) {
        ManualWire wire(115200);
        ScanEngine engine(wire, EngineModel::Imager);
        Arm(wire, fault);
        Do(engine, "label", "3 x");
        EXPECT_EQ(Packet(wire, engine, "04 E4 04 00", Milliseconds(100)), Ack + " | " + wrong);
        EXPECT_EQ(Packet(wire, engine, "05 D1 04 00 01"), good);
    }
}

TEST(ScanEngineTalk, RefusesWhatItCannotTake) {
    ManualWire wire(115200);
    ScanEngine engine(wire, EngineModel::Imager);
    EXPECT_EQ(Reply(wire, engine, BytesFromHex("04 E4 04 00 FF 15").value()), "05 D1 00 00 01 FF 29");
    EXPECT_EQ(Packet(wire, engine, "04 77 04 00"), "05 D1 00 00 02 FF 28");
    EXPECT_EQ(Packet(wire, engine, "05 E4 04 00 00"), "05 D1 00 00 02 FF 28");
    EXPECT_EQ(Reply(wire, engine, Bytes(40, 0xFF), Milliseconds(500)), "");
    EXPECT_EQ(Packet(wire, engine, "04 E5 04 00"), Ack) << "noise is forgotten when the line falls silent";
}

TEST(DecoderTalk, SavesOnlyWholeBlocks) {
    ManualWire wire(115200);
    Decoder1D decoder(wire, [] {});
    const std::string block = "FF01FE01FF01FF00" + std::string(44, '0');
    const std::string ok = HexText(BytesOf("OK\r"));
    const std::string no = HexText(BytesOf("NG\r"));
    EXPECT_EQ(Framed(wire, decoder, "SAVE" + block), ok);
    EXPECT_EQ(Framed(wire, decoder, "SAVE" + block.substr(1)), no);
    EXPECT_EQ(Framed(wire, decoder, "NONSENSE"), no);
    Arm(wire, "refuse-save");
    EXPECT_EQ(Framed(wire, decoder, "SAVE" + std::string(60, '1')), no);
    EXPECT_EQ(Framed(wire, decoder, "SET"), HexText(BytesOf(block + "\r")));
    EXPECT_EQ(Reply(wire, decoder, BytesOf(std::string(29, '\xFF') + "\x1BSET\r")), "");
}

class Upgrade : public testing::Test {
  protected:
    std::string Raw(std::string_view text) {
        const std::string sent = Reply(Line, Decoder, BytesOf(text));
        std::string found;
        for (std::string_view mark : {"OK", "FN", "FB", "FA", "NG"}) {
            if (sent.find(HexText(BytesOf(std::string(mark) + "\r"))) != std::string::npos) {
                found += mark;
            }
        }
        return found;
    }
    std::string Frame(std::string_view hex) { return Raw(TextOf(BytesFromHex(hex).value())); }
    void Enter() {
        EXPECT_EQ(Raw(std::string(30, '\xFF') + "\x1B"
                                                "DOWNLOAD\r\r"),
                  "OK");
        EXPECT_EQ(Raw("DOWNLOAD\r"), "FN");
    }

    const std::string Data = "53 33 09 00 01 00 00 01 02 03 04 EB 0D";
    const std::string End = "53 37 05 00 00 00 00 FA 0D";
    bool Lost = false;
    ManualWire Line{115200};
    Decoder1D Decoder{Line, [this] {
                          Lost = true;
                          Decoder.PowerOff();
                      }};
};

TEST_F(Upgrade, LateEraseAndRefusedFrames) {
    Do(Decoder, "erase-ms", "700");
    Enter();
    EXPECT_EQ(Raw(":ERASE\r"), "FB");
    EXPECT_EQ(Frame(Data), "NG");
    Line.Pass(Milliseconds(699));
    EXPECT_EQ(Line.TakeSent(), "");
    Line.Pass(Milliseconds(1));
    EXPECT_EQ(Line.TakeSent(), "46 41 0D");
    Arm(Line, "frame-fb x2 after1");
    EXPECT_EQ(Frame(Data), "FA");
    EXPECT_EQ(Frame(Data), "FB");
    EXPECT_EQ(Frame(Data), "FB");
    EXPECT_EQ(Frame(Data), "FA");
    EXPECT_EQ(Frame("53 33 09 00 01 00 00 01 02 03 04 EC 0D"), "FN");
    EXPECT_EQ(Frame(Data.substr(0, 20)), "");
    Line.Pass(Milliseconds(500));
    EXPECT_EQ(Line.TakeSent(), "46 4E 0D") << "half a frame is asked for again";
}

TEST_F(Upgrade, PowerLossLeavesOnlyTheLoader) {
    Enter();
    Raw(":ERASE\r");
    Arm(Line, "power-loss");
    EXPECT_EQ(Frame(Data), "");
    ASSERT_TRUE(Lost);
    Decoder.PowerOn();
    EXPECT_EQ(Framed(Line, Decoder, "SET"), "");
    Enter();
    EXPECT_EQ(Raw(":ERASE\r"), "FBFA");
    EXPECT_EQ(Frame(Data), "FA");
    EXPECT_EQ(Frame(End), "FA");
    Line.Pass(Milliseconds(2000));
    EXPECT_NE(Framed(Line, Decoder, "SET"), "");
}

class Tags : public testing::Test {
  protected:
    std::string Say(std::string_view command) {
        return TextOf(BytesFromHex(Reply(Line, Rfid, BytesOf(command), Milliseconds(100))).value());
    }
    ManualWire Line{9600};
    RfidReader Rfid{Line, true};
};

TEST_F(Tags, AnnouncesItselfAtTheOpeningThatWasChosen) {
    Do(Rfid, "announce", "3");
    std::string announced;
    for (int opening = 0; opening < 6; ++opening) {
        Rfid.PortOpened();
        Line.Pass(Milliseconds(250));
        announced += Line.TakeSent().empty() ? '-' : 'A';
        Rfid.PortClosed();
    }
    EXPECT_EQ(announced, "--A--A");
    Do(Rfid, "announce", "1");
    Rfid.PortOpened();
    Rfid.PortClosed();
    Line.Pass(Milliseconds(250));
    EXPECT_EQ(Line.TakeSent(), "") << "closed before it could speak";
}

TEST_F(Tags, BlocksComeFromTheTagThatWasReported) {
    Do(Rfid, "tag", "I E0070001 hex:41420044");
    EXPECT_EQ(Say("r05"), "N\r\n") << "not reported yet";
    EXPECT_EQ(Say("s"), "IE0070001\r\n");
    EXPECT_EQ(Say("r05"), "41420044\r\n");
    EXPECT_EQ(Say("r04"), "F\r\n");
    EXPECT_EQ(Say("r0f"), "00000000\r\n");
    EXPECT_EQ(Say("r10"), "F\r\n");
    Do(Rfid, "block", "6 i");
    EXPECT_EQ(Say("r06"), "I\r\n");
    Arm(Line, "register-s");
    EXPECT_EQ(Say("r05"), "S\r\n");
    EXPECT_EQ(Say("r05"), "41420044\r\n");
    Do(Rfid, "untag");
    EXPECT_EQ(Say("r05"), "N\r\n");
}

}  // namespace
}  // namespace readers
