// SPDX-License-Identifier: Apache-2.0
#include "image/photo_codec.h"

#include "dravik/error.h"
#include "image/jpeg_codec.h"
#include "image/orientation.h"
#include "image/png_codec.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace dravik {

namespace {

std::string describe(const PixelRect& rect) {
    auto number = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%g", value);
        return std::string(text);
    };
    return number(rect.x) + ", " + number(rect.y) + ", " + number(rect.width) + " \u00d7 " +
           number(rect.height);
}

std::string sizeText(ImageSize size) {
    return std::to_string(size.width) + " \u00d7 " + std::to_string(size.height);
}

void checkDecodeSize(const PhotoHeader& header, const std::string& fileName) {
    const ImageSize stored = header.stored;
    if (stored.width <= 0 || stored.height <= 0)
        throw DravikError(fileName + " is damaged or truncated and cannot be decoded.");
    const auto pixels =
        static_cast<std::uint64_t>(stored.width) * static_cast<std::uint64_t>(stored.height);
    const auto channels = static_cast<std::uint64_t>(header.channels);
    if (pixels * channels <= maxPhotoDecodeBytes)
        return;
    const std::string megapixels = std::to_string(maxPhotoDecodeBytes / channels / 1'000'000);
    if (channels == 3)
        throw DravikError(fileName + " declares " + sizeText(stored) + " pixels, more than the " +
                          megapixels + " megapixels a photo may have.");
    throw DravikError(fileName + " declares " + sizeText(stored) + " pixels of " +
                      std::to_string(channels) + " samples each, more than the " + megapixels +
                      " megapixels such a photo may have.");
}

} // namespace

ImageSize PhotoHeader::oriented() const {
    return Orientation::fromExif(orientation).oriented(stored);
}

PhotoHeader readPhotoHeader(const std::uint8_t* data, std::size_t size,
                            const std::string& fileName) {
    PhotoHeader header;
    if (jpeg::matches(data, size)) {
        const jpeg::Header jpeg = jpeg::readHeader(data, size, fileName);
        header = {PhotoHeader::Format::jpeg, jpeg.size, jpeg.orientation,
                  std::max(3, jpeg.components)};
    } else if (png::matches(data, size)) {
        const png::Header png = png::readHeader(data, size, fileName);
        header = {PhotoHeader::Format::png, png.size, png.orientation, png.alpha ? 4 : 3};
    } else {
        throw DravikError(fileName + " is not a JPEG or PNG photo.");
    }
    checkDecodeSize(header, fileName);
    return header;
}

PixelBox wholePixels(const PixelRect& rect, ImageSize photo, const std::string& fileName) {
    const double left = std::max(0.0, std::floor(rect.x));
    const double top = std::max(0.0, std::floor(rect.y));
    const double right = std::min(static_cast<double>(photo.width), std::ceil(rect.maxX()));
    const double bottom = std::min(static_cast<double>(photo.height), std::ceil(rect.maxY()));
    const bool finite = std::isfinite(rect.x) && std::isfinite(rect.y) &&
                        std::isfinite(rect.width) && std::isfinite(rect.height);
    if (!finite || !(left < right && top < bottom))
        throw DravikError("The region " + describe(rect) + " lies outside " + fileName + " (" +
                          sizeText(photo) + " pixels) or is empty.");
    return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
            static_cast<int>(bottom - top)};
}

ScaledBox scaledBox(const PixelBox& displayed, ImageSize oriented, int orientation,
                    int denominator) {
    const Orientation turn = Orientation::fromExif(orientation);
    const ImageSize stored = turn.oriented(oriented); // a quarter turn is its own inverse in size
    const PixelBox box = turn.toStored(displayed, stored);
    const int d = denominator;
    const auto up = [d](int value) { return (value + d - 1) / d; };
    const int left = box.x / d;
    const int top = box.y / d;
    const int right = std::min(up(box.x + box.width), up(stored.width));
    const int bottom = std::min(up(box.y + box.height), up(stored.height));
    const PixelBox aligned{left * d, top * d, std::min(right * d, stored.width) - left * d,
                           std::min(bottom * d, stored.height) - top * d};
    const PixelBox covers = turn.toDisplayed(aligned, stored);
    const ImageSize size = turn.oriented({right - left, bottom - top});
    return {{left, top, right - left, bottom - top}, aligned, covers, size};
}

Image decodePhotoBox(const std::uint8_t* data, std::size_t size, const PhotoHeader& header,
                     const PixelBox& box, const std::string& fileName, int denominator) {
    const ScaledBox scaled = scaledBox(box, header.oriented(), header.orientation, denominator);
    const Orientation orientation = Orientation::fromExif(header.orientation);
    Image region;
    if (header.format == PhotoHeader::Format::jpeg) {
        region = jpeg::decodeRegion(data, size, scaled.stored, fileName, denominator);
    } else {
        // PNG has no scaled decoding: the box's full-size pixels on the scale's grid are shrunk
        // as they are read.
        region = png::decodeRegion(data, size, scaled.aligned, fileName, denominator);
    }
    return orientation.apply(region);
}

} // namespace dravik
