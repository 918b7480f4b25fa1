// Image lists behind their handles. Main thread.
#pragma once

#include <QPixmap>
#include <vector>

#include "platform/controls.h"

namespace layer {

struct ImageListData {
    QSize Size;  // of each image
    std::vector<QPixmap> Images;
};

// Null for anything that is not an image list.
const ImageListData* FindImageList(HIMAGELIST list);

}  // namespace layer
