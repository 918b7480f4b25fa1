// The window of a property sheet. Main thread.
#pragma once

#include <QPushButton>
#include <QTabBar>
#include <vector>

#include "platform/controls.h"
#include "platform/linux/windows/dialog_widget.h"

namespace layer {

// The tabs of a sheet. The style says whether the tabs hang below their page or stand on top of it.
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

// Tabs, a page for each that is made when it is first shown, an OK and a Cancel button. OK (and Enter) tells
// every page that has been made PSN_APPLY, Cancel (Escape, closing) tells the one in front PSN_QUERYCANCEL.
// Going away is up to the owner, who may destroy the sheet inside these notifications.
class SheetWindow : public WindowObject {
  public:
    SheetWindow(const WindowInit& init, const PROPSHEETHEADERW& header);

    // Makes tabs and buttons; the window has its handle.
    void MakeControls();
    // Brings a page to the front, made if need be; false when it cannot be.
    bool ShowPage(int index);
    void Place();

    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetVisible(bool visible) override;

  private:
    struct Page {
        PROPSHEETPAGEW Record;
        WindowPtr Window;
    };

    void OnTabChosen(int index);
    void Layout();
    void Notify(WindowObject& page, UINT code);
    void Apply();
    void Cancel();

    DialogWidget* frame_;
    bool fills_;  // all that is free of the screen
    std::vector<Page> pages_;
    int shown_ = -1;
    std::shared_ptr<TabControl> tabs_;
    WindowPtr ok_, cancel_;
};

}  // namespace layer
