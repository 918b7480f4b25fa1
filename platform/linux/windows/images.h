// Icons, bitmaps and cursors behind their handles. Main thread.
#pragma once

#include <QIcon>
#include <QImage>

#include "platform/window.h"

namespace layer {

// Null icon or image for anything that is not such a handle.
QIcon IconOf(HICON icon);
QImage BitmapOf(HBITMAP bitmap);

// The icon of a resource with all its sizes; null when there is none.
QIcon LoadIconResource(WORD number);

}  // namespace layer
