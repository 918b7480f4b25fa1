// The window of a property sheet. Main thread.
#pragma once

#include <QPushButton>
#include <vector>

#include "platform/controls.h"
#include "platform/linux/controls/tab_control.h"
#include "platform/linux/windows/dialog_widget.h"

namespace layer {

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
    bool notifying_ = false;
    std::shared_ptr<TabControl> tabs_;
    WindowPtr ok_, cancel_;
};

}  // namespace layer
