// The frame of a top-level dialog or sheet.
#pragma once

#include <QDialog>
#include <QLabel>

#include "platform/linux/windows/window_object.h"

namespace layer {

// Where no window manager frames windows it draws the frame and the caption itself, with a close button where
// the style has a system menu. Enter presses the default button, Escape sends IDCANCEL, closing WM_CLOSE (or
// IDCANCEL where the style has no system menu).
class DialogWidget : public QDialog {
  public:
    // The owner's window must be visible to place this one in front of it; null otherwise.
    DialogWidget(QWidget* owner, WindowObject& window, DWORD style, bool blocksOwner);

    QWidget* Client() const { return client_; }
    void SetCaption(const QString& text);
    // The outer size for a client size.
    QSize OuterSize(const QSize& client) const;

    void reject() override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void FitCaption();
    void Close();

    WindowObject& window_;
    bool closable_;
    int border_ = 0;
    QWidget* bar_ = nullptr;
    QLabel* caption_ = nullptr;
    QWidget* client_;
};

}  // namespace layer
