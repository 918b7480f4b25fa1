#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "link/packet_message.h"

namespace {

std::string TextOf(const PacketMessage& message) {
    return {message.Bytes.begin(), message.Bytes.begin() + message.Length};
}

// Plays packets and gives what is handed over, and "-" for a last packet that brings nothing. A packet is its
// text: "+" behind it announces another one, in front "'" marks a resend. A packet that comes broken has "!"
// in front when it is refused, "?" when nothing of its status byte has come either, "^" when it is passed
// over. "~N" lets N ms pass, "off" switches the reader off.
std::string Play(const std::string& script, DWORD now = 0) {
    PacketMessage message;
    std::string result;
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        if (word == "off") {
            DropPart(message);
            continue;
        }
        if (word[0] == '~') {
            now += static_cast<DWORD>(std::stoul(word.substr(1)));
            continue;
        }
        const bool broken = std::strchr("!?^", word[0]), resent = word[broken] == '\'',
                   more = word.back() == '+';
        const std::string text = word.substr(broken + resent, word.size() - broken - resent - more);
        std::vector<BYTE> packet{0, 0xF3, 0, static_cast<BYTE>(resent | more << 1)};
        if (text != "empty")
            packet.push_back('#');
        if (text != "empty" && text != "bare")
            packet.insert(packet.end(), text.begin(), text.end());
        packet[0] = static_cast<BYTE>(packet.size());
        DropOverdue(message, now);
        if (broken) {
            if (word[0] == '^')
                NotePassedOver(message, packet[3]);
            else
                NoteRefusal(message, word[0] == '!' ? std::optional(packet[3]) : std::nullopt);
            continue;
        }
        switch (AddPacket(message, packet, now)) {
            case PacketStep::Complete:
                result += TextOf(message) + " ";
                EXPECT_EQ(0, message.Bytes[message.Length]);
                ClearMessage(message);
                break;
            case PacketStep::Nothing:
                result += "- ";
                break;
            case PacketStep::More:
            case PacketStep::Repeated:
                break;
        }
    }
    EXPECT_EQ(message.Length, std::string_view(TextOf(message)).size());
    return result.substr(0, result.empty() ? 0 : result.size() - 1);
}

TEST(PacketMessage, JoinsResendsAndDrops) {
    const struct {
        const char* Script;
        const char* Result;
    } cases[] = {
        {"abc+ def+ g", "#abcdefg"},
        {"bare empty ab+ empty", "# - #ab"},
        // A refused packet is continued by its resend, however often, and not by another first try.
        {"ab+ !cd 'cd", "#abcd"},
        {"ab+ !cd+ !'cd+ 'cd+ ef", "#abcdef"},
        {"!ab 'ab", "#ab"},
        {"!ab+ 'ab+ cd", "#abcd"},
        {"ab+ !cd xy", "#xy"},
        {"ab+ 'cd", "#abcd"},
        // An engine that has given up: three tries, or another first try behind a refused packet.
        {"ab+ !cd !'cd !'cd xy", "#xy"},
        {"ab+ !cd !'cd !'cd !xy 'xy zw", "- #zw"},
        {"ab+ !cd !'cd !'cd 'xy+ zw", "-"},
        {"ab+ !cd !xy 'xy zw", "- #zw"},
        {"ab+ !cd ?xy 'xy zw", "- #zw"},
        {"ab+ 'ab+ !'ab+ ?xy 'xy", "-"},
        {"ab+ !cd+ ~1900 !'cd+ ~200 'cd+ ef", "-"},
        // Passed over: what follows is the same one again, or nobody knows what it is the rest of.
        {"ab+ ^cd 'cd", "#abcd"},
        {"ab+ ^cd xy+ zw next", "- #next"},
        {"ab+ !cd ^'cd xy", "#xy"},
        {"^ab cd", "#cd"},
        // A lost acknowledgement: the repetition of what has been taken brings nothing.
        {"ab 'ab", "#ab"},
        {"ab+ 'ab+ cd 'cd", "#abcd"},
        {"ab+ 'ab+ 'ab+ 'cd xy", "#abcd #xy"},
        {"ab+ !'ab+ 'ab+ cd", "#abcd"},
        {"ab !'ab 'ab", "#ab"},
        {"'ab 'ab", "#ab"},
        // The same again, but refused in between: that one's resend.
        {"ab !ab 'ab", "#ab #ab"},
        {"ab !ab !'ab 'ab 'ab", "#ab #ab"},
        {"ab ?ab 'ab cd", "#ab #cd"},
        {"ab+ !ab+ 'ab+ ab", "#ababab"},
        {"ab+ cd 'ab", "#abcd #ab"},
        // Overdue: the rest is taken and dropped up to the last packet.
        {"ab+ ~1999 cd", "#abcd"},
        {"ab+ ~2000 cd", "#cd"},
        {"ab+ ~2000 'cd xy", "- #xy"},
        {"ab+ ~2000 'cd+ ef+ !gh 'gh xy", "- #xy"},
        {"ab+ ~2000 'cd+ ~2000 'ef 'gh", "- #gh"},
        {"ab+ ~2000 'ab+ 'cd", "-"},
        {"ab+ ~2000 'ab+ cd ef", "- #ef"},
        {"ab+ ~1900 cd+ ~1900 !ef 'ef", "#abcdef"},
        {"ab+ ~2000 !cd 'cd xy", "- #xy"},
        {"ab+ ~2000 xy+ !zz 'zz", "#xyzz"},
        // Switched off: nothing of then is continued.
        {"ab+ off 'cd 'ef", "- #ef"},
        {"ab+ off cd", "#cd"},
        {"ab+ off 'ab+ cd ef", "- #ef"},
        {"off 'ab xy", "- #xy"},
        {"off 'ab+ cd xy", "- #xy"},
        {"off !ab 'ab", "#ab"},
        {"!ab off 'ab", "-"},
        {"ab+ off !cd 'cd", "-"},
        {"ab off 'ab 'ab cd", "#ab #cd"},
    };
    for (const auto& [script, result] : cases) {
        EXPECT_EQ(result, Play(script)) << script;
        EXPECT_EQ(result, Play(script, 0xFFFFFF00u)) << script;  // the tick count wraps
    }
}

TEST(PacketMessage, FillsToTheLastByteAndDropsWhatIsLonger) {
    // Identifier and 16 packets of 250: 4001.
    std::string packets;
    for (int i = 0; i < 16; ++i)
        packets += std::string(250, 'x') + "+ ";
    const std::string fits(95, 'y'), over(96, 'y');
    EXPECT_EQ("#" + std::string(4000, 'x') + fits, Play(packets + fits));
    EXPECT_EQ("- #next", Play(packets + over + " next"));
    EXPECT_EQ("- #next", Play(packets + over + "+ more+ !last 'last next"));
    EXPECT_EQ("#ab", Play(packets + over + "+ !last ab"));
}

}  // namespace
