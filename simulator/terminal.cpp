#include "simulator/terminal.h"

#include <cstdio>
#include <fstream>

#include "simulator/decoder_1d.h"
#include "simulator/rfid_reader.h"
#include "simulator/scan_engine.h"

namespace readers {
namespace {

constexpr std::size_t LargestImage = 64u << 20;

}  // namespace

Terminal::Terminal(EventLoop& loop, Console& console, const Options& options)
    : Loop(loop),
      Out(console),
      Chosen(options),
      Com1(loop, console, "com1", std::filesystem::path(options.Terminal) / "COM1", options.BarcodeRate),
      Com2(loop, console, "com2", std::filesystem::path(options.Terminal) / "COM2", options.RfidRate) {
    if (options.Barcode == BarcodeModel::Decoder1D) {
        auto decoder = std::make_unique<Decoder1D>(Com1, [this] { Com1.SetPower(false); });
        Decoder = decoder.get();
        Barcode = std::move(decoder);
    } else if (options.Barcode != BarcodeModel::None) {
        Barcode = std::make_unique<ScanEngine>(
            Com1, options.Barcode == BarcodeModel::Laser ? EngineModel::Laser : EngineModel::Imager);
    }
    if (options.Rfid != RfidModel::None) {
        Rfid = std::make_unique<RfidReader>(Com2, options.Rfid == RfidModel::Model100);
    }
    Com1.Attach(Barcode.get());
    Com2.Attach(Rfid.get());
    Com1.ShowWire(options.Wire);
    Com2.ShowWire(options.Wire);
}

Terminal::~Terminal() {
    Stop();
}

bool Terminal::Start(std::string& problem) {
    if (!MakeTerminalFolder(Chosen.Terminal, problem) || !Com1.Terminal().Plug(problem) ||
        !Com2.Terminal().Plug(problem)) {
        Stop();
        return false;
    }
    Out.Print("ready com1=" + Com1.Terminal().Device() + " com2=" + Com2.Terminal().Device());
    return true;
}

void Terminal::Stop() {
    Com1.Attach(nullptr);
    Com2.Attach(nullptr);
    Com1.Terminal().Unplug();
    Com2.Terminal().Unplug();
}

Line* Terminal::LineNamed(std::string_view name) {
    return name == "com1" ? &Com1 : name == "com2" ? &Com2 : nullptr;
}

void Terminal::Command(std::string_view text) {
    const auto words = WordsOf(text);
    if (words.empty() || words.front().starts_with('#')) {
        return;
    }
    std::string problem;
    if (!Run(words.front(), RestAfter(text, 1), problem)) {
        problem = "unknown command or wrong values: " + std::string(text.substr(0, 200));
    }
    Out.Print(problem.empty() ? "ok" : "error " + problem);
}

bool Terminal::Run(std::string_view word, std::string_view rest, std::string& problem) {
    bool known = false;
    if (RunOnLine(word, rest, problem, known) || known) {
        return true;
    }
    const auto number = NumberOf(rest);
    if (word == "quit") {
        Loop.Stop();
    } else if (word == "sleep" && number) {
        Out.Pause(Milliseconds(*number));
    } else if (word == "wire" && (rest == "on" || rest == "off")) {
        Com1.ShowWire(rest == "on");
        Com2.ShowWire(rest == "on");
    } else if (word == "receive-time" && (rest == "on" || rest == "off")) {
        Com1.CountReceiveTime(rest == "on");
        Com2.CountReceiveTime(rest == "on");
    } else if (word == "fault") {
        RunFault(rest, problem);
    } else if (word == "faults") {
        for (Line* line : {&Com1, &Com2}) {
            for (const std::string& fault : line->Faults().Describe()) {
                Out.Print("fault " + line->Name() + ' ' + fault);
            }
        }
    } else if (word == "state") {
        ShowState();
    } else if (word == "params") {
        for (const Reader* reader : {Barcode.get(), Rfid.get()}) {
            for (const std::string& line : reader ? reader->Parameters() : std::vector<std::string>()) {
                Out.Print(line);
            }
        }
    } else if (word == "image" && Decoder) {
        RunImage(rest, problem);
    } else {
        for (Reader* reader : {Barcode.get(), Rfid.get()}) {
            if (reader && reader->Command(word, rest, problem)) {
                return true;
            }
        }
        return false;
    }
    return true;
}

// Commands whose first value is the line they are for; "power" without it means COM1.
bool Terminal::RunOnLine(std::string_view word, std::string_view rest, std::string& problem, bool& known) {
    known = word == "raw" || word == "random" || word == "power" || word == "plug" || word == "unplug" ||
            word == "break" || word == "rate";
    if (!known) {
        return false;
    }
    const auto words = WordsOf(rest);
    Line* line = words.empty() ? nullptr : LineNamed(words.front());
    if (line) {
        rest = RestAfter(rest, 1);
    } else if (word == "power") {
        line = &Com1;
    } else {
        problem = "which line: com1 or com2?";
        return true;
    }
    if (word == "raw") {
        const auto bytes = BytesFromHex(rest);
        if (bytes && !bytes->empty()) {
            line->Send(*bytes);
        } else {
            problem = "raw com1|com2 HEX";
        }
    } else if (word == "random") {
        const auto bytes = BytesFromArgument("random:" + std::string(rest));
        if (bytes && !bytes->empty()) {
            line->Send(*bytes);
        } else {
            problem = "random com1|com2 COUNT[:SEED]";
        }
    } else if (word == "power") {
        if (rest == "on" || rest == "off") {
            line->SetPower(rest == "on");
        } else {
            problem = "power [com1|com2] on|off";
        }
    } else if (word == "plug") {
        if (!line->Terminal().Plugged()) {
            line->Terminal().Plug(problem);
        }
        if (problem.empty()) {
            Out.Print("plugged " + line->Name() + '=' + line->Terminal().Device());
        }
    } else if (word == "unplug") {
        line->Terminal().Unplug();
    } else if (word == "rate") {
        Options probe;
        if (ParseOptions({"--terminal", "x", "--rfid-rate", std::string(rest)}, probe, problem)) {
            line->SetRate(probe.RfidRate);
        }
    } else {
        problem = "a pseudo-terminal carries no break";
    }
    return true;
}

void Terminal::RunFault(std::string_view rest, std::string& problem) {
    auto words = WordsOf(rest);
    if (words.empty() || words.front() == "list") {
        for (const FaultKind& kind : FaultKinds()) {
            Out.Print("fault " + std::string(kind.Port.empty() ? "com1|com2" : kind.Port) + ' ' +
                      std::string(kind.Name) + (kind.Values.empty() ? "" : " ") + std::string(kind.Values) +
                      " : " + std::string(kind.Meaning));
        }
        return;
    }
    if (words.front() == "off") {
        Com1.Faults().Clear();
        Com2.Faults().Clear();
        return;
    }
    Line* line = LineNamed(words.front());
    const std::size_t first = line ? 1 : 0;
    const FaultKind* kind = words.size() > first ? FindFault(words[first]) : nullptr;
    if (!kind) {
        problem = "no such fault; \"fault list\" shows all";
    } else if (!line && kind->Port.empty()) {
        problem = "which line: com1 or com2?";
    } else if (line && !kind->Port.empty() && line != LineNamed(kind->Port)) {
        problem = "this fault is for " + std::string(kind->Port);
    } else {
        Line& target = line ? *line : *LineNamed(kind->Port);
        target.Faults().Arm(*kind, std::span(words).subspan(first + 1), problem);
    }
}

// "image" lists what was loaded; "image FILE [ADDRESS LENGTH]" writes it, or that range, gaps as FF.
void Terminal::RunImage(std::string_view rest, std::string& problem) {
    const auto segments = Decoder->Memory().Segments();
    const auto words = WordsOf(rest);
    if (words.empty()) {
        for (const auto& segment : segments) {
            char text[64];
            std::snprintf(text, sizeof text, "segment address=%08X length=%zu", segment.Address,
                          segment.Content.size());
            Out.Print(text);
        }
        return;
    }
    std::uint32_t address = segments.empty() ? 0 : segments.front().Address;
    std::uint64_t length =
        segments.empty() ? 0
                         : std::uint64_t{segments.back().Address} + segments.back().Content.size() - address;
    if (words.size() == 3 && NumberOf(words[1]) && NumberOf(words[2])) {
        address = *NumberOf(words[1]);
        length = *NumberOf(words[2]);
    } else if (words.size() != 1) {
        problem = "image [FILE [ADDRESS LENGTH]]";
        return;
    }
    if (length > LargestImage || address + length > 0x1'0000'0000) {
        problem = "too large a range: say ADDRESS and LENGTH";
        return;
    }
    const Bytes content = Decoder->Memory().Flat(address, length);
    std::ofstream file(words.front(), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        problem = "cannot write " + words.front();
        return;
    }
    char text[64];
    std::snprintf(text, sizeof text, "image address=%08X length=%zu", address, content.size());
    Out.Print(text);
}

void Terminal::ShowState() {
    for (const auto& [line, reader] : {std::pair(&Com1, Barcode.get()), std::pair(&Com2, Rfid.get())}) {
        Out.Print(line->State());
        for (const std::string& text : reader ? reader->State() : std::vector<std::string>()) {
            Out.Print(text);
        }
    }
}

}  // namespace readers
