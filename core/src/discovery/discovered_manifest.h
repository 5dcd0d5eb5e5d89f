// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/manifest.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace dravik::discovery {

inline constexpr std::string_view importedRiderID = "rider";

// What the manifest records of one photo found in a folder.
struct PhotoFacts {
    std::string fileName; // inside the session folder
    std::string sourceHash;
    ImageSize size; // after EXIF orientation
};

// A pair id from a file's stem: letters, digits, "-" and "_" kept, every other run of bytes one
// "-", trimmed of "-"; "photo" when nothing is left.
std::string safeID(std::string_view stem);

// `base`, or the first of `base`-2, `base`-3, ... that is not `taken`; the id returned is taken.
std::string uniqueID(const std::string& base, std::set<std::string>& taken);

// The manifest of a folder of photos never analysed: each photo, in the given order, its own pair
// holding one unreviewed subject frame whose panel and crop are the whole photo. Pair ids are
// made unique by "-2", "-3", ... in that order.
SessionManifest manifestForPhotos(const std::string& title, const std::vector<PhotoFacts>& photos);

} // namespace dravik::discovery
