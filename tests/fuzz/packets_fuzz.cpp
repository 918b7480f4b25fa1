// An engine that sends decodes over a line that breaks packets and loses acknowledgements, by its own
// protocol: a packet that was refused or not acknowledged is sent again with the resend bit, so often, and
// then the decode is given up. Whatever happens, a message that is handed over is one of the decodes, whole,
// and no decode is handed over twice; a decode of which every packet arrived in time, at worst after
// refusals, is handed over.
#include <algorithm>

#include "link/framing.h"
#include "link/packet_message.h"
#include "tests/fuzz/require.h"

namespace {

// Bytes without the heap: this is the target that has the most to try.
struct Bytes {
    std::array<BYTE, 64> All{};
    std::size_t Size = 0;

    void Add(BYTE byte) { All[Size++] = byte; }
    void Add(std::span<const BYTE> bytes) {
        std::ranges::copy(bytes, All.begin() + static_cast<std::ptrdiff_t>(Size));
        Size += bytes.size();
    }
    std::span<const BYTE> Used() const { return {All.data(), Size}; }
};

Bytes Packet(std::span<const BYTE> data, BYTE code, bool more) {
    Bytes packet;
    packet.Add(static_cast<BYTE>(5 + data.size()));
    packet.Add(DECODE_DATA);
    packet.Add(SsiReader);
    packet.Add(static_cast<BYTE>(more ? SsiContinued : 0));
    packet.Add(code);
    packet.Add(data);
    return packet;
}

struct Line {
    PacketMessage Message;
    DWORD Now = 1;
    std::size_t Delivered = 0;
    Bytes Newest;  // the last that was delivered: code identifier and data

    // The receiver as it takes a packet that has arrived whole, or broken, with or without its status byte.
    void Arrive(std::span<const BYTE> packet, bool broken, bool torn) {
        DropOverdue(Message, Now);
        if (broken) {
            NoteRefusal(Message, torn ? std::nullopt : std::optional(packet[3]));
            return;
        }
        if (AddPacket(Message, packet, Now) == PacketStep::Complete) {
            ++Delivered;
            Newest.Size = 0;
            Require(Message.Length <= Newest.All.size());
            Newest.Add({Message.Bytes.data(), Message.Length});
            ClearMessage(Message);
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr int Tries = 3;
    constexpr DWORD AnswerTime = 1000;
    std::size_t chosen = 0;
    const auto choice = [&]() -> BYTE { return chosen < size ? bytes[chosen++] : BYTE{0}; };
    Line line;
    bool partDropped = false;
    for (int number = 0; chosen < size && number < 64; ++number) {
        const std::size_t packets = 1 + choice() % 4;
        const std::size_t part = choice() % 8;
        const bool same = choice() % 4 == 0;  // the same label again and again
        const BYTE code = 1;
        Bytes decode;
        decode.Add(code);
        bool arrived = true, unsure = false;
        const std::size_t before = line.Delivered;
        for (std::size_t i = 0; i < packets && arrived; ++i) {
            Bytes data;
            data.Size = part;
            std::fill_n(data.All.begin(), part, static_cast<BYTE>('a' + i));
            data.Add(same ? 'x' : static_cast<BYTE>(number + 1));
            Bytes packet = Packet(data.Used(), code, i + 1 < packets);
            decode.Add(data.Used());
            bool acknowledged = false, taken = false, locked = false;
            for (int attempt = 0; attempt < Tries && !acknowledged; ++attempt) {
                const BYTE fate = choice();
                // Of two equal packets in a row the second, sent again, could be the first.
                const bool slow = fate & 0x40, torn = part && (fate & 0x10);
                const bool unseen = part && fate % 4 == 3 && (fate & 0x20);
                const bool broken = fate % 4 == 1, unheard = fate % 4 == 2;  // the acknowledgement got lost
                line.Now += slow ? 700 : 5;
                if (!unseen) {
                    line.Arrive(packet.Used(), broken, torn);
                }
                if (unseen || unheard) {
                    line.Now += AnswerTime;
                }
                unsure |= slow || torn || unseen || unheard;
                taken |= !unseen && !broken;
                acknowledged = !unseen && !broken && !unheard;
                locked = unheard;
                packet.All[3] |= SsiResent;
            }
            if (!acknowledged && locked) {
                line.Now += ContinuationTimeout;  // no trigger before
            }
            arrived = acknowledged;
            if (!acknowledged && taken && i + 1 == packets) {
                arrived = true;  // all of it is there, though the engine does not know
            }
        }
        Require(line.Delivered <= before + 1);
        if (line.Delivered > before) {
            Require(std::ranges::equal(line.Newest.Used(), decode.Used()));
        } else {
            // What is sent again after a part was dropped may be that part's, and is never taken for a scan.
            Require(!arrived || unsure || partDropped);
        }
        partDropped = line.Delivered == before;
        line.Now += choice() & 1 ? 3000 : 50;
    }
    return 0;
}
