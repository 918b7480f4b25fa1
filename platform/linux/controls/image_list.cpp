#include "platform/linux/controls/image_list.h"

#include <map>

#include "platform/linux/windows/images.h"
#include "platform/linux/windows/on_main.h"

namespace layer {

namespace {

constexpr int LargestSide = 1024;
constexpr COLORREF CornerColour = 0xFF000000;  // instead of a colour: that of the bitmap's first pixel

struct ListTable {
    std::map<std::uintptr_t, ImageListData> Lists;
    std::uintptr_t Last = 0x30000;
};

ListTable& Table() {
    static auto* table = new ListTable;
    return *table;
}

ImageListData* Find(HIMAGELIST list) {
    const auto found = Table().Lists.find(reinterpret_cast<std::uintptr_t>(list));
    return found != Table().Lists.end() ? &found->second : nullptr;
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

const ImageListData* FindImageList(HIMAGELIST list) {
    return Find(list);
}

}  // namespace layer

HIMAGELIST ImageList_Create(int width, int height, UINT, int, int) {
    return layer::OnMain([=]() -> HIMAGELIST {
        if (width <= 0 || height <= 0 || width > layer::LargestSide || height > layer::LargestSide) {
            return nullptr;
        }
        layer::ListTable& table = layer::Table();
        table.Lists[++table.Last].Size = QSize(width, height);
        return reinterpret_cast<HIMAGELIST>(table.Last);
    });
}

int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask) {
    return layer::OnMain([=] {
        layer::ImageListData* data = layer::Find(list);
        return data != nullptr ? layer::AddImages(*data, layer::BitmapOf(bitmap), mask) : -1;
    });
}

int ImageList_GetImageCount(HIMAGELIST list) {
    return layer::OnMain([=] {
        const layer::ImageListData* data = layer::Find(list);
        return data != nullptr ? static_cast<int>(data->Images.size()) : 0;
    });
}

BOOL ImageList_Destroy(HIMAGELIST list) {
    return layer::OnMain([=] {
        return layer::Table().Lists.erase(reinterpret_cast<std::uintptr_t>(list)) != 0 ? TRUE : FALSE;
    });
}
