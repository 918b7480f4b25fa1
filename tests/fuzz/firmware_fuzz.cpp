// Any bytes as a firmware file: the parser must stay inside its buffers, and every frame must be one that the
// decoder can take, with the file's data in it.
#include <map>

#include "firmware/firmware_frame.h"
#include "tests/fuzz/require.h"

namespace {

using Memory = std::map<DWORD, BYTE>;

void Load(Memory& memory, DWORD address, std::span<const BYTE> data) {
    for (const BYTE byte : data) {
        memory[address++] = byte;
    }
}

void CheckAndLoad(std::span<const BYTE> frame, Memory& memory) {
    Require(frame.size() > FrameHeader + FrameTrailer && frame.size() <= FrameLimit + FrameTrailer);
    Require(frame[0] == 'S' && frame[1] == '3' && frame.back() == '\r');
    Require(frame[2] == frame.size() - 4);
    unsigned sum = 0;
    for (const BYTE byte : frame.subspan(2, frame.size() - 3)) {
        sum += byte;
    }
    Require((sum & 0xFF) == 0xFF);
    const DWORD address = static_cast<DWORD>(frame[3]) << 24 | static_cast<DWORD>(frame[4]) << 16 |
                          static_cast<DWORD>(frame[5]) << 8 | frame[6];
    Load(memory, address, frame.subspan(FrameHeader, frame.size() - FrameHeader - FrameTrailer));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    SrecordReader reader{};
    FirmwareFrame frame{};
    Memory asked, sent;
    const auto send = [&](FirmwareFrame& full) {
        CheckAndLoad(SealFrame(full), sent);
        return true;
    };
    SrecordStep step = SrecordStep::More;
    for (std::size_t i = 0; i < size && step != SrecordStep::Bad && step != SrecordStep::End; ++i) {
        step = FeedSrecord(reader, bytes[i]);
        if (step != SrecordStep::Record) {
            continue;
        }
        const Srecord& record = reader.Record;
        Require(record.Size >= 1 && record.Size <= SrecordDataLimit);
        Load(asked, record.Address, std::span<const BYTE>(record.Data).first(record.Size));
        Require(PackRecord(frame, record, send));
    }
    if (frame.Size != 0) {
        send(frame);
    }
    Require(sent == asked);
    return 0;
}
