#include "dravik/error.h"
#include "dravik/image.h"
#include "hash/sha256.h"
#include "image/jpeg_codec.h"
#include "image/orientation.h"
#include "image/photo_file.h"
#include "image/photo_text.h"
#include "image/png_codec.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

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

// The whole displayed pixels of `rect`; refuses a rectangle outside the photo.
PixelBox wholePixels(const PixelRect& rect, ImageSize size, const std::string& name) {
    const double left = std::max(0.0, std::floor(rect.x));
    const double top = std::max(0.0, std::floor(rect.y));
    const double right = std::min(static_cast<double>(size.width), std::ceil(rect.maxX()));
    const double bottom = std::min(static_cast<double>(size.height), std::ceil(rect.maxY()));
    const bool finite = std::isfinite(rect.x) && std::isfinite(rect.y) &&
                        std::isfinite(rect.width) && std::isfinite(rect.height);
    if (!finite || !(left < right && top < bottom))
        throw DravikError("The region " + describe(rect) + " lies outside " + name + " (" +
                          std::to_string(size.width) + " \u00d7 " + std::to_string(size.height) +
                          " pixels) or is empty.");
    return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
            static_cast<int>(bottom - top)};
}

// `box` grown to whole blocks of `reduction` pixels, in units of blocks: a block at the photo's
// right or bottom edge may be partial, as in a JPEG decoder's scaled output.
PixelBox inBlocks(const PixelBox& box, int reduction) {
    const int left = box.x / reduction;
    const int top = box.y / reduction;
    const int right = (box.x + box.width + reduction - 1) / reduction;
    const int bottom = (box.y + box.height + reduction - 1) / reduction;
    return {left, top, right - left, bottom - top};
}

// Averages blocks of reduction × reduction pixels, partial blocks at the edges included.
Image reduce(const Image& image, int reduction) {
    const int width = (image.width + reduction - 1) / reduction;
    const int height = (image.height + reduction - 1) / reduction;
    const std::size_t stride = static_cast<std::size_t>(width) * 3;
    auto pixels = std::make_shared<std::vector<std::uint8_t>>(stride * height);
    std::vector<std::uint32_t> sums(stride);
    for (int y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        const int rows = std::min(reduction, image.height - y * reduction);
        for (int r = 0; r < rows; ++r) {
            const std::uint8_t* row = image.data() + (y * reduction + r) * image.stride;
            for (int x = 0; x < image.width; ++x)
                for (int c = 0; c < 3; ++c)
                    sums[static_cast<std::size_t>(x / reduction) * 3 + c] += row[x * 3 + c];
        }
        std::uint8_t* out = pixels->data() + y * stride;
        for (int x = 0; x < width; ++x) {
            const int columns = std::min(reduction, image.width - x * reduction);
            const std::uint32_t count = static_cast<std::uint32_t>(rows * columns);
            for (int c = 0; c < 3; ++c)
                out[x * 3 + c] = static_cast<std::uint8_t>((sums[x * 3 + c] + count / 2) / count);
        }
    }
    return Image{width, height, stride, std::move(pixels)};
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
    return reduced(rect, 1).image;
}

ReducedImage ImageInput::reduced(const PixelRect& rect, int reduction) const {
    const std::string name = quotedFileName(file_);
    if (reduction != 1 && reduction != 2 && reduction != 4 && reduction != 8)
        throw DravikError(name + " cannot be decoded at 1/" + std::to_string(reduction) +
                          " of its size.");
    const Orientation orientation = Orientation::fromExif(orientation_);
    const PixelBox stored = orientation.toStored(wholePixels(rect, size_, name), encoded_);
    const PixelBox blocks = inBlocks(stored, reduction);
    const PixelBox aligned{
        blocks.x * reduction, blocks.y * reduction,
        std::min(blocks.width * reduction, encoded_.width - blocks.x * reduction),
        std::min(blocks.height * reduction, encoded_.height - blocks.y * reduction)};
    const std::uint8_t* data = bytes_->data();
    const std::size_t size = bytes_->size();
    Image region;
    if (format_ == Format::jpeg)
        region = jpeg::decodeRegion(data, size, reduction == 1 ? stored : blocks, name, reduction);
    else if (reduction == 1)
        region = png::decodeRegion(data, size, stored, name);
    else
        region = reduce(png::decodeRegion(data, size, aligned, name), reduction);
    const PixelBox shown = orientation.toDisplayed(reduction == 1 ? stored : aligned, encoded_);
    return {orientation.apply(region),
            {double(shown.x), double(shown.y), double(shown.width), double(shown.height)}};
}

Image ImageInput::decoded() const {
    return cropped(
        PixelRect{0, 0, static_cast<double>(size_.width), static_cast<double>(size_.height)});
}

} // namespace dravik
