#include <gtest/gtest.h>

#include "hex_bytes.h"
#include "link/packet_message.h"

namespace {

std::vector<BYTE> Packet(bool continued, std::string_view text, BYTE identifier = 3) {
    std::vector<BYTE> packet{0, 0xF3, 0, static_cast<BYTE>(continued ? 2 : 0), identifier};
    packet.insert(packet.end(), text.begin(), text.end());
    packet[0] = static_cast<BYTE>(packet.size());
    return packet;
}

std::string TextOf(const PacketMessage& message) {
    return {message.Bytes.begin(), message.Bytes.begin() + message.Length};
}

void ExpectCleared(const PacketMessage& message) {
    EXPECT_EQ(0u, message.Length);
    EXPECT_FALSE(message.Pending);
    EXPECT_FALSE(message.TooLong);
    for (const BYTE value : message.Bytes)
        ASSERT_EQ(0, value);
}

TEST(PacketMessage, JoinsPacketsAndKeepsTheFirstIdentifier) {
    PacketMessage message;
    EXPECT_EQ(PacketStep::More, AddPacket(message, Packet(true, "abc", 17), 0));
    EXPECT_EQ(PacketStep::More, AddPacket(message, Packet(true, "def", 17), 10));
    EXPECT_EQ(PacketStep::Complete, AddPacket(message, Packet(false, "g", 17), 20));
    EXPECT_EQ(std::string("\x11") + "abcdefg", TextOf(message));
    EXPECT_EQ(0, message.Bytes[message.Length]);
    ClearMessage(message);
    ExpectCleared(message);
}

TEST(PacketMessage, TakesPacketsWithoutData) {
    PacketMessage message;
    // Only the identifier: a scan without data. Not even that: nothing to hand over.
    EXPECT_EQ(PacketStep::Complete, AddPacket(message, Packet(false, ""), 0));
    EXPECT_EQ(1u, message.Length);
    ClearMessage(message);
    EXPECT_EQ(PacketStep::Nothing, AddPacket(message, Bytes("04 F3 00 00"), 0));
    ExpectCleared(message);
    // A continuation that brings nothing leaves what has come.
    AddPacket(message, Packet(true, "ab"), 0);
    EXPECT_EQ(PacketStep::Complete, AddPacket(message, Bytes("04 F3 00 00"), 0));
    EXPECT_EQ(std::string("\x03") + "ab", TextOf(message));
}

TEST(PacketMessage, FillsToTheLastByteAndDropsWhatIsLonger) {
    const std::string full(250, 'x');
    for (const std::size_t extra : {0u, 1u, 300u}) {
        PacketMessage message;
        // Identifier and 16 packets of 250: 4001. The rest makes 4096, or more.
        for (int i = 0; i < 16; ++i)
            ASSERT_EQ(PacketStep::More, AddPacket(message, Packet(true, full), 0));
        std::string rest(95 + extra, 'y');
        while (rest.size() > 250) {
            EXPECT_EQ(PacketStep::More, AddPacket(message, Packet(true, rest.substr(0, 250)), 0));
            rest.erase(0, 250);
        }
        const PacketStep last = AddPacket(message, Packet(false, rest), 0);
        if (extra == 0) {
            EXPECT_EQ(PacketStep::Complete, last);
            EXPECT_EQ(4096u, message.Length);
            EXPECT_EQ('y', message.Bytes[4095]);
            EXPECT_EQ(0, message.Bytes[4096]);
        } else {
            EXPECT_EQ(PacketStep::Nothing, last);
            ExpectCleared(message);
            EXPECT_EQ(PacketStep::Complete, AddPacket(message, Packet(false, "next"), 0));
            EXPECT_EQ(std::string("\x03") + "next", TextOf(message));
        }
    }
}

TEST(PacketMessage, DropsAPartWhoseContinuationIsOverdue) {
    const DWORD nearWrap = 0xFFFFFF00u;
    for (const DWORD start : {DWORD{5}, nearWrap}) {
        PacketMessage message;
        AddPacket(message, Packet(true, "lost"), start);
        EXPECT_FALSE(DropOverdue(message, start + 1999));
        EXPECT_EQ(5u, message.Length);
        EXPECT_TRUE(DropOverdue(message, start + 2000));
        ExpectCleared(message);
        EXPECT_FALSE(DropOverdue(message, start + 9000));
        // Every packet gives the continuation new time.
        AddPacket(message, Packet(true, "a"), start);
        AddPacket(message, Packet(true, "b"), start + 1900);
        EXPECT_FALSE(DropOverdue(message, start + 3800));
    }
}

}  // namespace
