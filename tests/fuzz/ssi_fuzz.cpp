// Any bytes as a read of a scan engine's port: what counts as a packet has a right length and checksum,
// nothing is taken from outside the read, nothing valid behind noise is passed over, and the search always
// comes to its end.
#include "link/framing.h"
#include "tests/fuzz/require.h"

namespace {

bool Valid(std::span<const BYTE> bytes) {
    if (bytes.empty() || bytes[0] < 4 || bytes.size() < bytes[0] + 2u) {
        return false;
    }
    unsigned sum = 0;
    for (std::size_t i = 0; i < bytes[0]; ++i) {
        sum += bytes[i];
    }
    const unsigned check = bytes[bytes[0]] * 256u + bytes[bytes[0] + 1u];
    return ((sum + check) & 0xFFFF) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::span<const BYTE> rest(bytes, size);
    while (!rest.empty()) {
        const SsiPiece piece = NextSsiPacket(rest);
        Require(piece.Size > 0 && piece.Size <= rest.size());
        Require(piece.Bytes.data() == rest.data() && piece.Bytes.size() <= piece.Size);
        const bool packet = piece.Finding == SsiFinding::Decode || piece.Finding == SsiFinding::Other;
        Require(packet == Valid(rest));
        if (packet) {
            Require(piece.Size == rest[0] + 2u && piece.Bytes.size() == rest[0]);
            Require((rest[1] == DECODE_DATA) == (piece.Finding == SsiFinding::Decode));
        } else {
            for (std::size_t at = 1; at < piece.Size; ++at) {
                Require(!Valid(rest.subspan(at)) || rest[at + 1] != DECODE_DATA);
            }
            Require((piece.Finding == SsiFinding::Rest) == (piece.Size == rest.size()));
            FindBrokenDecode(piece.Bytes);
        }
        rest = rest.subspan(piece.Size);
    }
    // What the host seals is a packet to itself.
    SsiFrame frame;
    const std::size_t sealed = SealSsiPacket({bytes, size}, frame);
    Require(sealed == 0 ? size == 0 || bytes[0] < 4 || bytes[0] > size : Valid({frame.data(), sealed}));
    return 0;
}
