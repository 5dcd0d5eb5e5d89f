// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/pairs.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct RiderInput {
    std::string id;
    std::string role; // "subject" (the rider's own photo) or "reference"
    std::string displayName;
    std::string file; // relative to the manifest's folder
    std::string sourceHash;
    ImageSize imageSize;
    PixelRect panel; // the full photo panel
    PixelRect crop;  // the rider crop of the first detection
    bool operator==(const RiderInput&) const = default;
};

struct PairInput {
    std::string id;
    std::string title;
    std::vector<RiderInput> riders;
    std::optional<CornerDirection> cornerDirection{}; // the turn direction seen in the photos
    std::vector<CoachingBullet> photoCoaching{};      // whole-body notes from the photos
    bool operator==(const PairInput&) const = default;
};

// "session.json": the photos of a session, grouped into pairs.
struct SessionManifest {
    std::string title;
    std::vector<PairInput> pairs;
    bool operator==(const SessionManifest&) const = default;

    std::string encode() const;
    static SessionManifest decode(std::string_view json, const std::string& fileLabel);
    static SessionManifest load(const std::filesystem::path& file);
};

} // namespace dravik
