// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

namespace tessary::samplegen {

// Baseline JPEG of 8-bit RGB pixels with optimised Huffman tables (smaller, same pixels).
std::vector<std::uint8_t> encodeJpeg(const std::vector<std::uint8_t>& rgb, int width, int height,
                                     int quality);

} // namespace tessary::samplegen
