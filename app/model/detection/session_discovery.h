// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/discovery.h"
#include "opening/review_preset.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tessary {

// "N sessions ready · M newly analyzed", and " · Some folders need attention" after failures.
std::string discoverySummary(const dravik::SessionDiscoveryReport& report);

// A session found again replaces its preset where it stands; a new one goes to the end.
std::vector<ReviewPreset> mergedPresets(std::vector<ReviewPreset> presets,
                                        const std::vector<dravik::DiscoveredSession>& sessions);

// One line per folder that failed: its name, ": " and why.
std::vector<std::string> failureLines(const dravik::SessionDiscoveryReport& report);

// SessionDiscovery::run, with a failure of the scan itself reported as the data folder's.
dravik::SessionDiscoveryReport
scanFolders(const std::filesystem::path& data,
            const std::map<std::filesystem::path, std::filesystem::path>& known,
            const dravik::SessionDiscovery::Progress& progress,
            const dravik::SessionDiscovery::Analyze& analyze);

} // namespace tessary
