// SPDX-License-Identifier: Apache-2.0
#include "photos/image_conversion.h"

#include <memory>
#include <vector>

namespace tessary {

namespace {

using Pixels = std::shared_ptr<const std::vector<std::uint8_t>>;

void releasePixels(void* pixels) {
    delete static_cast<Pixels*>(pixels);
}

} // namespace

QImage toQImage(const dravik::Image& image) {
    if (image.empty() || !image.pixels)
        return {};
    auto* owner = new Pixels(image.pixels);
    return QImage(image.data(), image.width, image.height, static_cast<qsizetype>(image.stride),
                  QImage::Format_RGB888, releasePixels, owner);
}

} // namespace tessary
