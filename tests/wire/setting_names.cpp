#include "tests/wire/setting_names.h"

#include <stdexcept>

#include "settings/pages.h"

const Setting& SettingByName(const std::string& name) {
    const std::string layout = name.substr(0, name.find('.') + 1);
    const Setting* found = nullptr;
    const auto look = [&](const Setting& setting) {
        const char* own = setting.Block == SettingBlock::General ? "general."
                          : IsIn(setting, ReaderType::Decoder1D) ? "1d."
                                                                 : "engine.";
        if (layout == own && layout + setting.Name == name)
            found = &setting;
    };
    ForEachGeneralField(look);
    ForEachSymbologyField(look);
    if (!found)
        throw std::runtime_error("no such setting: " + name);
    return *found;
}
