#include "platform/linux/windows/window_object.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>

#include "platform/controls.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

// A text that shows whole in a tip when its place is too small.
class StaticControl : public WindowObject {
  public:
    explicit StaticControl(const WindowInit& init) : WindowObject(init) {
        label_ = new QLabel(init.Parent->Client());
        label_->setWordWrap(true);
        const DWORD kind = init.Style & StaticKind;
        if (kind == StaticIcon) {
            constexpr int side = 32;
            label_->setPixmap(LoadIconResource(init.Resource).pixmap(side, side));
            // Templates leave the size of an icon to the icon.
            label_->setMinimumSize(side, side);
        }
        label_->setTextFormat(Qt::PlainText);
        label_->setAlignment((kind == StaticCentred ? Qt::AlignHCenter : Qt::AlignLeft) | Qt::AlignTop);
        SetWidget(label_);
        if (kind != StaticIcon) {
            Show(init.Text, init.Place.size());
        }
    }

    void SetText(std::u16string text) override {
        Show(text, label_->size());
        WindowObject::SetText(std::move(text));
    }

  private:
    void Show(const std::u16string& text, const QSize& place) {
        QString shown = QString::fromStdU16String(text);
        if ((Style() & StaticNoPrefix) == 0) {
            shown.remove(u'&');
        }
        label_->setText(shown);
        const QRect needed =
            label_->fontMetrics().boundingRect(QRect(QPoint(0, 0), place), Qt::TextWordWrap, shown);
        label_->setToolTip(QRect(QPoint(0, 0), place).contains(needed) ? QString() : shown);
    }

    QLabel* label_;
};

class ButtonControl : public WindowObject {
  public:
    explicit ButtonControl(const WindowInit& init) : WindowObject(init) {
        button_ = new QPushButton(QString::fromStdU16String(init.Text), init.Parent->Client());
        button_->setDefault((init.Style & ButtonKind) == ButtonDefault);
        QObject::connect(button_, &QPushButton::clicked, button_, [this] { Command(0); });
        SetWidget(button_);
    }
    void SetText(std::u16string text) override {
        button_->setText(QString::fromStdU16String(text));
        WindowObject::SetText(std::move(text));
    }

  private:
    QPushButton* button_;
};

// One line. EN_CHANGE comes for every change, the program's own included. EM_LIMITTEXT holds for the
// program's texts as well: it sets none that are longer.
class EditControl : public WindowObject {
  public:
    explicit EditControl(const WindowInit& init);
    LRESULT Message(UINT message, WPARAM wParam, LPARAM lParam) override;
    std::u16string Text() const override;
    void SetText(std::u16string text) override;

  private:
    QLineEdit* edit_;
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

constexpr int NoLimit = 32767;

EditControl::EditControl(const WindowInit& init)
    : WindowObject(init), edit_(new QLineEdit(init.Parent->Client())) {
    edit_->setText(QString::fromStdU16String(init.Text));
    if ((init.Style & EditNumber) != 0) {
        static const QRegularExpression digits(QStringLiteral("[0-9]*"));
        edit_->setValidator(new QRegularExpressionValidator(digits, edit_));
        edit_->setInputMethodHints(Qt::ImhDigitsOnly);
    }
    QObject::connect(edit_, &QLineEdit::textChanged, edit_, [this] {
        ++telling_;
        Command(EN_CHANGE);
        --telling_;
    });
    SetWidget(edit_);
}

LRESULT EditControl::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == EM_LIMITTEXT) {
        edit_->setMaxLength(wParam == 0 || wParam > NoLimit ? NoLimit : static_cast<int>(wParam));
        return 0;
    }
    return WindowObject::Message(message, wParam, lParam);
}

std::u16string EditControl::Text() const {
    return edit_->text().toStdU16String();
}

void EditControl::SetText(std::u16string text) {
    const QString shown = QString::fromStdU16String(text);
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

WindowPtr MakeStaticControl(const WindowInit& init) {
    return std::make_shared<StaticControl>(init);
}

WindowPtr MakeButtonControl(const WindowInit& init) {
    return std::make_shared<ButtonControl>(init);
}

WindowPtr MakeEditControl(const WindowInit& init) {
    if ((init.Style & EditMultiLine) != 0) {
        return std::make_shared<TextControl>(init);
    }
    return std::make_shared<EditControl>(init);
}

}  // namespace

WindowPtr MakeControl(const WindowInit& init) {
    static constexpr struct {
        std::u16string_view Name;
        WindowPtr (*Make)(const WindowInit&);
    } classes[] = {{u"Static", MakeStaticControl},
                   {u"Button", MakeButtonControl},
                   {u"Edit", MakeEditControl},
                   {u"SysTreeView32", MakeTreeControl},
                   {u"msctls_updown32", MakeUpDownControl},
                   {u"msctls_progress32", MakeProgressControl}};
    for (const auto& [name, make] : classes) {
        if (SameClass(name, init.ClassName)) {
            const WindowPtr control = make(init);
            control->SetPlace(init.Place);
            control->Widget()->setEnabled((init.Style & StyleDisabled) == 0);
            control->Widget()->setVisible((init.Style & WS_VISIBLE) != 0);
            Adopt(control);
            return control;
        }
    }
    return nullptr;
}

}  // namespace layer

// The classes are there from the start.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes) {
    return classes->dwSize == sizeof *classes;
}
