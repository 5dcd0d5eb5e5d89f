// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/framing.h"

#include "json/json_reader.h"
#include <map>
#include <string>
#include <vector>

namespace dravik::framing {

inline constexpr std::string_view framingKind = "photo framing file";

// The one file without a "format"/"version" header: a bare array of records, each an object with
// exactly the keys frameID, sourceHash, panel and bounds, the rectangles with exactly x, y, width
// and height. Only the shape is checked here; whether a record fits its frame is matchFraming's.
PhotoFramingRegion framingRegionFromJson(const json::Node& node);
json::Json toJson(const PhotoFramingRegion& region);

std::vector<PhotoFramingRegion> framingFileFromJson(const json::Node& root);
json::Json framingFileToJson(const std::vector<PhotoFramingRegion>& regions);

// The bounds by frame id; any record that does not fit its frame, or a second record for a frame
// with other bounds, fails with "Photo framing does not match its source or panel."
std::map<std::string, PixelRect> matchFraming(const std::vector<PhotoFramingRegion>& regions,
                                              const std::vector<ReviewFrame>& frames);

} // namespace dravik::framing
