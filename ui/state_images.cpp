#include "ui/state_images.h"

#include "resources/resource.h"
#include "ui/tree_view.h"

namespace {

constexpr int Side = 15;  // pixels
constexpr int Count = static_cast<int>(ItemImage::List) + 1;

}  // namespace

HIMAGELIST LoadStateImages(HINSTANCE instance) {
    HIMAGELIST images = ImageList_Create(Side, Side, ILC_MASK, Count, 0);
    if (!images) {
        return nullptr;
    }
    // The bitmap's first image is that of state 1.
    ImageList_SetImageCount(images, 1);
    HBITMAP bitmap = LoadBitmapW(instance, MAKEINTRESOURCEW(IDB_STATE_IMAGES));
    const int first = ImageList_AddMasked(images, bitmap, RGB(0, 255, 0));
    DeleteObject(bitmap);
    if (first < 0 || ImageList_GetImageCount(images) < Count) {
        ImageList_Destroy(images);
        return nullptr;
    }
    return images;
}
