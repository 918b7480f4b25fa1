// Fonts of dialog templates, and pixels for their units.
#pragma once

#include <QFont>
#include <QRect>

#include "platform/linux/resources/resource_file.h"

namespace layer {

// A quarter of the font's average character wide, an eighth of its height high.
class DialogUnits {
  public:
    explicit DialogUnits(const QFont& font);
    int X(int units) const { return (units * width_ + 2) / 4; }
    int Y(int units) const { return (units * height_ + 4) / 8; }
    QRect Pixels(int x, int y, int width, int height) const;

  private:
    int width_, height_;
};

// The template's font, or one that exists in its place; made smaller when the dialog would not fit into the
// width.
QFont DialogFont(const resource::Dialog& dialog, int mostWidth);

}  // namespace layer
