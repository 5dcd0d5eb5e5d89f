#pragma once

#include "child_process.h"

#include <filesystem>

namespace tessary::SessionAnalysisWorker {

// 900 s per folder, 0.3 s between SIGTERM and SIGKILL.
ChildLimits defaultLimits();

// Runs "dravik-batch feasibility <manifest> <output>" with its output in the log beside `output`
// (its name with ".log" appended). Exit status 0 and 2 both mean the analysis finished. Blocks;
// throws a DravikError that names the log.
void run(const std::filesystem::path& manifest, const std::filesystem::path& output,
         const std::filesystem::path& helper, const ChildLimits& limits = defaultLimits());

} // namespace tessary::SessionAnalysisWorker
