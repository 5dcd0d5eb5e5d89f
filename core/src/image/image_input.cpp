#include "dravik/error.h"
#include "dravik/image.h"
#include "hash/sha256.h"
#include "image/jpeg_codec.h"
#include "image/orientation.h"
#include "image/photo_file.h"
#include "image/photo_text.h"
#include "image/png_codec.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace dravik {

namespace {

constexpr std::uint64_t maxPixels = 200'000'000;

std::string describe(const PixelRect& rect) {
    auto number = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%g", value);
        return std::string(text);
    };
    return number(rect.x) + ", " + number(rect.y) + ", " + number(rect.width) + " \u00d7 " +
           number(rect.height);
}

} // namespace

ImageInput ImageInput::load(const std::filesystem::path& file) {
    ImageInput input;
    input.file_ = file;
    input.bytes_ = readPhotoFile(file);
    const std::uint8_t* data = input.bytes_->data();
    const std::size_t size = input.bytes_->size();
    input.sourceHash_ = sha256Text(data, size);
    const std::string name = quotedFileName(file);
    if (jpeg::matches(data, size)) {
        const jpeg::Header header = jpeg::readHeader(data, size, name);
        input.format_ = Format::jpeg;
        input.encoded_ = header.size;
        input.orientation_ = header.orientation;
    } else if (png::matches(data, size)) {
        const png::Header header = png::readHeader(data, size, name);
        input.format_ = Format::png;
        input.encoded_ = header.size;
        input.orientation_ = header.orientation;
    } else {
        throw DravikError(name + " is not a JPEG or PNG photo.");
    }
    const ImageSize stored = input.encoded_;
    if (stored.width <= 0 || stored.height <= 0)
        throw DravikError(name + " is damaged or truncated and cannot be decoded.");
    if (static_cast<std::uint64_t>(stored.width) * static_cast<std::uint64_t>(stored.height) >
        maxPixels)
        throw DravikError(name + " declares " + std::to_string(stored.width) + " \u00d7 " +
                          std::to_string(stored.height) +
                          " pixels, more than the 200 megapixels a photo may have.");
    input.size_ = Orientation::fromExif(input.orientation_).oriented(stored);
    return input;
}

Image ImageInput::cropped(const PixelRect& rect) const {
    const std::string name = quotedFileName(file_);
    const double left = std::max(0.0, std::floor(rect.x));
    const double top = std::max(0.0, std::floor(rect.y));
    const double right = std::min(static_cast<double>(size_.width), std::ceil(rect.maxX()));
    const double bottom = std::min(static_cast<double>(size_.height), std::ceil(rect.maxY()));
    const bool finite = std::isfinite(rect.x) && std::isfinite(rect.y) &&
                        std::isfinite(rect.width) && std::isfinite(rect.height);
    if (!finite || !(left < right && top < bottom))
        throw DravikError("The region " + describe(rect) + " lies outside " + name + " (" +
                          std::to_string(size_.width) + " \u00d7 " + std::to_string(size_.height) +
                          " pixels) or is empty.");
    const PixelBox displayed{static_cast<int>(left), static_cast<int>(top),
                             static_cast<int>(right - left), static_cast<int>(bottom - top)};
    const Orientation orientation = Orientation::fromExif(orientation_);
    const PixelBox stored = orientation.toStored(displayed, encoded_);
    const std::uint8_t* data = bytes_->data();
    const std::size_t size = bytes_->size();
    Image region = format_ == Format::jpeg ? jpeg::decodeRegion(data, size, stored, name)
                                           : png::decodeRegion(data, size, stored, name);
    return orientation.apply(region);
}

Image ImageInput::decoded() const {
    return cropped(
        PixelRect{0, 0, static_cast<double>(size_.width), static_cast<double>(size_.height)});
}

} // namespace dravik
