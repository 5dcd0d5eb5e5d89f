// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"
#include "image/pixel_box.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dravik::jpeg {

struct Header {
    ImageSize size; // as stored
    int orientation = 1;
    int components = 3; // 1 grey, 3 colour, 4 ink (CMYK)
};

bool matches(const std::uint8_t* data, std::size_t size);

// Reads only the markers up to the first scan. `fileName` is the quoted name used in messages.
Header readHeader(const std::uint8_t* data, std::size_t size, const std::string& fileName);

// Decodes only `box` to 8-bit RGB, at 1/`denominator` (1, 2, 4 or 8) of the photo's size by DCT
// scaling: `box` is in pixels of the stored photo at that scale, whose size is the stored size
// divided by `denominator`, rounded up. Rows above it are skipped without colour conversion,
// columns outside it are left out, rows below it are never read.
Image decodeRegion(const std::uint8_t* data, std::size_t size, const PixelBox& box,
                   const std::string& fileName, int denominator = 1);

} // namespace dravik::jpeg
