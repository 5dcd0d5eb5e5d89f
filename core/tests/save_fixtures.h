#pragma once

// Documents of chosen sizes for the tests of ReviewStore::save.

#include "dravik/joints.h"
#include "dravik/review.h"
#include "hash/sha256.h"
#include "test_support.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace savetest {

// A valid document of `frames` single-rider pairs, each with a full 19-joint detection, so that
// its encoded size grows with `frames` (about 3 KB each). Deterministic for a given revision.
inline dravik::ReviewDocument document(std::int64_t revision, int frames = 1) {
    std::vector<dravik::ReviewFrame> list;
    for (int i = 0; i < frames; ++i) {
        dravik::ReviewFrame frame;
        frame.pairID = "pair" + std::to_string(i);
        frame.riderID = "rider";
        frame.id = frame.pairID + "/" + frame.riderID;
        frame.role = "subject";
        frame.riderDisplayName = "Rider";
        frame.name = "Turn " + std::to_string(i);
        frame.file = "photos/IMG_" + std::to_string(i) + ".jpg";
        frame.sourceHash = dravik::sha256Text(frame.file.data(), frame.file.size());
        frame.imageSize = {4000, 3000};
        frame.panel = {0, 0, 4000, 3000};
        frame.crop = {1000, 800, 1200, 1400};
        dravik::DravikResult result{"3D", "needsReview", 1, {}};
        int j = 0;
        for (const auto& name : dravik::InspectionRenderer::jointNames()) {
            result.joints.push_back(
                {name, 1000.5 + j * 31 + revision % 97, 800.25 + j * 43, 0.5 + j * 0.01});
            ++j;
        }
        frame.raw.push_back(std::move(result));
        list.push_back(std::move(frame));
    }
    const std::string seed = "results";
    return dravik::ReviewDocument(dravik::sha256Text(seed.data(), seed.size()), std::move(list),
                                  revision);
}

// Every entry of a folder except the review's lock file, sorted.
inline std::vector<std::string> entries(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const auto name = entry.path().filename().string();
        if (!name.ends_with(".lock"))
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace savetest
