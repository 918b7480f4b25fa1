#include <array>
#include <cstdlib>

#include "platform/linux/resources/resource_cursor.h"
#include "platform/linux/resources/resource_file.h"

namespace resource {
namespace {

constexpr int kLargestSide = 4096;
constexpr std::uint32_t kOpaque = 0xFF000000;

// What a bitmap in memory begins with: its header and colour table. The pixels follow.
struct BitmapHead {
    int Width = 0;
    int Height = 0;                            // of what is stored; twice the image's in an icon
    bool FromTop = false;                      // the first row stored is the top one
    int Bits = 0;                              // per pixel
    std::array<std::uint32_t, 256> Colours{};  // opaque
};

std::optional<BitmapHead> ReadBitmapHead(Cursor& cursor) {
    BitmapHead head;
    std::uint32_t size = cursor.U32();
    std::int32_t width = cursor.S32();
    std::int32_t height = cursor.S32();
    std::uint16_t planes = cursor.U16();
    head.Bits = cursor.U16();
    std::uint32_t compression = cursor.U32();
    cursor.Skip(12);  // size of the pixels, resolution
    std::uint32_t used = cursor.U32();
    cursor.U32();  // important colours
    if (!cursor.Ok() || size < 40 || planes != 1 || compression != 0) {
        return std::nullopt;
    }
    cursor.Skip(size - 40);
    // Compared before the sign is taken off: the lowest number has no positive counterpart.
    if (width < 1 || width > kLargestSide || height == 0 || height > 2 * kLargestSide ||
        height < -2 * kLargestSide) {
        return std::nullopt;
    }
    head.Width = width;
    head.Height = std::abs(height);
    head.FromTop = height < 0;
    if (head.Bits != 1 && head.Bits != 4 && head.Bits != 8 && head.Bits != 24 && head.Bits != 32) {
        return std::nullopt;
    }
    // Deep images may carry a table as well, for displays with few colours.
    std::uint32_t most = head.Bits <= 8 ? 1U << head.Bits : 256;
    std::uint32_t count = used == 0 && head.Bits <= 8 ? most : used;
    if (count > most) {
        return std::nullopt;
    }
    head.Colours.fill(kOpaque);
    for (std::uint32_t i = 0; i < count; ++i) {
        head.Colours[i] = cursor.U32() | kOpaque;
    }
    if (!cursor.Ok()) {
        return std::nullopt;
    }
    return head;
}

std::size_t RowSize(int width, int bits) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 31) / 32 * 4;
}

std::uint32_t Byte(Bytes row, std::size_t index) {
    return std::to_integer<std::uint32_t>(row[index]);
}

// One pixel of a row: a colour, with the fourth byte of a 32-bit pixel as it is.
std::uint32_t PixelAt(const BitmapHead& head, Bytes row, std::size_t x) {
    switch (head.Bits) {
        case 1:
            return head.Colours[Byte(row, x / 8) >> (7 - x % 8) & 1];
        case 4:
            return head.Colours[Byte(row, x / 2) >> (x % 2 == 0 ? 4 : 0) & 15];
        case 8:
            return head.Colours[Byte(row, x)];
        case 24:
            return Byte(row, 3 * x) | Byte(row, 3 * x + 1) << 8 | Byte(row, 3 * x + 2) << 16 | kOpaque;
        default:
            return Byte(row, 4 * x) | Byte(row, 4 * x + 1) << 8 | Byte(row, 4 * x + 2) << 16 |
                   Byte(row, 4 * x + 3) << 24;
    }
}

std::optional<Image> ReadPixels(Cursor& cursor, const BitmapHead& head, int height) {
    std::size_t rowSize = RowSize(head.Width, head.Bits);
    Cursor rows(cursor.Take(rowSize * static_cast<std::size_t>(height)));
    if (!cursor.Ok()) {
        return std::nullopt;
    }
    Image image;
    image.Width = head.Width;
    image.Height = height;
    std::size_t width = static_cast<std::size_t>(head.Width);
    image.Pixels.resize(width * static_cast<std::size_t>(height));
    for (int stored = 0; stored < height; ++stored) {
        int y = head.FromTop ? stored : height - 1 - stored;
        Bytes row = rows.Take(rowSize);
        for (std::size_t x = 0; x < width; ++x) {
            image.Pixels[static_cast<std::size_t>(y) * width + x] = PixelAt(head, row, x);
        }
    }
    return image;
}

// An icon's image: the colours, then a mask of one bit a pixel in which 1 is transparent. With 32 bits the
// alpha says it all, unless it is 0 everywhere.
std::optional<Image> ReadIconImage(Bytes data) {
    Cursor cursor(data);
    std::optional<BitmapHead> head = ReadBitmapHead(cursor);
    if (!head || head->Height % 2 != 0) {
        return std::nullopt;
    }
    int height = head->Height / 2;
    std::optional<Image> image = ReadPixels(cursor, *head, height);
    if (!image) {
        return std::nullopt;
    }
    bool hasAlpha = false;
    for (std::uint32_t pixel : image->Pixels) {
        hasAlpha = hasAlpha || (head->Bits == 32 && (pixel & kOpaque) != 0);
    }
    if (hasAlpha) {
        return image;
    }
    BitmapHead maskHead;
    maskHead.Width = head->Width;
    maskHead.FromTop = head->FromTop;
    maskHead.Bits = 1;
    maskHead.Colours[1] = 1;
    std::optional<Image> mask = ReadPixels(cursor, maskHead, height);
    if (!mask) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < image->Pixels.size(); ++i) {
        image->Pixels[i] = mask->Pixels[i] != 0 ? 0 : image->Pixels[i] | kOpaque;
    }
    return image;
}

}  // namespace

std::optional<std::vector<Image>> FindIcon(Bytes file, std::uint16_t number) {
    std::optional<Bytes> group = Find(file, Type::GroupIcon, number);
    if (!group) {
        return std::nullopt;
    }
    Cursor cursor(*group);
    cursor.U16();
    std::uint16_t kind = cursor.U16();
    std::vector<Image> images;
    for (int left = cursor.U16(); left > 0 && kind == 1; --left) {
        cursor.Skip(12);  // size, depth and length, which the image itself tells
        std::uint16_t imageNumber = cursor.U16();
        if (!cursor.Ok()) {
            return std::nullopt;
        }
        std::optional<Bytes> data = Find(file, Type::Icon, imageNumber);
        std::optional<Image> image = data ? ReadIconImage(*data) : std::nullopt;
        if (image) {
            images.push_back(std::move(*image));
        }
    }
    if (images.empty()) {
        return std::nullopt;
    }
    return images;
}

std::optional<Image> FindBitmap(Bytes file, std::uint16_t number) {
    std::optional<Bytes> data = Find(file, Type::Bitmap, number);
    if (!data) {
        return std::nullopt;
    }
    Cursor cursor(*data);
    std::optional<BitmapHead> head = ReadBitmapHead(cursor);
    if (!head || head->Height > kLargestSide) {
        return std::nullopt;
    }
    std::optional<Image> image = ReadPixels(cursor, *head, head->Height);
    if (image) {
        for (std::uint32_t& pixel : image->Pixels) {
            pixel |= kOpaque;
        }
    }
    return image;
}

}  // namespace resource
