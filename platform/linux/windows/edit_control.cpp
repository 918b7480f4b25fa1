#include "platform/linux/windows/edit_control.h"

#include <QRegularExpressionValidator>

#include "platform/linux/windows/styles.h"

namespace layer {

namespace {

constexpr int NoLimit = 32767;
// Corrections within corrections that are told; one that is never content ends here.
constexpr int DeepestChange = 16;

}  // namespace

EditControl::EditControl(const WindowInit& init)
    : WindowObject(init), edit_(new QLineEdit(init.Parent->Client())), limit_(NoLimit) {
    edit_->setText(QString::fromStdU16String(init.Text));
    if ((init.Style & EditNumber) != 0) {
        static const QRegularExpression digits(QStringLiteral("[0-9]*"));
        edit_->setValidator(new QRegularExpressionValidator(digits, edit_));
        edit_->setInputMethodHints(Qt::ImhDigitsOnly);
    }
    QObject::connect(edit_, &QLineEdit::textChanged, edit_, [this] {
        KeepLimit();
        if (telling_ < DeepestChange) {
            ++telling_;
            Command(EN_CHANGE);
            --telling_;
        }
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
    LetIn(static_cast<int>(edit_->text().size()));
}

// Room for the limit, or for a text that is longer.
void EditControl::LetIn(int length) {
    const int room = std::max(limit_, length);
    if (edit_->maxLength() != room) {
        // Qt takes the cursor to the end.
        const int cursor = edit_->cursorPosition();
        edit_->setMaxLength(room);
        edit_->setCursorPosition(cursor);
    }
}

std::u16string EditControl::Text() const {
    return edit_->text().toStdU16String();
}

void EditControl::SetText(std::u16string text) {
    const QString shown = QString::fromStdU16String(text);
    LetIn(static_cast<int>(shown.size()));
    // What is put right while it is typed keeps the cursor in front of the same rest.
    const auto rest = edit_->text().size() - edit_->cursorPosition();
    edit_->setText(shown);
    if (telling_ > 0) {
        const auto place = edit_->text().size() - rest;
        edit_->setCursorPosition(static_cast<int>(std::max(place, decltype(place){0})));
    }
}

TextControl::TextControl(const WindowInit& init)
    : WindowObject(init), edit_(new QPlainTextEdit(init.Parent->Client())) {
    edit_->setPlainText(QString::fromStdU16String(init.Text));
    edit_->setReadOnly(true);
    edit_->setTabChangesFocus(true);
    SetWidget(edit_);
}

void TextControl::SetText(std::u16string text) {
    const QString shown = QString::fromStdU16String(text).remove(u'\r');
    edit_->setPlainText(shown);
    FitFont(shown);
    WindowObject::SetText(std::move(text));
}

// What is only to be read is seen whole, without scrolling, where a smaller font can do it.
void TextControl::FitFont(const QString& text) {
    constexpr qreal smallest = 6, step = 0.5;  // points
    const int edge = edit_->frameWidth() + static_cast<int>(edit_->document()->documentMargin()) + 1;
    const QSize room = edit_->size() - QSize(2 * edge, 2 * edge);
    QFont font = edit_->font();
    const auto height = [&] {
        return QFontMetrics(font).boundingRect(QRect(QPoint(0, 0), room), Qt::TextWordWrap, text).height();
    };
    while (height() > room.height() && font.pointSizeF() > smallest) {
        font.setPointSizeF(font.pointSizeF() - step);
    }
    edit_->setFont(font);
}

}  // namespace layer
