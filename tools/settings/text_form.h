// The settings record as commented TOML, and back.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/record.h"

// The record in DeviceFlags and both blocks: every item by its name, and under [words] what else is not 0.
std::string WriteRecord();

struct TextFault {
    unsigned Line;  // 1 is the first; 0: of the file as a whole
    std::string Message;
};

// Which readers a text is for; the fault where it is no settings text.
struct TextReaders {
    ReaderType Barcode = ReaderType::None;
    bool Rfid = false;
};
std::optional<TextReaders> ReadReaders(std::string_view text, std::vector<TextFault>& faults);

// Puts what the text names into the record, which is laid out for DeviceFlags. With faults the record is
// undefined: the caller drops it. `names` gets the items that the text names, when wanted.
void ReadRecord(std::string_view text, std::vector<TextFault>& faults,
                std::vector<std::string>* names = nullptr);
