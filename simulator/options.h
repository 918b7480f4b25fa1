// The command line of vantrel-readers.
#pragma once

#include <string>
#include <vector>

namespace readers {

enum class BarcodeModel { None, Decoder1D, Laser, Imager };
enum class RfidModel { None, Model90, Model100 };

struct Options {
    std::string Terminal;  // folder of the links COM1 and COM2
    BarcodeModel Barcode = BarcodeModel::Imager;
    RfidModel Rfid = RfidModel::None;
    unsigned BarcodeRate = 0;  // 0: the usual rate of the model
    unsigned RfidRate = 57600;
    bool Stay = false;     // the end of standard input does not end the program
    bool Wire = true;      // print what passes on the wire
    std::string Commands;  // a file of commands to run first
    std::string Replay;    // a wire trace to play back instead of simulating readers
};

// False with `problem` set when the line cannot be understood. `words` are the arguments without the program.
bool ParseOptions(const std::vector<std::string>& words, Options& options, std::string& problem);

extern const char* const Usage;

}  // namespace readers
