// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/image.h"
#include "hash/sha256.h"
#include "image/photo_codec.h"
#include "io/io_failure.h"

namespace dravik {

namespace {

const std::uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

} // namespace

ImageInput ImageInput::load(const std::filesystem::path& file) {
    ImageInput input;
    input.file_ = file;
    auto bytes =
        std::make_shared<std::string>(readWholeFile(file, "photo", maxPhotoFileBytes).bytes);
    input.sourceHash_ = sha256Text(bytes->data(), bytes->size());
    input.size_ = readPhotoHeader(bytesOf(*bytes), bytes->size(), quotedName(file)).oriented();
    input.bytes_ = std::move(bytes);
    return input;
}

Image ImageInput::cropped(const PixelRect& rect) const {
    const std::string name = quotedName(file_);
    const PhotoHeader header = readPhotoHeader(bytesOf(*bytes_), bytes_->size(), name);
    return decodePhotoBox(bytesOf(*bytes_), bytes_->size(), header,
                          wholePixels(rect, header.oriented(), name), name);
}

ReducedImage ImageInput::reduced(const PixelRect& rect, int reduction) const {
    const std::string name = quotedName(file_);
    if (reduction != 1 && reduction != 2 && reduction != 4 && reduction != 8)
        throw DravikError(name + " cannot be decoded at 1/" + std::to_string(reduction) +
                          " of its size.");
    const PhotoHeader header = readPhotoHeader(bytesOf(*bytes_), bytes_->size(), name);
    const PixelBox box = wholePixels(rect, header.oriented(), name);
    const PixelBox covers = scaledBox(box, header.oriented(), header.orientation, reduction).covers;
    return {decodePhotoBox(bytesOf(*bytes_), bytes_->size(), header, box, name, reduction),
            {double(covers.x), double(covers.y), double(covers.width), double(covers.height)}};
}

Image ImageInput::decoded() const {
    return cropped(
        PixelRect{0, 0, static_cast<double>(size_.width), static_cast<double>(size_.height)});
}

} // namespace dravik
