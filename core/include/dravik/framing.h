// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct ReviewFrame;

// One record of "photo-framing.json": the region of a frame's photo worth framing (the rider).
struct PhotoFramingRegion {
    std::string frameID;
    std::string sourceHash;
    PixelRect panel;  // must repeat the frame's panel exactly
    PixelRect bounds; // inside the panel, in source-photo pixels
    bool operator==(const PhotoFramingRegion&) const = default;

    // The bounds by frame id. A file that cannot be read or is not an array of records with
    // exactly these keys fails with the reader's sentence; a record that does not fit its frame
    // fails the whole load with "Photo framing does not match its source or panel."
    static std::map<std::string, PixelRect> load(const std::filesystem::path& file,
                                                 const std::vector<ReviewFrame>& frames);
    static std::map<std::string, PixelRect> decode(std::string_view json,
                                                   const std::string& fileLabel,
                                                   const std::vector<ReviewFrame>& frames);
    static std::string encode(const std::vector<PhotoFramingRegion>& regions);
};

} // namespace dravik
