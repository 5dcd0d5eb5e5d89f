// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include "json/json_reader.h"
#include <optional>
#include <string>
#include <string_view>

namespace dravik::json {

// {"x", "y"}: finite numbers.
Point2 readPoint(const Node& node);
Json write(const Point2& point);

// {"x", "y", "width", "height"}: finite numbers, width and height not negative.
PixelRect readRect(const Node& node);
Json write(const PixelRect& rect);

// {"width", "height"}: positive whole numbers.
ImageSize readImageSize(const Node& node);
Json write(const ImageSize& size);

// A rectangle that must lie inside an image of `size`, such as a photo's panel or crop.
PixelRect readRectInside(const Node& node, const ImageSize& size);
// "subject" or "reference".
std::string readRole(const Node& node);

// A photo's path as a manifest names it: not empty, and without a NUL, a control character or an
// empty component ("a//b.jpg", "photos/"), which no file of the folder can have. Returns the
// problem ("must not contain a NUL character"), or none.
std::optional<std::string> photoPathProblem(std::string_view file);
std::string readPhotoPath(const Node& node);

// "sha256:" + 64 lower-case hex digits.
bool isContentHash(std::string_view text);
std::string readContentHash(const Node& node);

} // namespace dravik::json
