// Any bytes as a reply to a probe: a reader is found only by what its reply has to hold, and neither what
// follows the reply nor zero bytes in front of it make another one of it.
#include <string>
#include <vector>

#include "link/framing.h"
#include "link/probe_reply.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::span<const BYTE> reply(bytes, size);
    const std::string text(bytes, bytes + size);
    std::vector<BYTE> more(bytes, bytes + size);

    const RevisionAnswer revision = ParseRevisionReply(reply);
    Require((revision == RevisionAnswer::NoRevision) == (size < 2 || bytes[1] != REPLY_REVISION));
    if (revision == RevisionAnswer::Imager) {
        Require(text.find(" P", SsiHeaderSize) != std::string::npos);
    }
    if (revision == RevisionAnswer::Laser) {
        Require(text.find(" G", SsiHeaderSize) != std::string::npos ||
                text.find(" \x07", SsiHeaderSize) != std::string::npos);
    }
    if (size > 0 && bytes[0] >= SsiHeaderSize && bytes[0] <= size) {
        Require(ParseRevisionReply(reply.first(bytes[0])) == revision);
    }

    const std::string shown = text.substr(0, text.find('\0'));
    Require(IsDecoderAnswer(reply) == (size >= 60 && shown.find("NG\r") == std::string::npos));

    const RfidAnswer rfid = ParseRfidAnswer(reply);
    const std::size_t begin = text.find_first_not_of('\0');
    const std::string line =
        begin == std::string::npos ? "" : text.substr(begin, text.find('\0', begin) - begin);
    const bool iso = line.find("ISO") != std::string::npos, multi = line.find("Multi") != std::string::npos;
    Require((rfid == RfidAnswer::AskAgain) == line.starts_with('S'));
    Require((rfid == RfidAnswer::Model100) == (!line.starts_with('S') && iso && multi));
    Require((rfid == RfidAnswer::Model90) == (!line.starts_with('S') && iso && !multi));
    more.insert(more.begin(), 3, 0);
    more.insert(more.end(), {0, 'I', 'S', 'O', 'M', 'u', 'l', 't', 'i'});
    Require(ParseRfidAnswer(more) == rfid || line.empty());
    return 0;
}
