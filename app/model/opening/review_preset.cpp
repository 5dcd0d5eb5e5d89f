// SPDX-License-Identifier: Apache-2.0
#include "opening/review_preset.h"

#include "dravik/launch_config.h"
#include "environment/bundle.h"

namespace tessary {

std::optional<std::vector<ReviewPreset>> readPresets(const std::filesystem::path& launchFile) {
    std::vector<dravik::LaunchPreset> read;
    try {
        read = dravik::loadLaunchPresets(launchFile);
    } catch (const std::exception&) {
        return std::nullopt; // no presets is what a missing or damaged launch file means
    }
    std::vector<ReviewPreset> presets;
    for (const dravik::LaunchPreset& preset : read)
        presets.push_back({preset.title, expandUserPath(preset.manifest).string(),
                           expandUserPath(preset.results).string()});
    return presets;
}

} // namespace tessary
