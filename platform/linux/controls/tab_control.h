// The tabs of a sheet. Main thread.
#pragma once

#include <QTabBar>
#include <functional>

#include "platform/linux/windows/window_object.h"

namespace layer {

// The style says whether the tabs hang below their page or stand on top of it.
class TabControl : public WindowObject {
  public:
    explicit TabControl(const WindowInit& init);

    void SetStyle(DWORD style) override;
    bool AtBottom() const;
    QTabBar* Bar() const { return bar_; }

    std::function<void()> StyleChanged;

  private:
    QTabBar* bar_;
};

}  // namespace layer
