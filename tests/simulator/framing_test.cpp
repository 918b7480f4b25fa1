// The framings from the readers' side: known bytes, every way of cutting them, and bytes that are
// wrong.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/escape_wire.h"
#include "simulator/loader_wire.h"
#include "simulator/ssi_wire.h"

namespace readers {
namespace {

Bytes Hex(std::string_view text) {
    return BytesFromHex(text).value();
}

std::string Described(const std::vector<SsiReceived>& received) {
    std::string text;
    for (const SsiReceived& item : received) {
        text += std::string("PBN").substr(item.What, 1) + "(" + HexText(item.Content) + ")";
    }
    return text;
}

TEST(SsiFraming, FindsPacketsInWhatArrives) {
    const struct {
        const char* Arrives;
        const char* Found;
        const char* Left;
    } cases[] = {
        {"04 E4 04 00 FF 14", "P(04 E4 04 00)", ""},
        {"04 E4 04 00 FF 15", "B(04 E4 04 00)", ""},
        {"00 03 04 E4 04 00 FF 14", "N(00 03)P(04 E4 04 00)", ""},
        {"04 E4 04 00 FF", "", "04 E4 04 00 FF"},
        {"04 E4 04 00 FF 14 04", "P(04 E4 04 00)", "04"},
        {"FF FF FF 1B 53 45 54 0D", "", "FF FF FF 1B 53 45 54 0D"},
    };
    for (const auto& test : cases) {
        SsiReceiver receiver;
        EXPECT_EQ(Described(receiver.Push(Hex(test.Arrives))), test.Found) << test.Arrives;
        EXPECT_EQ(HexText(receiver.Abandon()), test.Left) << test.Arrives;
    }
}

TEST(SsiFraming, CutsMakeNoDifference) {
    const Bytes whole = Hex("01 04 E4 04 00 FF 14 0F C6 04 08 FF 8A 08 EC 00 EE 01 9B 02 9C 0B FB 4F");
    const std::string expected = Described(SsiReceiver().Push(whole));
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        SsiReceiver receiver;
        auto found = receiver.Push(std::span(whole).first(cut));
        for (auto& item : receiver.Push(std::span(whole).subspan(cut))) {
            found.push_back(item);
        }
        EXPECT_EQ(Described(found), expected) << cut;
        EXPECT_FALSE(receiver.Waiting()) << cut;
    }
}

TEST(SsiFraming, DecodesOfEveryLengthComeTogetherAgain) {
    for (std::size_t packetData : {std::size_t{2}, LargestPacketData}) {
        for (std::size_t length : {0u, 1u, 2u, 249u, 250u, 251u, 499u, 500u, 501u, 4095u}) {
            Bytes data(length);
            for (std::size_t i = 0; i < length; ++i) {
                data[i] = static_cast<std::uint8_t>(i * 7);
            }
            const auto packets = SsiDecodePackets(0x1C, data, packetData);
            Bytes joined;
            for (std::size_t i = 0; i < packets.size(); ++i) {
                const Bytes& packet = packets[i];
                ASSERT_GE(packet.size(), 7u);
                ASSERT_EQ(packet[0] + 2u, packet.size());
                EXPECT_EQ(HexText(std::span(packet).subspan(1, 4)),
                          i + 1 < packets.size() ? "F3 00 02 1C" : "F3 00 00 1C");
                EXPECT_LE(packet.size(), packetData + 6);
                unsigned sum = packet[packet.size() - 2] * 256u + packet.back();
                for (std::size_t at = 0; at + 2 < packet.size(); ++at) {
                    sum += packet[at];
                }
                EXPECT_EQ(sum & 0xFFFF, 0u);
                joined.insert(joined.end(), packet.begin() + 5, packet.end() - 2);
            }
            EXPECT_EQ(joined, data) << length << " in packets of " << packetData;
        }
    }
}

TEST(SsiFraming, ParametersAreTakenWholeOrNotAtAll) {
    const auto parameters = [](const char* hex) { return SsiParametersOf(Hex(hex)); };
    EXPECT_EQ(parameters("0A C6 04 08 FF 08 00 F0 52 01"),
              (std::vector<SsiParameter>{{0x08, 0}, {0xF052, 1}}));
    for (const char* wrong : {"07 C6 04 08 FF F0 08", "06 C6 04 08 FF 08", "06 C6 04 08 FF F0",
                              "07 C6 04 08 FF F4 01", "04 C6 04 08"}) {
        EXPECT_EQ(parameters(wrong), std::nullopt) << wrong;
    }
}

std::string Described(const std::vector<EscapeReceived>& received) {
    std::string text;
    for (const EscapeReceived& item : received) {
        text += std::string("CAN").substr(item.What, 1) + "(" + item.Text + ")";
    }
    return text;
}

TEST(EscapeFraming, WantsTheReaderAwake) {
    const std::string awake(30, '\xFF');
    const struct {
        std::string Arrives;
        const char* Found;
    } cases[] = {
        {awake + "\x1BON\r", "C(ON)"},
        {awake.substr(1) + "\x1BON\r", "A(ON)"},
        {awake + "\x1BON\r\x1BOFF\r", "C(ON)A(OFF)"},
        {awake + "\x1BON\r" + awake + "\x1BOFF\r", "C(ON)C(OFF)"},
        {awake + "\x1B"
                 "DOWNLOAD\r\r",
         "C(DOWNLOAD)"},
        {awake + "\x1BO\x1BON\r", "N(O)A(ON)"},
        {awake + "x" + awake.substr(1) + "\x1BON\r", "N(x)A(ON)"},
        {"\x04\xE4\x04\r", "N(\x04\xE4\x04\r)"},
        {awake + "\x1B" + std::string(226, 'a') + "\r", ""},
    };
    for (const auto& test : cases) {
        const std::string expected = *test.Found ? test.Found : "C(" + std::string(226, 'a') + ")";
        EXPECT_EQ(Described(EscapeReceiver().Push(BytesOf(test.Arrives))), expected);
        EscapeReceiver bytewise;
        std::vector<EscapeReceived> found;
        for (char c : test.Arrives) {
            for (auto& item : bytewise.Push(BytesOf(std::string(1, c)))) {
                found.push_back(item);
            }
        }
        EXPECT_EQ(Described(found), expected);
    }
    EscapeReceiver flooded;
    EXPECT_EQ(flooded.Push(BytesOf(awake + "\x1B" + std::string(5000, 'a'))).front().What,
              EscapeReceived::Noise);
}

std::string Described(const std::vector<LoaderReceived>& received) {
    std::string text;
    for (const LoaderReceived& item : received) {
        text += std::string("TFRBN").substr(item.What, 1) + "(" + item.Content;
        if (item.What == LoaderReceived::Frame) {
            text += item.Type + std::to_string(item.Address) + ":" + HexText(item.Data);
        }
        text += ")";
    }
    return text;
}

TEST(LoaderFraming, TellsTextFramesAndNoiseApart) {
    const struct {
        const char* Arrives;
        const char* Found;
    } cases[] = {
        {"53 33 09 00 01 00 00 01 02 03 04 EB 0D", "R(365536:01 02 03 04)"},
        {"53 33 07 00 12 34 56 AA BB F7 0D", "R(31193046:AA BB)"},
        {"53 37 05 00 00 00 00 FA 0D", "R(70:)"},
        {"53 37 05 00 00 00 00 FB 0D", "B(checksum)"},
        {"53 37 05 00 00 00 00 FA 0A", "B(end)"},
        {"53 31 05 00 00 00 00 FA 0D", "B(type)"},
        {"53 33 00 0D", "B(count)"},
        {"0D 44 4F 57 4E 4C 4F 41 44 0D 3A 45 0D", "T(DOWNLOAD)T(:E)"},
        {"00 53 37 05 00 00 00 00 FA 0D", "N()R(70:)"},
        {"53 33 06 00 00 00 00 0D EC 0D", "R(30:0D)"},
    };
    for (const auto& test : cases) {
        const Bytes arrives = Hex(test.Arrives);
        for (std::size_t cut = 0; cut <= arrives.size(); ++cut) {
            LoaderReceiver receiver;
            auto found = receiver.Push(std::span(arrives).first(cut));
            for (auto& item : receiver.Push(std::span(arrives).subspan(cut))) {
                found.push_back(item);
            }
            std::string text = Described(found);
            std::erase(text, '\0');
            EXPECT_EQ(text, test.Found) << cut;
            EXPECT_FALSE(receiver.Abandon()) << test.Arrives;
        }
    }
    LoaderReceiver cut;
    EXPECT_TRUE(cut.Push(Hex("53 33 09 00")).empty());
    EXPECT_EQ(cut.Abandon()->What, LoaderReceived::BadFrame);
}

}  // namespace
}  // namespace readers
