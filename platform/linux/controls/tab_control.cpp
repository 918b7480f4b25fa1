#include "platform/linux/controls/tab_control.h"
#include "platform/linux/windows/control_classes.h"

namespace layer {

namespace {

constexpr DWORD StyleBottom = 0x0002;

// Tabs that a finger finds.
class TabBar : public QTabBar {
  public:
    using QTabBar::QTabBar;

  protected:
    QSize tabSizeHint(int index) const override {
        constexpr int smallestWidth = 36, smallestHeight = 28;
        return QTabBar::tabSizeHint(index).expandedTo(QSize(smallestWidth, smallestHeight));
    }
};

}  // namespace

TabControl::TabControl(const WindowInit& init) : WindowObject(init), bar_(new TabBar(init.Parent->Client())) {
    bar_->setExpanding(false);
    bar_->setDrawBase(false);
    bar_->setUsesScrollButtons(true);
    SetWidget(bar_);
    SetStyle(init.Style);
}

void TabControl::SetStyle(DWORD style) {
    WindowObject::SetStyle(style);
    bar_->setShape(AtBottom() ? QTabBar::RoundedSouth : QTabBar::RoundedNorth);
    if (StyleChanged) {
        StyleChanged();
    }
}

bool TabControl::AtBottom() const {
    return (Style() & StyleBottom) != 0;
}

WindowPtr MakeTabControl(const WindowInit& init) {
    return std::make_shared<TabControl>(init);
}

}  // namespace layer
