// One simulated terminal: both lines, the readers on them, and the commands of the user.
#pragma once

#include <memory>

#include "simulator/line.h"
#include "simulator/options.h"

namespace readers {

class Decoder1D;

class Terminal {
  public:
    Terminal(EventLoop& loop, Console& console, const Options& options);
    ~Terminal();

    // Makes the folder, the pseudo-terminals and their links, and says "ready". False with `problem` set.
    bool Start(std::string& problem);
    // Takes the links away.
    void Stop();
    // Runs one command and prints its answer: lines, then "ok" or "error TEXT".
    void Command(std::string_view text);

  private:
    bool Run(std::string_view word, std::string_view rest, std::string& problem);
    bool RunOnLine(std::string_view word, std::string_view rest, std::string& problem, bool& known);
    void RunFault(std::string_view rest, std::string& problem);
    void RunImage(std::string_view rest, std::string& problem);
    void ShowState();
    Line* LineNamed(std::string_view name);

    EventLoop& Loop;
    Console& Out;
    const Options Chosen;
    Line Com1;
    Line Com2;
    std::unique_ptr<Reader> Barcode;
    std::unique_ptr<Reader> Rfid;
    Decoder1D* Decoder = nullptr;  // Barcode, when it is the 1D reader
};

}  // namespace readers
