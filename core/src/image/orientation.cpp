// SPDX-License-Identifier: Apache-2.0
#include "image/orientation.h"

#include "image/pixel_buffer.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace dravik {

Orientation Orientation::fromExif(int value) {
    switch (value) {
    case 2:
        return {false, true, false}; // mirrored left to right
    case 3:
        return {false, true, true}; // upside down
    case 4:
        return {false, false, true}; // mirrored top to bottom
    case 5:
        return {true, false, false}; // transposed
    case 6:
        return {true, false, true}; // turned a quarter clockwise to display
    case 7:
        return {true, true, true}; // transversed
    case 8:
        return {true, true, false}; // turned a quarter anticlockwise to display
    default:
        return {};
    }
}

ImageSize Orientation::oriented(ImageSize stored) const {
    return transpose ? ImageSize{stored.height, stored.width} : stored;
}

PixelBox Orientation::toStored(const PixelBox& displayed, ImageSize stored) const {
    PixelBox box = transpose ? PixelBox{displayed.y, displayed.x, displayed.height, displayed.width}
                             : displayed;
    if (flipU)
        box.x = stored.width - box.x - box.width;
    if (flipV)
        box.y = stored.height - box.y - box.height;
    return box;
}

PixelBox Orientation::toDisplayed(const PixelBox& stored, ImageSize storedSize) const {
    PixelBox box = stored;
    if (flipU)
        box.x = storedSize.width - box.x - box.width;
    if (flipV)
        box.y = storedSize.height - box.y - box.height;
    return transpose ? PixelBox{box.y, box.x, box.height, box.width} : box;
}

Image Orientation::apply(const Image& stored) const {
    if (identity() || stored.empty())
        return stored;
    const ImageSize size = oriented({stored.width, stored.height});
    const std::size_t stride = static_cast<std::size_t>(size.width) * 3;
    auto pixels = newPixelBuffer(stride * size.height);
    const std::uint8_t* source = stored.data();
    std::uint8_t* target = pixels->data();
    const int lastU = stored.width - 1;
    const int lastV = stored.height - 1;
    // Tiles keep both the rows read and the rows written in cache when transposing.
    constexpr int tile = 64;
    for (int ty = 0; ty < size.height; ty += tile) {
        const int yEnd = std::min(size.height, ty + tile);
        for (int tx = 0; tx < size.width; tx += tile) {
            const int xEnd = std::min(size.width, tx + tile);
            for (int y = ty; y < yEnd; ++y) {
                std::uint8_t* out = target + y * stride + static_cast<std::size_t>(tx) * 3;
                for (int x = tx; x < xEnd; ++x, out += 3) {
                    int u = transpose ? y : x;
                    int v = transpose ? x : y;
                    if (flipU)
                        u = lastU - u;
                    if (flipV)
                        v = lastV - v;
                    std::memcpy(out, source + v * stored.stride + static_cast<std::size_t>(u) * 3,
                                3);
                }
            }
        }
    }
    return Image{size.width, size.height, stride, std::move(pixels)};
}

} // namespace dravik
