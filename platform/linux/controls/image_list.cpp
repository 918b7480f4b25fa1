#include "platform/linux/controls/image_list.h"

#include <QBitmap>

#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/on_main.h"

namespace layer {

namespace {

constexpr int LargestSide = 1024;

HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>& Table() {
    static auto* table = new HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>(0x30000);
    return *table;
}

// The new images' first position; -1 when the bitmap holds none.
int AddImages(ImageListData& list, const QImage& bitmap, COLORREF mask) {
    const int count = bitmap.width() / list.Size.width();
    if (bitmap.isNull() || count == 0 || bitmap.height() < list.Size.height()) {
        return -1;
    }
    QPixmap image = QPixmap::fromImage(bitmap);
    // A colour has its red in the lowest byte.
    image.setMask(image.createMaskFromColor(QColor(mask & 0xFF, (mask >> 8) & 0xFF, (mask >> 16) & 0xFF)));
    const int first = static_cast<int>(list.Images.size());
    for (int i = 0; i < count; ++i) {
        const QRect part(QPoint(i * list.Size.width(), 0), list.Size);
        list.Images.push_back(image.copy(part));
    }
    return first;
}

}  // namespace

std::shared_ptr<const ImageListData> FindImageList(HIMAGELIST list) {
    return Table().Find(list);
}

}  // namespace layer

HIMAGELIST ImageList_Create(int width, int height, UINT, int, int) {
    return layer::OnMain([=]() -> HIMAGELIST {
        if (width <= 0 || height <= 0 || width > layer::LargestSide || height > layer::LargestSide) {
            return nullptr;
        }
        return layer::Table().Add(
            std::make_shared<layer::ImageListData>(layer::ImageListData{QSize(width, height), {}}));
    });
}

int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask) {
    return layer::OnMain([=] {
        const auto data = layer::Table().Find(list);
        return data != nullptr ? layer::AddImages(*data, layer::BitmapOf(bitmap), mask) : -1;
    });
}

int ImageList_GetImageCount(HIMAGELIST list) {
    return layer::OnMain([=] {
        const auto data = layer::Table().Find(list);
        return data != nullptr ? static_cast<int>(data->Images.size()) : 0;
    });
}

BOOL ImageList_SetImageCount(HIMAGELIST list, UINT count) {
    return layer::OnMain([=] {
        const auto data = layer::Table().Find(list);
        if (data != nullptr) {
            data->Images.resize(count);
        }
        return data != nullptr ? TRUE : FALSE;
    });
}

BOOL ImageList_Destroy(HIMAGELIST list) {
    return layer::OnMain([=] { return layer::Table().Remove(list) != nullptr ? TRUE : FALSE; });
}
