#pragma once

#include <optional>
#include <string>
#include <vector>

class QByteArray;

namespace tessary {

// A session offered for opening: from the launch presets or found by discovery.
struct ReviewPreset {
    std::string title;
    std::string manifest; // file-system path of the session manifest
    std::string results;  // file-system path of its results file
    bool operator==(const ReviewPreset&) const = default;

    const std::string& id() const { return manifest; }
};

// A JSON array of objects with exactly the string keys "title", "manifest" and "results";
// none when the text is anything else. The paths are expanded as expandUserPath does.
std::optional<std::vector<ReviewPreset>> decodePresets(const QByteArray& json);

} // namespace tessary
