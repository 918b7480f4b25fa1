// Handles of windows: this program's own, and those that stand for windows of other programs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/windows/window_object.h"

namespace layer {

// Everything of Adopt and Destroy that concerns the table. Main thread.
HWND EnterWindow(const WindowPtr& window);
void LeaveWindow(HWND handle);
void RenameWindow(HWND handle, const std::u16string& title);

// Any thread: whether it is a window of this program, and the top-level ones that fit, the oldest first. No
// name fits every window; class names are compared without regard to case.
bool IsOwnWindow(HWND handle);
std::vector<HWND> OwnTopLevelWindows(const std::optional<std::u16string>& className,
                                     const std::optional<std::u16string>& title);

// A window of another program: its program's socket in the folder of windows, and its number there. Any
// thread.
struct RemoteWindow {
    std::string Program;
    std::uint64_t Window = 0;
};
HWND RemoteHandle(const RemoteWindow& window);
bool FindRemoteWindow(HWND handle, RemoteWindow& window);

// Class names compare without regard to the case of ASCII letters.
inline char16_t LowerCase(char16_t character) {
    return character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
}
bool SameClass(std::u16string_view left, std::u16string_view right);

}  // namespace layer
