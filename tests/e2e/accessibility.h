// What the programs of a desktop tell a screen reader of their windows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

// A window, or a part of one that can be seen.
struct Accessible {
    std::string Role;  // "dialog", "push button", "tree item", ...
    std::string Name;  // a window's title, a control's text
    std::string Text;  // what can be edited
    bool Checked = false, Selected = false, Focused = false;
    std::vector<Accessible> Parts;

    void Visit(const std::function<void(const Accessible&)>& look) const;
    // All of it, a line a part, as somebody would hear it.
    std::string Outline(int depth = 0) const;
};

// An accessibility bus of its own for the programs that are started from now on.
class AccessibilityBus {
  public:
    AccessibilityBus();
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    // The windows of all programs that answer; one that is busy for a second is left out.
    std::vector<Accessible> Windows();

  private:
    std::unique_ptr<ChildProcess> session_;
};
