// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace dravik {

// The EXIF orientation tag (1..8) of an APP1 payload that starts with "Exif\0\0"; 1 when the
// payload is not EXIF, is damaged, or has no valid orientation.
int exifOrientation(const std::uint8_t* app1, std::size_t size);

// The same for a PNG eXIf chunk, which holds the TIFF structure without the "Exif\0\0" prefix.
int exifOrientationOfTiff(const std::uint8_t* tiff, std::size_t size);

} // namespace dravik
