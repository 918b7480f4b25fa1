// Any bytes as what the RFID reader says, in any pieces: a line is the same however the reads cut it, so is
// the greeting found, and tag memory stays inside its buffers.
#include <memory>
#include <string>

#include "link/rfid_text.h"
#include "scan/tag_memory.h"
#include "tests/fuzz/require.h"

namespace {

struct Line {
    TagLineStep Step;
    std::string Text;
};

// The first line that is more than a bare "S", with the bytes in pieces of this size.
Line Collect(std::span<const BYTE> bytes, std::size_t piece) {
    TagLine line;
    TagLineStep step = TagLineStep::More;
    while (!bytes.empty() && step == TagLineStep::More) {
        const auto part = bytes.first(piece < bytes.size() ? piece : bytes.size());
        step = CollectTagLine(line, part);
        Require(line.Length <= TagLineLimit && line.Text[line.Length] == 0);
        bytes = bytes.subspan(part.size());
    }
    return {step, std::string(line.Text.data(), line.Length)};
}

bool GreetingIn(std::span<const BYTE> bytes, std::size_t piece) {
    GreetingSearch search;
    bool found = false;
    while (!bytes.empty() && !found) {
        const auto part = bytes.first(piece < bytes.size() ? piece : bytes.size());
        found = FindGreeting(search, part);
        bytes = bytes.subspan(part.size());
    }
    return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::span<const BYTE> all(bytes, size);
    const std::size_t piece = size > 0 ? 1 + bytes[0] % 7 : 1;
    const Line whole = Collect(all, size + 1), pieces = Collect(all, piece);
    Require(whole.Step == pieces.Step);
    if (whole.Step == TagLineStep::Data) {
        Require(whole.Text == pieces.Text && whole.Text.size() > 2 &&
                whole.Text.find("ISO") == std::string::npos);
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const std::size_t mark = text.find("ISO");
    Require(GreetingIn(all, piece) == (mark != text.npos && text.find('\n', mark) != text.npos));

    IsWholeRfidReply(all);
    const TagGeometry geometry = GeometryOfTag(text.substr(0, TagLineLimit));
    const RegisterReply reply = ParseRegisterReply(text, geometry.BlockSize);
    if (reply.Answer == RegisterAnswer::Value) {
        Require(reply.Value.data() >= text.data() &&
                reply.Value.data() + reply.Value.size() <= text.data() + size);
    }
    const TagRange range = PlanTagRead(geometry, size > 1 ? bytes[1] * 8u : 0, size > 2 ? bytes[2] * 8u : 0);
    Require(range.FirstBlock <= range.EndBlock &&
            range.EndBlock <= std::max(geometry.EndBlock, range.FirstBlock));
    const auto memory = std::make_unique<TagText>();
    for (DWORD block = range.FirstBlock; block < range.EndBlock; ++block) {
        AppendTagBlock(*memory, reply.Answer == RegisterAnswer::Value ? reply.Value : text.substr(0, 16));
        Require(memory->Length < sizeof memory->Text);
    }
    char copied[64];
    CopyTagRange(*memory, range, copied);
    Require(std::string_view(copied, sizeof copied).find('\0') != std::string_view::npos);
    return 0;
}
