#include "platform/linux/windows/dialog_widget.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

#include "platform/linux/windows/window_object.h"

namespace layer {

DialogWidget::DialogWidget(QWidget* owner, WindowObject& window, DWORD style, bool blocksOwner)
    : QDialog(owner), window_(window), closable_((style & StyleSystemMenu) != 0) {
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowModality(blocksOwner && owner != nullptr ? Qt::WindowModal : Qt::NonModal);
    if (!HasWindowManager()) {
        setWindowFlag(Qt::FramelessWindowHint);
        border_ = 1;
        if ((style & StyleCaption) == StyleCaption) {
            bar_ = new QWidget(this);
            auto* row = new QHBoxLayout(bar_);
            row->setContentsMargins(4, 1, 1, 1);
            bar_->setAutoFillBackground(true);
            bar_->setBackgroundRole(QPalette::Highlight);
            caption_ = new QLabel(bar_);
            caption_->setTextFormat(Qt::PlainText);
            caption_->setForegroundRole(QPalette::HighlightedText);
            caption_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            row->addWidget(caption_, 1);
            if (closable_) {
                auto* button = new QToolButton(bar_);
                button->setText(QStringLiteral("\u00D7"));
                button->setAccessibleName(QStringLiteral("Close"));
                button->setFocusPolicy(Qt::NoFocus);
                QObject::connect(button, &QToolButton::clicked, this, [this] { Close(); });
                row->addWidget(button);
            }
        }
    } else {
        const Qt::WindowFlags buttons =
            closable_ ? Qt::WindowFlags(Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
                      : Qt::WindowFlags{};
        setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | buttons);
    }
    client_ = new QWidget(this);
}

void DialogWidget::SetCaption(const QString& text) {
    setWindowTitle(text);
    if (caption_ != nullptr) {
        caption_->setToolTip(text);
        FitCaption();
    }
}

// A caption that is too long for a small screen ends in an ellipsis; the whole is its tool tip.
void DialogWidget::FitCaption() {
    const QString whole = windowTitle();
    const int width = caption_->contentsRect().width();
    caption_->setText(caption_->fontMetrics().elidedText(whole, Qt::ElideRight, width));
}

QSize DialogWidget::OuterSize(const QSize& client) const {
    const int bar = bar_ != nullptr ? bar_->sizeHint().height() : 0;
    return QSize(client.width() + 2 * border_, client.height() + 2 * border_ + bar);
}

void DialogWidget::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    QRect inside = rect().adjusted(border_, border_, -border_, -border_);
    if (bar_ != nullptr) {
        const int height = bar_->sizeHint().height();
        bar_->setGeometry(inside.x(), inside.y(), inside.width(), height);
        bar_->layout()->activate();
        FitCaption();
        inside.setTop(inside.top() + height);
    }
    client_->setGeometry(inside);
}

void DialogWidget::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    if (border_ > 0) {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::Shadow));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void DialogWidget::reject() {
    if (!window_.Gone()) {
        PostMessageW(window_.Handle(), WM_COMMAND, IDCANCEL, 0);
    }
}

void DialogWidget::Close() {
    if (closable_) {
        RequestClose(window_);
    } else {
        reject();
    }
}

void DialogWidget::closeEvent(QCloseEvent* event) {
    event->ignore();
    Close();
}

}  // namespace layer
