// Windows of registered classes, whose messages go to a window procedure.
#pragma once

#include "platform/linux/windows/window_object.h"

namespace layer {

class UserWindow : public WindowObject {
  public:
    UserWindow(const WindowInit& init, WNDPROC procedure);
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetVisible(bool visible) override;
    void Activate() override;
    bool TakesFocus() const override { return takesFocus_; }

  private:
    WNDPROC procedure_;
    bool takesFocus_ = false;  // until somebody brings it to the foreground, or the user does
};

// Has the window told WM_CLOSE, as the button of its frame does.
void RequestClose(WindowObject& window);

}  // namespace layer
