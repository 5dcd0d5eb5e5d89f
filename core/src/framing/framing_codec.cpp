// SPDX-License-Identifier: Apache-2.0
#include "framing/framing_codec.h"

#include "dravik/review.h"

#include "json/geometry_codec.h"
#include <algorithm>
#include <array>

namespace dravik::framing {

namespace {

template <std::size_t N>
void requireExactKeys(const json::Node& node, const std::array<std::string_view, N>& keys) {
    if (!node.isObject())
        node.fail("must be an object");
    for (const auto& [key, value] : node.members())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            value.fail("is not a key this file may hold");
    for (std::string_view key : keys)
        node[key]; // fails when missing
}

constexpr std::array<std::string_view, 4> recordKeys = {"frameID", "sourceHash", "panel", "bounds"};
constexpr std::array<std::string_view, 4> rectKeys = {"x", "y", "width", "height"};

// Finite numbers only; the sign of a side is a matter of fit, judged against the frame.
PixelRect readAnyRect(const json::Node& node) {
    requireExactKeys(node, rectKeys);
    return {node["x"].number(), node["y"].number(), node["width"].number(),
            node["height"].number()};
}

bool fits(const PhotoFramingRegion& region, const ReviewFrame& frame) {
    const PixelRect& bounds = region.bounds;
    const PixelRect& panel = frame.panel;
    return region.sourceHash == frame.sourceHash && region.panel == panel && bounds.width > 0 &&
           bounds.height > 0 && bounds.x >= panel.x && bounds.y >= panel.y &&
           bounds.x + bounds.width <= panel.x + panel.width &&
           bounds.y + bounds.height <= panel.y + panel.height;
}

[[noreturn]] void refuse() {
    throw DravikError("Photo framing does not match its source or panel.");
}

} // namespace

PhotoFramingRegion framingRegionFromJson(const json::Node& node) {
    requireExactKeys(node, recordKeys);
    return {node["frameID"].string(), node["sourceHash"].string(), readAnyRect(node["panel"]),
            readAnyRect(node["bounds"])};
}

json::Json toJson(const PhotoFramingRegion& region) {
    return json::Json{{"frameID", region.frameID},
                      {"sourceHash", region.sourceHash},
                      {"panel", json::write(region.panel)},
                      {"bounds", json::write(region.bounds)}};
}

std::vector<PhotoFramingRegion> framingFileFromJson(const json::Node& root) {
    std::vector<PhotoFramingRegion> regions;
    for (const json::Node& item : root.items())
        regions.push_back(framingRegionFromJson(item));
    return regions;
}

json::Json framingFileToJson(const std::vector<PhotoFramingRegion>& regions) {
    json::Json list = json::Json::array();
    for (const PhotoFramingRegion& region : regions)
        list.push_back(toJson(region));
    return list;
}

std::map<std::string, PixelRect> matchFraming(const std::vector<PhotoFramingRegion>& regions,
                                              const std::vector<ReviewFrame>& frames) {
    std::map<std::string, PixelRect> bounds;
    for (const PhotoFramingRegion& region : regions) {
        auto frame = std::find_if(frames.begin(), frames.end(),
                                  [&](const ReviewFrame& f) { return f.id == region.frameID; });
        if (frame == frames.end() || !fits(region, *frame))
            refuse();
        auto [it, added] = bounds.emplace(region.frameID, region.bounds);
        if (!added && it->second != region.bounds)
            refuse();
    }
    return bounds;
}

} // namespace dravik::framing
