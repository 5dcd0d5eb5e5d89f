// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "batch_run.h"

#include <filesystem>

namespace dravik::batch {

// The installed worker: "pose-worker/pose-worker.cjs" beside the program, run by the configured
// Node.js (node_runtime.h), with the models in "../../share/tessary/models" (the same layout in the
// build tree). Refuses with a sentence when the script, a model file or that Node.js is missing.
WorkerSetup installedWorker(const std::filesystem::path& programFolder);

// The folder of the running executable.
std::filesystem::path programFolder();

} // namespace dravik::batch
