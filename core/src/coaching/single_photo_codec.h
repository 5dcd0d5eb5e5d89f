// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/coaching.h"

#include "json/json_reader.h"
#include <map>
#include <string>
#include <vector>

namespace dravik::coaching {

inline constexpr std::string_view singlePhotoFormat = "dravik-single-photo-coaching";
inline constexpr std::string_view singlePhotoKind = "photo coaching file";

// One record: at least one observation; every text non-empty.
SinglePhotoCoaching singlePhotoFromJson(const json::Node& node);
json::Json toJson(const SinglePhotoCoaching& record);

// The whole file, in file order; refuses a second record for one frame.
std::vector<SinglePhotoCoaching> singlePhotoFileFromJson(const json::Node& root);
json::Json singlePhotoFileToJson(const std::vector<SinglePhotoCoaching>& records);

// The records by frame id, once each names a lone rider photo of the session, unchanged.
std::map<std::string, SinglePhotoCoaching>
matchSinglePhotos(const std::vector<SinglePhotoCoaching>& records,
                  const std::vector<ReviewFrame>& frames, const json::Source& source);

} // namespace dravik::coaching
