#include "platform/linux/windows/edit_control.h"

#include <QRegularExpressionValidator>

#include "platform/linux/windows/styles.h"

namespace layer {

namespace {

constexpr int NoLimit = 32767;

}  // namespace

EditControl::EditControl(const WindowInit& init)
    : WindowObject(init), edit_(new QLineEdit(init.Parent->Client())), limit_(NoLimit) {
    edit_->setText(QString::fromStdU16String(init.Text));
    edit_->setReadOnly((init.Style & EditReadOnly) != 0);
    if ((init.Style & EditNumber) != 0) {
        static const QRegularExpression digits(QStringLiteral("[0-9]*"));
        edit_->setValidator(new QRegularExpressionValidator(digits, edit_));
        edit_->setInputMethodHints(Qt::ImhDigitsOnly);
    }
    QObject::connect(edit_, &QLineEdit::textChanged, edit_, [this] {
        KeepLimit();
        Command(EN_CHANGE);
    });
    SetWidget(edit_);
}

LRESULT EditControl::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == EM_LIMITTEXT) {
        limit_ = wParam == 0 || wParam > NoLimit ? NoLimit : static_cast<int>(wParam);
        KeepLimit();
        return 0;
    }
    return WindowObject::Message(message, wParam, lParam);
}

// A text that the program has set longer than the limit stays, and can only become shorter.
void EditControl::KeepLimit() {
    edit_->setMaxLength(std::max(limit_, static_cast<int>(edit_->text().size())));
}

std::u16string EditControl::Text() const {
    return edit_->text().toStdU16String();
}

void EditControl::SetText(std::u16string text) {
    const QString shown = QString::fromStdU16String(text);
    edit_->setMaxLength(std::max(limit_, static_cast<int>(shown.size())));
    edit_->setText(shown);
}

TextControl::TextControl(const WindowInit& init)
    : WindowObject(init), edit_(new QPlainTextEdit(init.Parent->Client())) {
    edit_->setPlainText(QString::fromStdU16String(init.Text));
    edit_->setReadOnly((init.Style & EditReadOnly) != 0);
    edit_->setTabChangesFocus(true);
    QObject::connect(edit_, &QPlainTextEdit::textChanged, edit_, [this] {
        if (!setting_) {
            Command(EN_CHANGE);
        }
    });
    SetWidget(edit_);
}

std::u16string TextControl::Text() const {
    return edit_->toPlainText().replace(QStringLiteral("\n"), QStringLiteral("\r\n")).toStdU16String();
}

void TextControl::SetText(std::u16string text) {
    setting_ = true;
    edit_->setPlainText(QString::fromStdU16String(text).remove(u'\r'));
    setting_ = false;
}

}  // namespace layer
