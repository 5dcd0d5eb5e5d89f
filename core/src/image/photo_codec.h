#pragma once

#include "dravik/geometry.h"
#include "dravik/image.h"

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

// Decodes the part `rect` (oriented pixels, rounded outwards, clipped to the photo) of a photo
// whose header is `header`, as it is displayed. Fails with a sentence when `rect` lies outside
// the photo or the data turns out damaged.
Image decodePhotoRegion(const std::uint8_t* data, std::size_t size, const PhotoHeader& header,
                        const PixelRect& rect, const std::string& fileName);

} // namespace dravik
