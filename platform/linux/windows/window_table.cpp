#include "platform/linux/windows/window_table.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace layer {

namespace {

struct Entry {
    WindowPtr Window;  // the main thread's
    bool TopLevel = false;
    std::u16string ClassName, Title;
};

// Own windows have even numbers, remote ones odd, and none is given twice.
struct WindowTable {
    std::mutex Mutex;
    std::map<std::uintptr_t, Entry> Own;
    std::map<std::uintptr_t, RemoteWindow> Remote;
    std::uintptr_t LastOwn = 0x10000;
    std::uintptr_t LastRemote = 0x10001;
};

WindowTable& Table() {
    static auto* table = new WindowTable;
    return *table;
}

std::uintptr_t Number(HWND handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

HWND Handle(std::uintptr_t number) {
    return reinterpret_cast<HWND>(number);
}

char16_t Lower(char16_t character) {
    return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
}

}  // namespace

HWND EnterWindow(const WindowPtr& window) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    table.LastOwn += 2;
    table.Own[table.LastOwn] = Entry{window, !window->IsChild(), window->ClassName(), window->Text()};
    return Handle(table.LastOwn);
}

void LeaveWindow(HWND handle) {
    WindowTable& table = Table();
    WindowPtr last;  // goes outside the lock
    std::scoped_lock lock(table.Mutex);
    const auto found = table.Own.find(Number(handle));
    if (found != table.Own.end()) {
        last = std::move(found->second.Window);
        table.Own.erase(found);
    }
}

void RenameWindow(HWND handle, const std::u16string& title) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    const auto found = table.Own.find(Number(handle));
    if (found != table.Own.end()) {
        found->second.Title = title;
    }
}

bool IsOwnWindow(HWND handle) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    return table.Own.contains(Number(handle));
}

std::vector<WindowEntry> OwnTopLevelWindows(const std::u16string* className, const std::u16string* title) {
    std::vector<WindowEntry> found;
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    for (const auto& [number, entry] : table.Own) {
        if (entry.TopLevel && (className == nullptr || SameClass(*className, entry.ClassName)) &&
            (title == nullptr || *title == entry.Title)) {
            found.push_back({Handle(number), entry.ClassName, entry.Title});
        }
    }
    return found;
}

WindowPtr FindWindowObject(HWND handle) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    const auto found = table.Own.find(Number(handle));
    return found == table.Own.end() ? nullptr : found->second.Window;
}

std::vector<WindowPtr> TopLevelWindows() {
    std::vector<WindowPtr> windows;
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    for (const auto& [number, entry] : table.Own) {
        if (entry.TopLevel) {
            windows.push_back(entry.Window);
        }
    }
    return windows;
}

HWND RemoteHandle(const RemoteWindow& window) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    for (const auto& [number, known] : table.Remote) {
        if (known.Program == window.Program && known.Window == window.Window) {
            return Handle(number);
        }
    }
    table.LastRemote += 2;
    table.Remote[table.LastRemote] = window;
    return Handle(table.LastRemote);
}

bool FindRemoteWindow(HWND handle, RemoteWindow& window) {
    WindowTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    const auto found = table.Remote.find(Number(handle));
    if (found == table.Remote.end()) {
        return false;
    }
    window = found->second;
    return true;
}

bool SameClass(std::u16string_view left, std::u16string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return Lower(a) == Lower(b); });
}

}  // namespace layer
