// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessary {

// A session offered for opening: from the launch presets or found by discovery.
struct ReviewPreset {
    std::string title;
    std::string manifest; // file-system path of the session manifest
    std::string results;  // file-system path of its results file
    bool operator==(const ReviewPreset&) const = default;

    const std::string& id() const { return manifest; }
};

// The presets of a launch file, its paths expanded as expandUserPath does; none when the file is
// missing or is not a launch file the core reads.
std::optional<std::vector<ReviewPreset>> readPresets(const std::filesystem::path& launchFile);

} // namespace tessary
