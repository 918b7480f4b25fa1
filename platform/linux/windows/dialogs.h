// Dialogs made from templates.
#pragma once

#include <optional>

#include "platform/linux/resources/resource_file.h"
#include "platform/linux/windows/dialog_widget.h"
#include "platform/linux/windows/window_object.h"

namespace layer {

class DialogWindow : public WindowObject {
  public:
    enum class Kind { Modal, Modeless, Page };
    DialogWindow(const WindowInit& init, Kind kind, DLGPROC procedure);

    // The procedure first; what it leaves (0) has the default.
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    void SetText(std::u16string text) override;
    void SetVisible(bool visible) override;

    // Ends a modal dialog: its loop returns the result. Hides any other.
    void End(INT_PTR result);
    bool Ended() const { return ended_; }
    INT_PTR Result() const { return result_; }

    // Gives the frame a size that the user cannot change: for this client size, in the middle of the screen,
    // or at a corner of the screen's.
    void PlaceFrame(const QSize& client, std::optional<QPoint> corner = {});
    // Puts the controls of the template on it; false when one cannot be made.
    bool MakeControls(const resource::Dialog& dialog, const QFont& font);
    void FocusFirstControl();

  private:
    Kind kind_;
    DLGPROC procedure_;
    DialogWidget* frame_ = nullptr;  // none for a page
    bool ended_ = false;
    INT_PTR result_ = IDCANCEL;
};

}  // namespace layer
