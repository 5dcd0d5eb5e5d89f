// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"
#include "image/pixel_box.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dravik::png {

struct Header {
    ImageSize size;      // as stored
    int orientation = 1; // from an eXIf chunk before the image data
    bool alpha = false;  // an alpha channel or a transparent colour, decoded as a fourth sample
};

bool matches(const std::uint8_t* data, std::size_t size);

// Reads the chunks up to the image data. `fileName` is the quoted name used in messages.
Header readHeader(const std::uint8_t* data, std::size_t size, const std::string& fileName);

// Decodes `box` (stored pixels, inside the photo) to 8-bit RGB: palette and grey are expanded,
// 16-bit samples scaled, and transparent pixels composited on white. Rows below the box are
// never read. With a `denominator` above 1 the box is kept at that fraction of its size, each
// pixel the mean of the block it stands for, as it is decoded: no full-size copy is made.
Image decodeRegion(const std::uint8_t* data, std::size_t size, const PixelBox& box,
                   const std::string& fileName, int denominator = 1);

} // namespace dravik::png
