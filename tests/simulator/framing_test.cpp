// The framings from the readers' side: known bytes in every way of cutting them, and bytes that are wrong.
#include <gtest/gtest.h>

#include "simulator/escape_wire.h"
#include "simulator/loader_wire.h"
#include "simulator/ssi_wire.h"

namespace readers {
namespace {

Bytes Hex(std::string_view text) {
    return BytesFromHex(text).value();
}

std::string Shown(const SsiReceived& item) {
    return std::string("PBN").substr(item.What, 1) + "(" + HexText(item.Content) + ")";
}

std::string Shown(const EscapeReceived& item) {
    return std::string("CAN").substr(item.What, 1) + "(" + item.Text + ")";
}

std::string Shown(const LoaderReceived& item) {
    std::string text = std::string("TFRBN").substr(item.What, 1) + "(" + item.Content;
    if (item.What == LoaderReceived::Frame) {
        text += item.Type + std::to_string(item.Address) + ":" + HexText(item.Data);
    }
    std::erase(text, '\0');
    return text + ")";
}

// The same is found in the bytes wherever they are cut.
template <class Receiver>
void ExpectFound(const Bytes& arrives, const std::string& expected) {
    for (std::size_t cut = 0; cut <= arrives.size(); ++cut) {
        Receiver receiver;
        std::string found;
        for (const auto part : {std::span(arrives).first(cut), std::span(arrives).subspan(cut)}) {
            for (const auto& item : receiver.Push(part)) {
                found += Shown(item);
            }
        }
        EXPECT_EQ(found, expected) << HexText(arrives) << " cut at " << cut;
    }
}

TEST(Framing, OfTheScanEngines) {
    ExpectFound<SsiReceiver>(Hex("04 E4 04 00 FF 14"), "P(04 E4 04 00)");
    ExpectFound<SsiReceiver>(Hex("04 E4 04 00 FF 15"), "B(04 E4 04 00)");
    ExpectFound<SsiReceiver>(Hex("04 E4 04 00 FF"), "");
    ExpectFound<SsiReceiver>(Hex("01 04 E4 04 00 FF 14 0F C6 04 08 FF 8A 08 EC 00 EE 01 9B 02 9C 0B FB 4F"),
                             "N(01)P(04 E4 04 00)B(0F C6 04 08 FF 8A 08 EC 00 EE 01 9B 02 9C 0B)");
    const auto parameters = [](const char* hex) { return SsiParametersOf(Hex(hex)); };
    EXPECT_EQ(parameters("0A C6 04 08 FF 08 00 F0 52 01"),
              (std::vector<SsiParameter>{{0x08, 0}, {0xF052, 1}}));
    for (const char* wrong : {"07 C6 04 08 FF F0 08", "06 C6 04 08 FF 08", "06 C6 04 08 FF F0",
                              "07 C6 04 08 FF F4 01", "04 C6 04 08"}) {
        EXPECT_EQ(parameters(wrong), std::nullopt) << wrong;
    }
}

TEST(Framing, OfThe1DReaderWantsItAwake) {
    const std::string awake(30, '\xFF'), longest(226, 'a');
    const std::pair<std::string, std::string> cases[] = {
        {awake + "\x1BON\r", "C(ON)"},
        {awake.substr(1) + "\x1BON\r", "A(ON)"},
        {awake + "\x1BON\r\x1BOFF\r", "C(ON)A(OFF)"},
        {awake + "\x1BON\r" + awake + "\x1BOFF\r", "C(ON)C(OFF)"},
        {awake + "\x1B"
                 "DOWNLOAD\r\r",
         "C(DOWNLOAD)"},
        {awake + "\x1BO\x1BON\r", "N(O)A(ON)"},
        {awake + "x" + awake.substr(1) + "\x1BON\r", "N(x)A(ON)"},
        {awake + "\x1B" + longest + "\r", "C(" + longest + ")"},
    };
    for (const auto& [arrives, found] : cases) {
        ExpectFound<EscapeReceiver>(BytesOf(arrives), found);
    }
    EscapeReceiver flooded;
    EXPECT_EQ(flooded.Push(BytesOf(awake + "\x1B" + std::string(5000, 'a'))).front().What,
              EscapeReceived::Noise);
}

TEST(Framing, OfTheLoaderTellsTextFramesAndNoiseApart) {
    const std::pair<const char*, const char*> cases[] = {
        {"53 33 09 00 01 00 00 01 02 03 04 EB 0D", "R(365536:01 02 03 04)"},
        {"53 33 07 00 12 34 56 AA BB F7 0D", "R(31193046:AA BB)"},
        {"53 37 05 00 00 00 00 FB 0D", "B(checksum)"},
        {"53 37 05 00 00 00 00 FA 0A", "B(end)"},
        {"53 31 05 00 00 00 00 FA 0D", "B(type)"},
        {"53 33 00 0D", "B(count)"},
        {"0D 44 4F 57 4E 4C 4F 41 44 0D 3A 45 0D", "T(DOWNLOAD)T(:E)"},
        {"00 53 37 05 00 00 00 00 FA 0D", "N()R(70:)"},
        {"53 33 06 00 00 00 00 0D EC 0D", "R(30:0D)"},
    };
    for (const auto& [arrives, found] : cases) {
        ExpectFound<LoaderReceiver>(Hex(arrives), found);
    }
}

}  // namespace
}  // namespace readers
