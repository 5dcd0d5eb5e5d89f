// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"

#include "json/json_reader.h"

namespace dravik::json {

// A DravikResult: known, distinct joint names; finite points; confidence within 0...1; candidates
// of known kinds whose `riding` and the result's `rider` name a vehicle and a person among them.
DravikResult readResult(const Node& node);
Json write(const DravikResult& result);

// The body of a DetectionRetry ("primary" and "refined", each optional), without a header.
DetectionRetry readRetry(const Node& node);
Json write(const DetectionRetry& retry);

} // namespace dravik::json
