#include "simulator/rfid_reader.h"

namespace readers {
namespace {

constexpr Milliseconds CommandGap{200};
constexpr std::uint8_t RateRegister = 0x0C;

unsigned RateOf(std::uint8_t code) {
    switch (code) {
        case 0:
            return 9600;
        case 1:
            return 19200;
        case 2:
            return 38400;
        case 3:
            return 57600;
        case 4:
            return 115200;
        default:
            return 0;
    }
}

}  // namespace

RfidReader::RfidReader(Wire& wire, bool multi)
    : Link(wire),
      Multi(multi),
      Version(BytesOf(multi ? "MultiISO 1.2" : "ISO15693 1.5")),
      Silence(wire),
      Announcement(wire),
      Finder(wire),
      Repeater(wire) {
    for (std::uint8_t code = 0; code <= 4; ++code) {
        if (RateOf(code) == wire.Rate()) {
            SetUp[RateRegister] = code;
        }
    }
}

void RfidReader::SayLine(std::string_view text) {
    Link.Answer(BytesOf(std::string(text) + "\r\n"));
}

// The short text and its line end leave in one burst, so that no half of it is left for whoever reads next.
void RfidReader::PortOpened() {
    Rest();
    if (AnnounceAt == 0 || ++Openings < AnnounceAt) {
        return;
    }
    Openings = 0;
    Announcement.Start(AnnounceTime, [this] {
        Link.Report("announced");
        Bytes line = Version;
        line.insert(line.end(), {'\r', '\n'});
        Link.Send(std::move(line));
    });
}

void RfidReader::PortClosed() {
    Rest();
}

void RfidReader::PowerOff() {
    Rest();
}

void RfidReader::Rest() {
    Incoming.Abandon();
    Searching = false;
    Selected = false;
    for (Timer* timer : {&Silence, &Announcement, &Finder, &Repeater}) {
        timer->Stop();
    }
}

void RfidReader::Receive(std::span<const std::uint8_t> bytes) {
    for (const RfidReceived& command : Incoming.Push(bytes)) {
        Handle(command);
    }
    Silence.Stop();
    if (Incoming.Waiting()) {
        Silence.Start(CommandGap, [this] { Link.Report("noise", HexText(BytesOf(Incoming.Abandon()))); });
    }
}

void RfidReader::Handle(const RfidReceived& command) {
    const bool idle = command.What == RfidReceived::Search || command.What == RfidReceived::Noise;
    if (Searching && !idle) {
        // Any command ends a search that goes on, and the reader says so first.
        Searching = false;
        Finder.Stop();
        Repeater.Stop();
        SayLine("S");
    }
    switch (command.What) {
        case RfidReceived::Version:
            SayLine(Link.Faults().Take("version-s") ? "S" : TextOf(Version));
            break;
        case RfidReceived::Wake:
            SayLine("S");
            break;
        case RfidReceived::Search:
            Search();
            break;
        case RfidReceived::Register:
            ReadRegister(command.Number);
            break;
        case RfidReceived::Write: {
            SetUp[command.Number] = command.Value;
            const std::string value = HexText(Bytes{command.Value});
            Link.Print("register " + HexText(Bytes{command.Number}) + " = " + value);
            SayLine(value);
            break;
        }
        case RfidReceived::Restart: {
            // The answer leaves at the old speed; what was written holds from then on.
            SayLine(TextOf(Version));
            const unsigned rate = SetUp.contains(RateRegister) ? RateOf(SetUp[RateRegister]) : 0;
            if (rate != 0) {
                Link.WhenSent([this, rate] { Link.SetRate(rate); });
            }
            break;
        }
        case RfidReceived::Noise:
            Link.Report("noise", HexText(BytesOf(command.Text)));
            break;
    }
}

void RfidReader::Search() {
    Selected = false;
    if (Link.Faults().Take("s-line")) {
        Searching = false;
        Finder.Stop();
        Repeater.Stop();
        SayLine("S");
        return;
    }
    if (!Searching) {
        Link.Report("searching");
    }
    Searching = true;
    if ((InField || Line) && !Finder.Set()) {
        Finder.Start(SearchTime, [this] { Report(); });
    }
    if (RepeatTime.count() != 0) {
        Repeater.Start(RepeatTime, [this] {
            Searching = false;
            Finder.Stop();
            SayLine("S");
        });
    }
}

void RfidReader::Report() {
    if (!Searching || (!InField && !Line)) {
        return;
    }
    Searching = false;
    Repeater.Stop();
    ++Reads;
    if (Line) {
        Link.Report("line-sent", "length=" + std::to_string(Line->size()));
        Link.Send(*std::exchange(Line, std::nullopt));
        return;
    }
    Selected = true;
    Link.Report("tag-sent", std::string("type=") + InField->Type + " uid=" + InField->Uid);
    Link.Send(BytesOf(InField->Type + InField->Uid + "\r\n"));
}

bool RfidReader::RegisterFault(std::uint8_t number) {
    FaultSet& faults = Link.Faults();
    if (faults.Take("tag-gone")) {
        InField.reset();
        Link.Report("tag-gone");
    }
    for (const auto& [fault, reply] : {std::pair("register-n", "N"), std::pair("register-f", "F"),
                                       std::pair("register-i", "I"), std::pair("register-s", "S")}) {
        if (faults.Take(fault)) {
            SayLine(reply);
            return true;
        }
    }
    if (const auto values = faults.Take("register-text")) {
        SayLine(values->front());
        return true;
    }
    if (const auto bad = BadBlocks.find(number); bad != BadBlocks.end()) {
        SayLine(std::string(1, bad->second));
        return true;
    }
    return false;
}

void RfidReader::ReadRegister(std::uint8_t number) {
    if (RegisterFault(number)) {
        return;
    }
    if (!InField || !Selected) {
        SayLine("N");
        return;
    }
    const auto text = BlockText(*InField, number);
    if (!text) {
        SayLine("F");
        return;
    }
    Link.Report("block-read", std::to_string(number));
    SayLine(Link.Faults().Take("register-s-value") ? "S\r\n" + *text : *text);
}

bool RfidReader::PresentTag(std::string_view rest) {
    const auto words = WordsOf(rest);
    if (words.size() < 2 || words[0].size() != 1) {
        return false;
    }
    std::optional<Bytes> content;
    if (words.size() > 2) {
        content = BytesFromArgument(RestAfter(rest, 2));
        if (!content) {
            return false;
        }
    }
    auto tag = MakeTag(words[0].front(), words[1], content);
    if (!tag) {
        return false;
    }
    InField = std::move(*tag);
    Selected = false;
    return true;
}

// "block NUMBER HEX" writes into the tag; "block NUMBER n|f|i" makes it fail; "block NUMBER ok" heals it.
bool RfidReader::SetBlock(std::string_view rest) {
    const auto words = WordsOf(rest);
    const auto number = words.size() == 2 ? NumberOf(words[0]) : std::nullopt;
    if (!number || *number > 0xFF) {
        return false;
    }
    if (words[1] == "n" || words[1] == "f" || words[1] == "i") {
        BadBlocks[*number] = static_cast<char>(words[1].front() - 'a' + 'A');
        return true;
    }
    if (words[1] == "ok") {
        BadBlocks.erase(*number);
        return true;
    }
    const auto bytes = BytesFromHex(words[1]);
    if (!bytes || !InField || !BlockText(*InField, *number) || bytes->size() != InField->Geometry.BlockSize) {
        return false;
    }
    const std::size_t at = (*number - InField->Geometry.FirstBlock) * InField->Geometry.BlockSize;
    std::copy(bytes->begin(), bytes->end(), InField->Memory.begin() + static_cast<std::ptrdiff_t>(at));
    return true;
}

bool RfidReader::Command(std::string_view word, std::string_view rest, std::string& problem) {
    const auto number = NumberOf(rest);
    if (word == "tag") {
        if (!PresentTag(rest)) {
            problem = "tag TYPE UID [DATA], no more data than the tag has memory";
            return true;
        }
    } else if (word == "line") {
        Line = BytesFromArgument(rest);
        if (!Line || Line->empty()) {
            Line.reset();
            problem = "line DATA";
            return true;
        }
    } else if (word == "untag") {
        InField.reset();
        Line.reset();
        Selected = false;
    } else if (word == "block") {
        if (!SetBlock(rest)) {
            problem = "block NUMBER HEX|n|f|i|ok, with as many bytes as a block of the tag has";
        }
        return true;
    } else if (word == "rfid-version") {
        Version = BytesFromArgument(rest).value_or(Version);
    } else if (word == "announce" && (number || rest == "never")) {
        AnnounceAt = number.value_or(0);
        Openings = 0;
    } else if (word == "announce-ms" && number) {
        AnnounceTime = Milliseconds(*number);
    } else if (word == "search-ms" && number) {
        SearchTime = Milliseconds(*number);
    } else if (word == "repeat-ms" && number) {
        RepeatTime = Milliseconds(*number);
    } else {
        return false;
    }
    if (Searching && (InField || Line) && !Finder.Set()) {
        Finder.Start(SearchTime, [this] { Report(); });
    }
    return true;
}

std::vector<std::string> RfidReader::State() const {
    return {std::string("reader rfid ") + (Multi ? "100" : "90") +
            " searching=" + (Searching ? "yes" : "no") +
            " tag=" + (InField ? InField->Type + InField->Uid : "none") + " reads=" + std::to_string(Reads)};
}

std::vector<std::string> RfidReader::Parameters() const {
    std::vector<std::string> lines;
    for (const auto& [number, value] : SetUp) {
        lines.push_back("register " + HexText(Bytes{number}) + " = " + HexText(Bytes{value}));
    }
    return lines;
}

}  // namespace readers
