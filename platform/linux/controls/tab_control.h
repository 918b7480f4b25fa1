// The tabs of a sheet. Main thread.
#pragma once

#include <QTabBar>

#include "platform/linux/windows/window_object.h"

namespace layer {

// The style says whether the tabs hang below their page or stand on top of it.
class TabControl : public WindowObject {
  public:
    explicit TabControl(const WindowInit& init)
        : WindowObject(init), bar_(new TabBar(init.Parent->Client())) {
        bar_->setExpanding(false);
        bar_->setDrawBase(false);
        bar_->setUsesScrollButtons(true);
        SetWidget(bar_);
    }

    void SetStyle(DWORD style) override {
        WindowObject::SetStyle(style);
        bar_->setShape(AtBottom() ? QTabBar::RoundedSouth : QTabBar::RoundedNorth);
        StyleChanged();
    }
    bool AtBottom() const { return (Style() & 0x0002) != 0; }
    QTabBar* Bar() const { return bar_; }

    std::function<void()> StyleChanged;

  private:
    // Tabs that a finger finds.
    class TabBar : public QTabBar {
      public:
        using QTabBar::QTabBar;
        QSize tabSizeHint(int index) const override {
            constexpr int smallestWidth = 36, smallestHeight = 28;
            return QTabBar::tabSizeHint(index).expandedTo(QSize(smallestWidth, smallestHeight));
        }
    };

    QTabBar* bar_;
};

}  // namespace layer
