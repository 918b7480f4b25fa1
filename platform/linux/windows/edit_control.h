#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>

#include "platform/linux/windows/window_object.h"

namespace layer {

// One line. EN_CHANGE comes for every change, the program's own included. EM_LIMITTEXT holds for the user
// only.
class EditControl : public WindowObject {
  public:
    explicit EditControl(const WindowInit& init);
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::u16string Text() const override;
    void SetText(std::u16string text) override;

  private:
    void KeepLimit();
    void LetIn(int length);

    QLineEdit* edit_;
    int limit_;
    int telling_ = 0;  // EN_CHANGE notifications that have not returned
};

// Several lines to be read, in a smaller font where they have no room.
class TextControl : public WindowObject {
  public:
    explicit TextControl(const WindowInit& init);
    void SetText(std::u16string text) override;

  private:
    void FitFont(const QString& text);

    QPlainTextEdit* edit_;
};

}  // namespace layer
