#include "platform/linux/controls/image_list.h"

#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/windows/images.h"
#include "platform/linux/windows/on_main.h"

namespace layer {

namespace {

constexpr int LargestSide = 1024;
constexpr COLORREF CornerColour = 0xFF000000;  // instead of a colour: that of the bitmap's first pixel

HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>& Table() {
    static auto* table = new HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>(0x30000);
    return *table;
}

void ClearColour(QImage& image, QRgb colour) {
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if ((line[x] & RGB_MASK) == (colour & RGB_MASK)) {
                line[x] = 0;
            }
        }
    }
}

// The new images' first position; -1 when the bitmap holds none.
int AddImages(ImageListData& list, const QImage& bitmap, COLORREF mask) {
    const int count = bitmap.width() / list.Size.width();
    if (bitmap.isNull() || count == 0 || bitmap.height() < list.Size.height()) {
        return -1;
    }
    QImage image = bitmap.convertToFormat(QImage::Format_ARGB32);
    // A colour has its red in the lowest byte, a pixel its blue.
    const QRgb colour =
        mask == CornerColour ? image.pixel(0, 0) : qRgb(mask & 0xFF, (mask >> 8) & 0xFF, (mask >> 16) & 0xFF);
    ClearColour(image, colour);
    const int first = static_cast<int>(list.Images.size());
    for (int i = 0; i < count; ++i) {
        const QRect part(QPoint(i * list.Size.width(), 0), list.Size);
        list.Images.push_back(QPixmap::fromImage(image.copy(part)));
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
