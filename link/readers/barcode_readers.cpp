#include "link/readers/barcode_reader.h"

namespace {

constexpr const BarcodeReader* Readers[] = {&Decoder1DReader, &LaserReader, &ImagerReader};

}  // namespace

std::span<const BarcodeReader* const> BarcodeReaders() {
    return Readers;
}

const BarcodeReader* FindBarcodeReader(WORD deviceMask) {
    for (const BarcodeReader* reader : Readers) {
        if (deviceMask & reader->Bit) {
            return reader;
        }
    }
    return nullptr;
}

const BarcodeReader* FittedBarcodeReader() {
    return FindBarcodeReader(DeviceFlags);
}

bool DownloadSettings() {
    for (const BarcodeReader* reader : Readers) {
        if ((DeviceFlags & reader->Bit) && !reader->Download()) {
            return false;
        }
    }
    return true;
}
