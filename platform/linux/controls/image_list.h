// Image lists behind their handles. Main thread.
#pragma once

#include <QPixmap>
#include <memory>
#include <vector>

#include "platform/controls.h"

namespace layer {

struct ImageListData {
    QSize Size;  // of each image
    std::vector<QPixmap> Images;
};

// Null for anything that is not an image list.
std::shared_ptr<const ImageListData> FindImageList(HIMAGELIST list);

}  // namespace layer
