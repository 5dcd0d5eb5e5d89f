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
};

bool matches(const std::uint8_t* data, std::size_t size);

// Reads only the markers up to the first scan. `fileName` is the quoted name used in messages.
Header readHeader(const std::uint8_t* data, std::size_t size, const std::string& fileName);

// Decodes only `box` to 8-bit RGB: rows above it are skipped without colour conversion, columns
// outside it are left out, rows below it are never read. With a reduction of 2, 4 or 8 the photo
// is scaled down while decoding, and `box` lies inside the scaled photo (each side rounded up).
Image decodeRegion(const std::uint8_t* data, std::size_t size, const PixelBox& box,
                   const std::string& fileName, int reduction = 1);

} // namespace dravik::jpeg
