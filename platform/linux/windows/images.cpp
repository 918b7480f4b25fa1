#include "platform/linux/windows/images.h"

#include <QBitmap>
#include <QBuffer>
#include <QImageReader>
#include <QPixmap>
#include <QtEndian>

#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_resources.h"

namespace layer {

namespace {

HandleTable<HICON, QIcon>& Icons() {
    static auto* table = new HandleTable<HICON, QIcon>(0x20000);
    return *table;
}

HandleTable<HBITMAP, QImage>& Bitmaps() {
    static auto* table = new HandleTable<HBITMAP, QImage>(0x20000);
    return *table;
}

HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>& ImageLists() {
    static auto* table = new HandleTable<HIMAGELIST, std::shared_ptr<ImageListData>>(0x30000);
    return *table;
}

QByteArray ToBytes(resource::Bytes bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}

void Append(QByteArray& to, quint32 number) {
    const quint32 stored = qToLittleEndian(number);
    to.append(reinterpret_cast<const char*>(&stored), sizeof stored);
}

// The file that a bitmap was before it became a resource, which took its first 14 bytes away.
QImage LoadBitmapResource(WORD number) {
    const auto data = resource::Find(ProgramResources(), resource::Type::Bitmap, number);
    if (!data) {
        return {};
    }
    resource::Cursor head(*data);
    const quint32 headSize = head.U32();
    head.Take(10);
    const quint32 bits = head.U16();
    head.Take(16);
    const quint32 colours = head.U32();
    const quint32 table = colours != 0 || bits > 8 ? colours : 1u << bits;
    QByteArray file("BM");
    Append(file, static_cast<quint32>(14 + data->size()));
    Append(file, 0);
    Append(file, 14 + headSize + 4 * table);
    return QImage::fromData(file + ToBytes(*data), "BMP");
}

// The file that an icon was: in its list each image has the number of its resource instead of its place.
QByteArray IconFile(WORD number) {
    const auto group = resource::Find(ProgramResources(), resource::Type::GroupIcon, number);
    if (!group) {
        return {};
    }
    constexpr int entrySize = 12, headSize = 6;
    resource::Cursor list(*group);
    QByteArray file = ToBytes(list.Take(4)), images;
    const int count = list.U16();
    file.append(static_cast<char>(count)).append(char(0));
    for (int i = 0; i < count; ++i) {
        file.append(ToBytes(list.Take(entrySize)));
        Append(file, static_cast<quint32>(headSize + (entrySize + 4) * count + images.size()));
        images.append(ToBytes(resource::Find(ProgramResources(), resource::Type::Icon, list.U16())
                                  .value_or(resource::Bytes())));
    }
    return file + images;
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

QIcon IconOf(HICON icon) {
    return Icons().Find(icon);
}

std::shared_ptr<const ImageListData> FindImageList(HIMAGELIST list) {
    return ImageLists().Find(list);
}

QIcon LoadIconResource(WORD number) {
    QByteArray file = IconFile(number);
    QBuffer buffer(&file);
    QImageReader reader(&buffer, "ICO");
    reader.setAutoDetectImageFormat(false);  // or the plug-ins of all formats are loaded
    QIcon icon;
    for (int i = 0; i < reader.imageCount() && reader.jumpToImage(i); ++i) {
        icon.addPixmap(QPixmap::fromImageReader(&reader));
    }
    return icon;
}

}  // namespace layer

HICON LoadIconW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HICON {
        const QIcon icon = layer::LoadIconResource(layer::ResourceNumber(name));
        return icon.isNull() ? nullptr : layer::Icons().Add(icon);
    });
}

BOOL DestroyIcon(HICON icon) {
    return layer::OnMain([=] { return layer::Icons().Remove(icon).isNull() ? FALSE : TRUE; });
}

HBITMAP LoadBitmapW(HINSTANCE, LPCWSTR name) {
    return layer::OnMain([=]() -> HBITMAP {
        const QImage image = layer::LoadBitmapResource(layer::ResourceNumber(name));
        return image.isNull() ? nullptr : layer::Bitmaps().Add(image);
    });
}

BOOL DeleteObject(HGDIOBJ object) {
    return layer::OnMain(
        [=] { return layer::Bitmaps().Remove(static_cast<HBITMAP>(object)).isNull() ? FALSE : TRUE; });
}

HGDIOBJ GetStockObject(int object) {
    static char white;
    return object == WHITE_BRUSH ? &white : nullptr;
}

HIMAGELIST ImageList_Create(int width, int height, UINT, int, int) {
    return layer::OnMain([=]() -> HIMAGELIST {
        return layer::ImageLists().Add(
            std::make_shared<layer::ImageListData>(layer::ImageListData{QSize(width, height), {}}));
    });
}

int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask) {
    return layer::OnMain([=] {
        const auto data = layer::ImageLists().Find(list);
        return data != nullptr ? layer::AddImages(*data, layer::Bitmaps().Find(bitmap), mask) : -1;
    });
}

int ImageList_GetImageCount(HIMAGELIST list) {
    return layer::OnMain([=] {
        const auto data = layer::ImageLists().Find(list);
        return data != nullptr ? static_cast<int>(data->Images.size()) : 0;
    });
}

BOOL ImageList_SetImageCount(HIMAGELIST list, UINT count) {
    return layer::OnMain([=] {
        const auto data = layer::ImageLists().Find(list);
        if (data != nullptr) {
            data->Images.resize(count);
        }
        return data != nullptr ? TRUE : FALSE;
    });
}

BOOL ImageList_Destroy(HIMAGELIST list) {
    return layer::OnMain([=] { return layer::ImageLists().Remove(list) != nullptr ? TRUE : FALSE; });
}
