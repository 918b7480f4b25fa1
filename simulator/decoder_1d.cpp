#include "simulator/decoder_1d.h"

#include <array>
#include <cstdio>

namespace readers {
namespace {

constexpr Milliseconds CommandGap{200};
constexpr std::size_t SessionSecondsAt = 21;  // in the parameter block
constexpr std::uint8_t Ean128 = 'U';

std::optional<std::uint8_t> LetterOf(std::string_view text) {
    const bool letter = text.size() == 1 && text.front() > ' ' && text.front() <= '~';
    return letter ? std::optional(static_cast<std::uint8_t>(text.front())) : std::nullopt;
}

}  // namespace

Decoder1D::Decoder1D(Wire& wire, std::function<void()> powerLoss)
    : Link(wire),
      Labels(LetterOf),
      Loader(
          wire, [this] { Restart(); }, std::move(powerLoss)),
      Block(ParameterBytes, 0),
      Version(BytesOf("Ver 1.00")),
      Silence(wire),
      Session(wire),
      Decoder(wire),
      Restarter(wire) {}

void Decoder1D::Receive(std::span<const std::uint8_t> bytes) {
    if (Now == Mode::Restarting) {
        return;
    }
    if (Now == Mode::Loading) {
        Loader.Receive(bytes);
        return;
    }
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const EscapeReceived& received : Incoming.Push(bytes.subspan(at, 1))) {
            switch (received.What) {
                case EscapeReceived::Command:
                    HandleCommand(received.Text);
                    break;
                case EscapeReceived::Asleep:
                    Link.Report("asleep", received.Text);
                    break;
                case EscapeReceived::Noise:
                    Link.Report("noise", HexText(BytesOf(received.Text)));
                    break;
            }
        }
        if (Now == Mode::Loading) {
            Loader.Receive(bytes.subspan(at + 1));
            return;
        }
    }
    Silence.Stop();
    if (Incoming.Waiting()) {
        Silence.Start(CommandGap, [this] { Link.Report("noise", HexText(BytesOf(Incoming.Abandon()))); });
    }
}

void Decoder1D::HandleCommand(const std::string& command) {
    Link.Report("command", command);
    if (command == "ON") {
        Reading = true;
        // A time of 0 reads until OFF.
        if (Block[SessionSecondsAt] != 0) {
            Session.Start(Milliseconds(Block[SessionSecondsAt] * 1000), [this] {
                Link.Report("decode-timeout");
                EndReading();
            });
        }
        LookForLabel();
    } else if (command == "OFF") {
        EndReading();
    } else if (command == "SET") {
        Link.Answer(BytesOf(ParameterDigitsOf(Block) + '\r'));
    } else if (command.starts_with("SAVE")) {
        Save(command.substr(4));
    } else if (command == "VER") {
        Bytes reply = {Escape};
        reply.insert(reply.end(), Version.begin(), Version.end());
        reply.push_back(CarriageReturn);
        Link.Answer(std::move(reply));
    } else if (command == "DOWNLOAD") {
        EndReading();
        Silence.Stop();
        Now = Mode::Loading;
        Loader.Enter();
    } else {
        Link.Report("unknown-command", command);
        Link.Answer(BytesOf("NG\r"));
    }
}

void Decoder1D::Save(const std::string& digits) {
    const auto block = ParameterBlockOf(digits);
    if (!block || Link.Faults().Take("refuse-save")) {
        Link.Report("save-refused", block ? "fault" : "digits");
        Link.Answer(BytesOf("NG\r"));
        return;
    }
    Block = *block;
    Link.Report("saved", digits);
    Link.Answer(BytesOf("OK\r"));
}

void Decoder1D::LookForLabel() {
    if (Reading && !Labels.Empty() && !Decoder.Set()) {
        Decoder.Start(DecodeTime, [this] { Decode(); });
    }
}

void Decoder1D::Decode() {
    EndReading();
    if (Labels.Empty()) {
        return;
    }
    const Label label = Labels.Front();
    Labels.Consume();
    // The reader puts the code identifier of its symbology in front of EAN-128 data.
    Bytes data = label.Type == Ean128 ? BytesOf("]C1") : Bytes();
    data.insert(data.end(), label.Data.begin(), label.Data.end());
    const auto digits = Link.Faults().Take("length-digits");
    if (!digits && (data.empty() || data.size() > LargestMessageData)) {
        Link.Report("decode-lost", "length=" + std::to_string(data.size()));
        return;
    }
    Bytes message = EscapeMessageOf(label.Type, data, digits ? digits->front() : "");
    if (const auto values = Link.Faults().Take("cut")) {
        message.resize(std::min<std::size_t>(message.size(), NumberOf(values->front()).value_or(0)));
    }
    ++Decodes;
    Link.Report("decode-sent", "type=" + std::string(1, static_cast<char>(label.Type)) +
                                   " length=" + std::to_string(data.size()));
    Link.Send(std::move(message));
}

void Decoder1D::EndReading() {
    Reading = false;
    Session.Stop();
    Decoder.Stop();
}

void Decoder1D::Restart() {
    Now = Mode::Restarting;
    Link.Report("restart", std::to_string(RestartTime.count()));
    Restarter.Start(RestartTime, [this] { Boot(); });
}

// Without a whole firmware only the boot loader runs, and it knows nothing but DOWNLOAD.
void Decoder1D::Boot() {
    Loader.Reset();
    Incoming.Abandon();
    if (Loader.Damaged()) {
        Now = Mode::Loading;
        Link.Report("started", "loader");
        return;
    }
    if (!Loader.Memory().Empty()) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "Ver 2.%04X", Loader.Memory().Fingerprint() & 0xFFFFu);
        Version = BytesOf(text.data());
    }
    Now = Mode::Running;
    Link.Report("started", TextOf(Version));
}

void Decoder1D::PowerOff() {
    EndReading();
    Silence.Stop();
    Restarter.Stop();
    Loader.Reset();
    Incoming.Abandon();
    Now = Mode::Restarting;
}

void Decoder1D::PowerOn() {
    Boot();
}

bool Decoder1D::Command(std::string_view word, std::string_view rest, std::string& problem) {
    bool added = false;
    if (Labels.Command(word, rest, problem, added)) {
        if (added) {
            LookForLabel();
        }
        return true;
    }
    const auto number = NumberOf(rest);
    if (word == "version") {
        const auto text = BytesFromArgument(rest);
        if (!text) {
            problem = "version TEXT";
            return true;
        }
        Version = *text;
    } else if (word == "decode-ms" && number) {
        DecodeTime = Milliseconds(*number);
    } else if (word == "restart-ms" && number) {
        RestartTime = Milliseconds(*number);
    } else if (word == "erase-ms" && number) {
        Loader.SetEraseTime(Milliseconds(*number));
    } else {
        return false;
    }
    return true;
}

std::vector<std::string> Decoder1D::State() const {
    constexpr std::array Modes = {"running", "loading", "restarting"};
    return {std::string("reader 1d mode=") + Modes[static_cast<std::size_t>(Now)] + " reading=" +
                (Reading ? "on" : "off") + " decodes=" + std::to_string(Decodes) + ' ' + Labels.State(),
            Loader.State()};
}

std::vector<std::string> Decoder1D::Parameters() const {
    return {"block " + HexText(Block)};
}

}  // namespace readers
