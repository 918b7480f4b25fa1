#include "platform/linux/windows/dialog_units.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>
#include <cmath>

namespace layer {

namespace {

constexpr qreal SmallestFont = 5;
constexpr qreal FontStep = 0.5;

}  // namespace

DialogUnits::DialogUnits(const QFont& font) {
    const QFontMetrics metrics(font);
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    width_ = static_cast<int>(std::lround(metrics.horizontalAdvance(letters) / 52.0));
    height_ = metrics.height();
}

QRect DialogUnits::Pixels(int x, int y, int width, int height) const {
    return QRect(X(x), Y(y), X(width), Y(height));
}

QFont DialogFont(const resource::Dialog& dialog, int mostWidth) {
    QFont font = QApplication::font();
    const QString family = QString::fromStdU16String(dialog.FontName);
    if (!family.isEmpty() && QFontDatabase::hasFamily(family)) {
        font.setFamily(family);
    }
    if (dialog.FontPoints > 0) {
        font.setPointSizeF(dialog.FontPoints);
    }
    while (DialogUnits(font).X(dialog.Width) > mostWidth && font.pointSizeF() > SmallestFont) {
        font.setPointSizeF(font.pointSizeF() - FontStep);
    }
    return font;
}

}  // namespace layer
