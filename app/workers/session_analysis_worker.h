// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "child_process.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace tessary::SessionAnalysisWorker {

// 900 s per folder, 0.3 s between SIGTERM and SIGKILL.
ChildLimits defaultLimits();

// The batch program's line "Analysing photo 3 of 40: IMG_0042.jpg" as (3, 40); none for any
// other line.
struct PhotoCount {
    int current = 0;
    int total = 0;
    bool operator==(const PhotoCount&) const = default;
};
std::optional<PhotoCount> photoProgress(std::string_view line);
using Progress = std::function<void(PhotoCount count)>;

// Runs "dravik-batch feasibility <manifest> <output>" with its output in the log beside `output`
// (its name with ".log" appended). Exit status 0 and 2 both mean the analysis finished. Blocks;
// throws a DravikError that names the log. `progress` hears of each photo as its analysis starts,
// on the calling thread.
void run(const std::filesystem::path& manifest, const std::filesystem::path& output,
         const std::filesystem::path& helper, const ChildLimits& limits = defaultLimits(),
         const Progress& progress = {});

} // namespace tessary::SessionAnalysisWorker
