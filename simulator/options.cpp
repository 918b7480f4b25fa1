#include "simulator/options.h"

#include <map>

#include "simulator/bytes.h"

namespace readers {

const char* const Usage =
    "usage: vantrel-readers --terminal DIR [options]\n"
    "  --barcode 1d|laser|imager|none   the barcode reader on COM1 (default: imager)\n"
    "  --rfid 90|100|none               the RFID reader on COM2 (default: none)\n"
    "  --barcode-rate N                 its bit rate at the start (default: its working rate)\n"
    "  --rfid-rate N                    its bit rate at the start (default: 57600)\n"
    "  --commands FILE                  commands to run before those on standard input\n"
    "  --replay FILE                    play the readers' side of a wire trace back\n"
    "  --stay                           stay when standard input ends\n"
    "  --quiet                          print no wire traffic\n";

namespace {

const std::map<std::string, BarcodeModel> BarcodeModels = {{"1d", BarcodeModel::Decoder1D},
                                                           {"laser", BarcodeModel::Laser},
                                                           {"imager", BarcodeModel::Imager},
                                                           {"none", BarcodeModel::None}};
const std::map<std::string, RfidModel> RfidModels = {
    {"90", RfidModel::Model90}, {"100", RfidModel::Model100}, {"none", RfidModel::None}};

bool IsRate(unsigned rate) {
    for (unsigned known : {1200u, 2400u, 4800u, 9600u, 19200u, 38400u, 57600u, 115200u}) {
        if (rate == known) {
            return true;
        }
    }
    return false;
}

template <typename Model>
bool Choose(const std::map<std::string, Model>& models, const std::string& name, Model& model) {
    const auto found = models.find(name);
    if (found == models.end()) {
        return false;
    }
    model = found->second;
    return true;
}

bool SetValue(const std::string& name, const std::string& value, Options& options, bool& known) {
    known = true;
    if (name == "--terminal") {
        options.Terminal = value;
        return !value.empty();
    }
    if (name == "--commands") {
        options.Commands = value;
        return !value.empty();
    }
    if (name == "--replay") {
        options.Replay = value;
        return !value.empty();
    }
    if (name == "--barcode") {
        return Choose(BarcodeModels, value, options.Barcode);
    }
    if (name == "--rfid") {
        return Choose(RfidModels, value, options.Rfid);
    }
    if (name == "--barcode-rate" || name == "--rfid-rate") {
        unsigned& rate = name == "--rfid-rate" ? options.RfidRate : options.BarcodeRate;
        rate = NumberOf(value).value_or(0);
        return IsRate(rate);
    }
    known = false;
    return false;
}

}  // namespace

bool ParseOptions(const std::vector<std::string>& words, Options& options, std::string& problem) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& name = words[i];
        if (name == "--stay") {
            options.Stay = true;
        } else if (name == "--quiet") {
            options.Wire = false;
        } else {
            const bool last = i + 1 == words.size();
            bool known = false;
            if (!SetValue(name, last ? "" : words[++i], options, known)) {
                problem = !known ? "unknown option " + name : "no usable value for " + name;
                return false;
            }
        }
    }
    if (options.Terminal.empty()) {
        problem = "--terminal is needed";
        return false;
    }
    if (options.BarcodeRate == 0) {
        options.BarcodeRate = options.Barcode == BarcodeModel::Laser ? 38400 : 115200;
    }
    return true;
}

}  // namespace readers
