#include <map>

#include "platform/linux/windows/styles.h"
#include "platform/linux/windows/window_object.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

std::vector<std::pair<std::u16string, ControlMaker>>& Classes() {
    static auto* classes = new std::vector<std::pair<std::u16string, ControlMaker>>;
    return *classes;
}

}  // namespace

void RegisterControlClass(std::u16string_view className, ControlMaker maker) {
    std::erase_if(Classes(), [&](const auto& known) { return SameClass(known.first, className); });
    Classes().emplace_back(className, std::move(maker));
}

WindowPtr MakeControl(const WindowInit& init) {
    for (const auto& [className, maker] : Classes()) {
        if (!SameClass(className, init.ClassName)) {
            continue;
        }
        const WindowPtr control = maker(init);
        if (control != nullptr) {
            control->SetPlace(init.Place);
            control->Widget()->setEnabled((init.Style & StyleDisabled) == 0);
            control->Widget()->setVisible((init.Style & WS_VISIBLE) != 0);
            Adopt(control);
        }
        return control;
    }
    return nullptr;
}

}  // namespace layer
