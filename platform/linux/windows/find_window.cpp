#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/window_table.h"

HWND FindWindowW(LPCWSTR className, LPCWSTR title) {
    layer::ParkAtEnd();
    const std::u16string wantedClass = className != nullptr ? className : u"";
    const std::u16string wantedTitle = title != nullptr ? title : u"";
    const auto* classFilter = className != nullptr ? &wantedClass : nullptr;
    const auto* titleFilter = title != nullptr ? &wantedTitle : nullptr;
    const auto own = layer::OwnTopLevelWindows(classFilter, titleFilter);
    if (!own.empty()) {
        return own.front().Handle;
    }
    HWND other = layer::FindOtherWindow(classFilter, titleFilter);
    layer::ParkAtEnd();
    return other;
}
