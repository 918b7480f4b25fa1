#include "platform/linux/windows/images.h"

#include <QPixmap>
#include <map>

#include "platform/linux/windows/on_main.h"
#include "platform/linux/windows/program_resources.h"

namespace layer {

namespace {

// Handles of icons and bitmaps, which share their numbers. Main thread.
struct ImageTable {
    std::map<std::uintptr_t, QIcon> Icons;
    std::map<std::uintptr_t, QImage> Bitmaps;
    std::uintptr_t Last = 0x20000;
};

ImageTable& Table() {
    static auto* table = new ImageTable;
    return *table;
}

template <class Handle>
std::uintptr_t Number(Handle handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

QImage ToQImage(const resource::Image& image) {
    const QImage seen(reinterpret_cast<const uchar*>(image.Pixels.data()), image.Width, image.Height,
                      image.Width * 4, QImage::Format_ARGB32);
    return seen.copy();
}

}  // namespace

QIcon IconOf(HICON icon) {
    const auto found = Table().Icons.find(Number(icon));
    return found != Table().Icons.end() ? found->second : QIcon();
}

QImage BitmapOf(HBITMAP bitmap) {
    const auto found = Table().Bitmaps.find(Number(bitmap));
    return found != Table().Bitmaps.end() ? found->second : QImage();
}

QIcon LoadIconResource(WORD number) {
    QIcon icon;
    if (const auto images = resource::FindIcon(ProgramResources(), number)) {
        for (const resource::Image& image : *images) {
            icon.addPixmap(QPixmap::fromImage(ToQImage(image)));
        }
    }
    return icon;
}

}  // namespace layer

HICON LoadIconW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HICON {
        const QIcon icon = layer::LoadIconResource(layer::ResourceNumber(name));
        if (icon.isNull()) {
            return nullptr;
        }
        layer::ImageTable& table = layer::Table();
        table.Icons[++table.Last] = icon;
        return reinterpret_cast<HICON>(table.Last);
    });
}

BOOL DestroyIcon(HICON icon) {
    return layer::OnMain([=] { return layer::Table().Icons.erase(layer::Number(icon)) != 0 ? TRUE : FALSE; });
}

HBITMAP LoadBitmapW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HBITMAP {
        const auto image = resource::FindBitmap(layer::ProgramResources(), layer::ResourceNumber(name));
        if (!image) {
            return nullptr;
        }
        layer::ImageTable& table = layer::Table();
        table.Bitmaps[++table.Last] = layer::ToQImage(*image);
        return reinterpret_cast<HBITMAP>(table.Last);
    });
}

BOOL DeleteObject(HGDIOBJ object) {
    return layer::OnMain(
        [=] { return layer::Table().Bitmaps.erase(layer::Number(object)) != 0 ? TRUE : FALSE; });
}

HGDIOBJ GetStockObject(int object) {
    static char white;
    return object == WHITE_BRUSH ? &white : nullptr;
}
