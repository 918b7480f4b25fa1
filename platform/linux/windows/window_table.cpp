#include "platform/linux/windows/window_table.h"

#include <algorithm>

#include "platform/linux/kernel/handle_table.h"

namespace layer {

namespace {

struct Entry {
    WindowPtr Window;  // the main thread's
    std::u16string Title;
};

HandleTable<HWND, Entry>& OwnWindows() {
    static auto* table = new HandleTable<HWND, Entry>(0x10000);
    return *table;
}

// Their numbers lie between those of the own windows.
HandleTable<HWND, RemoteWindow>& RemoteWindows() {
    static auto* table = new HandleTable<HWND, RemoteWindow>(0x10002);
    return *table;
}

}  // namespace

HWND EnterWindow(const WindowPtr& window) {
    return OwnWindows().Add({window, window->Text()});
}

void LeaveWindow(HWND handle) {
    OwnWindows().Remove(handle);
}

void RenameWindow(HWND handle, const std::u16string& title) {
    OwnWindows().Each([&](HWND known, Entry& entry) {
        if (known == handle) {
            entry.Title = title;
        }
    });
}

bool IsOwnWindow(HWND handle) {
    return OwnWindows().Contains(handle);
}

std::vector<HWND> OwnTopLevelWindows(const std::optional<std::u16string>& className,
                                     const std::optional<std::u16string>& title) {
    std::vector<HWND> found;
    OwnWindows().Each([&](HWND handle, const Entry& entry) {
        if (!entry.Window->IsChild() && (!className || SameClass(*className, entry.Window->ClassName())) &&
            (!title || *title == entry.Title)) {
            found.push_back(handle);
        }
    });
    return found;
}

WindowPtr FindWindowObject(HWND handle) {
    return OwnWindows().Find(handle).Window;
}

std::vector<WindowPtr> TopLevelWindows() {
    std::vector<WindowPtr> windows;
    OwnWindows().Each([&](HWND, const Entry& entry) {
        if (!entry.Window->IsChild()) {
            windows.push_back(entry.Window);
        }
    });
    return windows;
}

HWND RemoteHandle(const RemoteWindow& window) {
    HWND handle = nullptr;
    RemoteWindows().Each([&](HWND known, const RemoteWindow& other) {
        if (other.Program == window.Program && other.Window == window.Window) {
            handle = known;
        }
    });
    return handle != nullptr ? handle : RemoteWindows().Add(window);
}

bool FindRemoteWindow(HWND handle, RemoteWindow& window) {
    window = RemoteWindows().Find(handle);
    return window.Window != 0;
}

bool SameClass(std::u16string_view left, std::u16string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return LowerCase(a) == LowerCase(b); });
}

}  // namespace layer
