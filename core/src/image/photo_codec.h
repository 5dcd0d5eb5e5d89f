// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"
#include "image/pixel_box.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dravik {

// What the first bytes of a photo say, checked against the most one photo may take to decode.
struct PhotoHeader {
    enum class Format { jpeg, png };
    Format format = Format::jpeg;
    ImageSize stored;    // as encoded
    int orientation = 1; // EXIF 1..8
    int channels = 3;    // samples a pixel while decoding: 3, or 4 with ink or transparency
    ImageSize oriented() const;
};

// The most one photo may take to decode: 200 megapixels of RGB.
inline constexpr std::uint64_t maxPhotoDecodeBytes = 600'000'000;
// The largest photo file read.
inline constexpr std::uint64_t maxPhotoFileBytes = 256u << 20;

// Reads the header of a JPEG or PNG photo; `fileName` is the quoted name used in sentences.
// Refuses other files, damaged headers, and photos declaring more pixels than
// maxPhotoDecodeBytes allows, before anything is decoded.
PhotoHeader readPhotoHeader(const std::uint8_t* data, std::size_t size,
                            const std::string& fileName);

// The whole displayed pixels of `rect` (rounded outwards, clipped to a photo of `photo` pixels);
// refuses a rectangle outside the photo, or empty, with a sentence naming `fileName`.
PixelBox wholePixels(const PixelRect& rect, ImageSize photo, const std::string& fileName);

// A displayed box decoded at 1/denominator. DCT scaling works on the stored photo's grid, so the
// box grows to that grid: `stored` is what is decoded, in stored pixels at the scale, `aligned`
// the same in full-size stored pixels, `covers` the displayed pixels the decoded image shows, and
// `size` the image's displayed size.
struct ScaledBox {
    PixelBox stored;
    PixelBox aligned;
    PixelBox covers;
    ImageSize size;
};
ScaledBox scaledBox(const PixelBox& displayed, ImageSize oriented, int orientation,
                    int denominator);

// Decodes the displayed box `box` of a photo whose header is `header` at 1/denominator (1, 2, 4
// or 8), as it is displayed. Fails with a sentence naming `fileName` when the data turns out
// damaged.
Image decodePhotoBox(const std::uint8_t* data, std::size_t size, const PhotoHeader& header,
                     const PixelBox& box, const std::string& fileName, int denominator = 1);

} // namespace dravik
