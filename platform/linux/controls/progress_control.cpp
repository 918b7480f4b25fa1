#include <QProgressBar>
#include <algorithm>

#include "platform/controls.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

namespace {

// Whoever moves the bar may not come back to the messages for a long time: every step is painted at once.
class ProgressControl : public WindowObject {
  public:
    explicit ProgressControl(const WindowInit& init)
        : WindowObject(init), bar_(new QProgressBar(init.Parent->Client())) {
        bar_->setTextVisible(false);
        bar_->setRange(0, 100);
        bar_->setValue(0);
        SetWidget(bar_);
    }

    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override {
        switch (message) {
            case PBM_SETRANGE:
                return SetRange(LOWORD(lParam), HIWORD(lParam));
            case PBM_SETPOS:
                return SetPosition(static_cast<int>(wParam));
            default:
                return WindowObject::Message(message, wParam, lParam);
        }
    }

  private:
    LRESULT SetRange(int low, int high) {
        // Without a range Qt's bar would run to and fro.
        bar_->setRange(low, std::max(high, low + 1));
        return SetPosition(bar_->value());
    }

    LRESULT SetPosition(int position) {
        const int before = bar_->value();
        bar_->setValue(std::clamp(position, bar_->minimum(), bar_->maximum()));
        if (Visible() && bar_->value() != before) {
            PaintNow(bar_);
        }
        TellWatchdog();
        return before;
    }

    QProgressBar* bar_;
};

}  // namespace

WindowPtr MakeProgressControl(const WindowInit& init) {
    return std::make_shared<ProgressControl>(init);
}

}  // namespace layer
