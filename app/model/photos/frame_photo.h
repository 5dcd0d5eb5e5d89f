// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"
#include "dravik/geometry.h"
#include "dravik/image.h"

#include <QImage>
#include <cstdint>

namespace tessary {

// A frame's panel as decoded for the screen. The image shows `covers`, the panel grown to the
// decode's block grid, so it is placed through `covers`, never through the panel.
struct FramePhoto {
    QImage image;
    dravik::PixelRect covers;
    dravik::PhotoScale scale = dravik::PhotoScale::full;

    std::uint64_t bytes() const { return static_cast<std::uint64_t>(image.sizeInBytes()); }
};

// Whether `a` shows more of the photo's pixels than `b`.
inline bool sharper(dravik::PhotoScale a, dravik::PhotoScale b) {
    return static_cast<int>(a) < static_cast<int>(b);
}

// A decoded panel with the stamp its file had just before it was read.
struct DecodedPhoto {
    FramePhoto photo;
    dravik::FileStamp stamp;
};

} // namespace tessary
