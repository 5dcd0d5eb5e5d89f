// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The two configuration files the app reads at launch from its resources.

namespace dravik {

// A session offered at launch: "launch.json" is a JSON array of objects with exactly the string
// keys "title", "manifest" and "results". The paths are as written; the app expands "~".
struct LaunchPreset {
    std::string title;
    std::string manifest;
    std::string results;
    bool operator==(const LaunchPreset&) const = default;
};

// Both files are read as regular files of at most 1 MiB.
inline constexpr std::size_t maxLaunchConfigBytes = 1u << 20;

// Refuses, with a sentence naming the file, anything but such an array: other or missing keys,
// a key twice, values that are not strings, a path holding a NUL.
std::vector<LaunchPreset> loadLaunchPresets(const std::filesystem::path& file);
std::vector<LaunchPreset> decodeLaunchPresets(std::string_view json, const std::string& fileLabel);

// "data-directory.txt": the data folder's path as UTF-8 text, trimmed of white space and line
// breaks at both ends; none when nothing is left. Refuses text that is not UTF-8 or holds a
// control character (a second line, a NUL) inside the path.
std::optional<std::string> readDataDirectory(const std::filesystem::path& file);
std::optional<std::string> decodeDataDirectory(std::string_view text, const std::string& fileLabel);

} // namespace dravik
