#include "simulator/scan_engine.h"

namespace readers {
namespace {

constexpr Milliseconds PacketGap{200};
constexpr int LargestTries = 3;
constexpr unsigned DefaultRate = 9600;
constexpr std::uint16_t ParamBaud = 0x9C;
constexpr std::uint16_t ParamSessionTime = 0x88;
constexpr std::uint8_t DefaultSessionTenths = 30;

std::optional<std::uint8_t> CodeIdOf(std::string_view text) {
    const auto number = NumberOf(text);
    return number && *number <= 0xFF ? std::optional(static_cast<std::uint8_t>(*number)) : std::nullopt;
}

}  // namespace

ScanEngine::ScanEngine(Wire& wire, EngineModel model)
    : Link(wire),
      Model(model),
      Labels(CodeIdOf),
      Revision(
          BytesOf(model == EngineModel::Laser ? "VLR01-S-R00 20050117 G23" : "VIM02-S-R00 20050412 P07")),
      Silence(wire),
      Session(wire),
      Decoder(wire),
      AckWait(wire) {}

void ScanEngine::Receive(std::span<const std::uint8_t> bytes) {
    for (const SsiReceived& received : Incoming.Push(bytes)) {
        switch (received.What) {
            case SsiReceived::Packet:
                HandlePacket(received.Content);
                break;
            case SsiReceived::BadChecksum:
                Link.Report("bad-checksum", HexText(received.Content));
                AnswerNak(NakResend);
                break;
            case SsiReceived::Noise:
                Link.Report("noise", HexText(received.Content));
                break;
        }
    }
    Silence.Stop();
    if (Incoming.Waiting()) {
        Silence.Start(PacketGap, [this] { Link.Report("noise", HexText(Incoming.Abandon())); });
    }
}

void ScanEngine::HandlePacket(std::span<const std::uint8_t> packet) {
    const std::uint8_t opcode = packet[1];
    const bool parameters = opcode == ParamSend;
    if (packet[2] != SourceHost || packet[3] != (parameters ? StatusPermanent : 0)) {
        Link.Report("odd-header", HexText(packet.first(4)));
    }
    const bool sized = opcode == CmdNak ? packet.size() == 5 : parameters || packet.size() == 4;
    if (!sized) {
        Link.Report("odd-length", HexText(packet));
        AnswerNak(NakUnknown);
        return;
    }
    switch (opcode) {
        case RequestRevision:
            Link.Answer(SsiPacketOf(ReplyRevision, 0, Revision));
            break;
        case ParamDefaults:
            SetDefaults();
            break;
        case ParamSend:
            TakeParameters(packet);
            break;
        case AimOn:
        case AimOff:
            Aiming = opcode == AimOn;
            Link.Report("aim", Aiming ? "on" : "off");
            AnswerAck();
            break;
        case StartDecode:
            AnswerAck();
            Start();
            break;
        case StopDecode:
            AnswerAck();
            Stop();
            break;
        case CmdAck:
            Acknowledged();
            break;
        case CmdNak:
            if (Sending) {
                Resend("nak");
            } else {
                Link.Report("unexpected-nak");
            }
            break;
        default:
            Link.Report("unknown-opcode", HexText(packet));
            AnswerNak(NakUnknown);
    }
}

void ScanEngine::AnswerAck() {
    Link.Answer(SsiPacketOf(CmdAck, 0, {}));
}

void ScanEngine::AnswerNak(std::uint8_t cause) {
    Link.Answer(SsiPacketOf(CmdNak, 0, Bytes{cause}));
}

// The acknowledgement still leaves at the old speed; whoever set the defaults finds the engine at 9600.
void ScanEngine::SetDefaults() {
    Held.clear();
    Link.Report("defaults");
    AnswerAck();
    Link.WhenSent([this] { Link.SetRate(DefaultRate); });
}

void ScanEngine::TakeParameters(std::span<const std::uint8_t> packet) {
    const auto parameters = SsiParametersOf(packet);
    if (!parameters) {
        Link.Report("odd-parameters", HexText(packet));
        AnswerNak(NakUnknown);
        return;
    }
    unsigned rate = 0;
    for (const SsiParameter& parameter : *parameters) {
        if (parameter.Number == ParamBaud && (rate = SsiRateOf(parameter.Value)) == 0) {
            Link.Report("odd-baud", std::to_string(parameter.Value));
            AnswerNak(NakUnknown);
            return;
        }
    }
    if (const auto values = Link.Faults().Take("nak-params")) {
        AnswerNak(static_cast<std::uint8_t>(NumberOf(values->front()).value_or(0)));
        return;
    }
    Link.Report("parameters",
                "count=" + std::to_string(parameters->size()) + " beep=" + HexText(packet.subspan(4, 1)));
    for (const SsiParameter& parameter : *parameters) {
        Held[parameter.Number] = parameter.Value;
        Link.Print("param " + SsiParameterName(parameter.Number) + " = " + HexText(Bytes{parameter.Value}));
    }
    if (!Link.Faults().Take("no-ack")) {
        AnswerAck();
    }
    if (rate != 0) {
        Link.WhenSent([this, rate] { Link.SetRate(rate); });
    }
}

Milliseconds ScanEngine::SessionTime() const {
    const auto found = Held.find(ParamSessionTime);
    const std::uint8_t tenths =
        found == Held.end() || found->second == 0 ? DefaultSessionTenths : found->second;
    return Milliseconds(tenths * 100);
}

void ScanEngine::Start() {
    if (Sending) {
        Link.Report("busy");
        return;
    }
    Decoding = true;
    Link.Report("decoding", "on");
    Session.Start(SessionTime(), [this] {
        Link.Report("decode-timeout");
        EndDecoding();
    });
    LookForLabel();
}

void ScanEngine::Stop() {
    if (Decoding) {
        EndDecoding();
    }
}

void ScanEngine::EndDecoding() {
    Decoding = false;
    Session.Stop();
    Decoder.Stop();
    Link.Report("decoding", "off");
}

void ScanEngine::LookForLabel() {
    if (Decoding && !Labels.Empty() && !Decoder.Set()) {
        Decoder.Start(DecodeTime, [this] { Decode(); });
    }
}

void ScanEngine::Decode() {
    EndDecoding();
    if (Labels.Empty()) {
        return;
    }
    const Label label = Labels.Front();
    Labels.Consume();
    ++Decodes;
    Sending = Transmission{SsiDecodePackets(label.Type, label.Data, PacketData)};
    if (Link.Faults().Take("continuation")) {
        Bytes last(Sending->Packets.back().begin(), Sending->Packets.back().end() - 2);
        Sending->Packets.back() = SsiPacketOf(DecodeData, StatusContinued, std::span(last).subspan(4));
    }
    Link.Report("decode-sent", "type=" + std::to_string(label.Type) +
                                   " length=" + std::to_string(label.Data.size()) +
                                   " packets=" + std::to_string(Sending->Packets.size()));
    SendNextPacket();
}

void ScanEngine::SendNextPacket() {
    ++Sending->Tries;
    Bytes packet = Sending->Packets[Sending->Next];
    if (Sending->Tries > 1) {
        const Bytes content(packet.begin() + 4, packet.end() - 2);
        packet = SsiPacketOf(DecodeData, packet[3] | StatusResent, content);
    }
    if (const auto values = Link.Faults().Take("opcode")) {
        Bytes content(packet.begin() + 4, packet.end() - 2);
        packet =
            SsiPacketOf(static_cast<std::uint8_t>(NumberOf(values->front()).value_or(0)), packet[3], content);
    }
    if (Link.Faults().Take("checksum")) {
        packet.back() ^= 0x55;
    }
    if (const auto values = Link.Faults().Take("length-byte")) {
        packet[0] = static_cast<std::uint8_t>(NumberOf(values->front()).value_or(0));
    }
    Link.Send(std::move(packet));
    Link.WhenSent([this] {
        if (Sending) {
            AckWait.Start(AckTime, [this] { Resend("timeout"); });
        }
    });
}

void ScanEngine::Resend(std::string_view why) {
    AckWait.Stop();
    const std::string place = "packet=" + std::to_string(Sending->Next + 1) + " why=" + std::string(why);
    if (Sending->Tries >= LargestTries) {
        Sending.reset();
        Link.Report("decode-lost", place);
        return;
    }
    Link.Report("resend", place);
    SendNextPacket();
}

void ScanEngine::Acknowledged() {
    if (!Sending) {
        Link.Report("unexpected-ack");
        return;
    }
    AckWait.Stop();
    Sending->Tries = 0;
    if (++Sending->Next < Sending->Packets.size()) {
        SendNextPacket();
        return;
    }
    Sending.reset();
    Link.Report("decode-acked");
}

void ScanEngine::PowerOff() {
    Incoming.Abandon();
    Sending.reset();
    Decoding = false;
    Aiming = false;
    for (Timer* timer : {&Silence, &Session, &Decoder, &AckWait}) {
        timer->Stop();
    }
}

bool ScanEngine::Command(std::string_view word, std::string_view rest, std::string& problem) {
    bool added = false;
    if (Labels.Command(word, rest, problem, added)) {
        if (added) {
            LookForLabel();
        }
        return true;
    }
    const auto number = NumberOf(rest);
    if (word == "revision") {
        const auto text = BytesFromArgument(rest);
        if (!text || text->size() > LargestPacketData) {
            problem = "revision TEXT, at most 251 bytes";
            return true;
        }
        Revision = *text;
    } else if (word == "decode-ms" && number) {
        DecodeTime = Milliseconds(*number);
    } else if (word == "ack-ms" && number) {
        AckTime = Milliseconds(*number);
    } else if (word == "packet-size" && number && *number >= 2 && *number <= LargestPacketData) {
        PacketData = *number;
    } else {
        return false;
    }
    return true;
}

std::vector<std::string> ScanEngine::State() const {
    return {std::string("reader ") + (Model == EngineModel::Laser ? "laser" : "imager") +
            " decoding=" + (Decoding ? "on" : "off") + " aim=" + (Aiming ? "on" : "off") + " sending=" +
            (Sending ? "yes" : "no") + " decodes=" + std::to_string(Decodes) + ' ' + Labels.State()};
}

std::vector<std::string> ScanEngine::Parameters() const {
    std::vector<std::string> lines;
    for (const auto& [number, value] : Held) {
        lines.push_back("param " + SsiParameterName(number) + " = " + HexText(Bytes{value}));
    }
    return lines;
}

}  // namespace readers
