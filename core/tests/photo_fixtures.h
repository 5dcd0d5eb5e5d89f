// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

// Photos written in the tests with libjpeg and libpng, so that every byte is known.
namespace photo_fixtures {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

// An 8-bit RGB picture in memory.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;

    static Picture filled(int width, int height, const std::function<Rgb(int x, int y)>& colour);
    Rgb at(int x, int y) const;
    void set(int x, int y, Rgb colour);
};

// Red rising to the right from `red`, green rising downwards, blue 90: no two nearby pixels alike.
inline Picture gradient(int width, int height, int red = 0) {
    return Picture::filled(width, height, [=](int x, int y) {
        return Rgb{std::uint8_t(x + red), std::uint8_t(y), 90};
    });
}

inline Picture flat(int width, int height, Rgb colour) {
    return Picture::filled(width, height, [=](int, int) { return colour; });
}

// The pixels of a decoded image, without its row padding.
inline Picture pictureOf(const dravik::Image& image) {
    Picture picture{image.width, image.height, {}};
    for (int y = 0; y < image.height; ++y)
        picture.rgb.insert(picture.rgb.end(), image.data() + y * image.stride,
                           image.data() + y * image.stride + std::size_t(image.width) * 3);
    return picture;
}

inline Picture region(const Picture& picture, int x, int y, int width, int height) {
    return Picture::filled(width, height, [&](int u, int v) { return picture.at(x + u, y + v); });
}

// The largest difference of one sample; 1000 for pictures of different sizes.
inline int largestDifference(const Picture& a, const Picture& b) {
    if (a.width != b.width || a.height != b.height)
        return 1000;
    int worst = 0;
    for (std::size_t i = 0; i < a.rgb.size(); ++i)
        worst = std::max(worst, std::abs(int(a.rgb[i]) - int(b.rgb[i])));
    return worst;
}

struct JpegOptions {
    int quality = 100;
    bool fullChroma = true; // 4:4:4; otherwise 4:2:0
    int orientation = 0;    // 0: no EXIF segment
    bool bigEndianExif = false;
    bool progressive = false;
};

std::vector<std::uint8_t> encodeJpeg(const Picture& picture, const JpegOptions& options = {});
// Four samples a pixel, stored as given (Adobe files store them inverted: 255 is no ink).
std::vector<std::uint8_t> encodeCmykJpeg(int width, int height,
                                         const std::vector<std::uint8_t>& cmyk);

// The stored form of `displayed` for an EXIF orientation: what a camera held sideways writes.
Picture storedFor(const Picture& displayed, int orientation);

struct PngOptions {
    int colourType = 2; // PNG_COLOR_TYPE_RGB
    int bitDepth = 8;
    bool interlaced = false;
    int orientation = 0; // 0: no eXIf chunk
};

// `samples` holds bitDepth-wide samples (big-endian for 16 bit) or palette indices, row by row,
// packed as libpng expects; `palette` and `transparency` are for palette photos.
std::vector<std::uint8_t> encodePng(int width, int height, const std::vector<std::uint8_t>& samples,
                                    const PngOptions& options, const std::vector<Rgb>& palette = {},
                                    const std::vector<std::uint8_t>& transparency = {});

} // namespace photo_fixtures
