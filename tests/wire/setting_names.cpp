#include "tests/wire/setting_names.h"

#include <stdexcept>

#include "settings/all_fields.h"

namespace {

struct Named {
    const char* Name;
    const Setting& Field;
};

const Named Names[] = {
    {"1d.Code39Enabled", decoder1d::Code39Enabled},
    {"general.ScanMode", general::ScanMode},
    {"general.BarcodeDecodeTimeout", general::BarcodeDecodeTimeout},
    {"general.AimDuration", general::AimDuration},
    {"general.RfidReadDuration", general::RfidReadDuration},
    {"general.DecodingAimingPattern", general::DecodingAimingPattern},
    {"engine.EnableUpcA", engine::EnableUpcA},
    {"engine.EnableCode128", engine::EnableCode128},
    {"engine.EnableRss14", engine::EnableRss14},
    {"engine.Code39LengthMode", engine::Code39LengthMode},
    {"engine.Code39Length2", engine::Code39Length2},
    {"engine.Code39Length1", engine::Code39Length1},
    {"engine.SupplementaryRedundancy", engine::SupplementaryRedundancy},
    {"engine.TransmitDecodeMode", engine::TransmitDecodeMode},
    {"engine.EscapeCharacters", engine::EscapeCharacters},
};

}  // namespace

const Setting& SettingByName(const std::string& name) {
    for (const Named& named : Names) {
        if (name == named.Name)
            return named.Field;
    }
    throw std::runtime_error("no such setting: " + name);
}
