// Texts, icons, push buttons and edit controls.
#include <QLabel>
#include <QPushButton>

#include "platform/linux/windows/control_classes.h"
#include "platform/linux/windows/edit_control.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/styles.h"

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

}  // namespace

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

}  // namespace layer
