// Icons, bitmaps and image lists behind their handles. Main thread.
#pragma once

#include <QIcon>
#include <QPixmap>
#include <memory>
#include <vector>

#include "platform/controls.h"

namespace layer {

struct ImageListData {
    QSize Size;  // of each image
    std::vector<QPixmap> Images;
};

// Null for anything that is not such a handle.
QIcon IconOf(HICON icon);
std::shared_ptr<const ImageListData> FindImageList(HIMAGELIST list);

// The icon of a resource with all its sizes; null when there is none.
QIcon LoadIconResource(WORD number);

}  // namespace layer
