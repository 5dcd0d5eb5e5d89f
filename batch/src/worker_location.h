#pragma once

#include "batch_run.h"

#include <filesystem>

namespace dravik::batch {

// The installed worker: "pose-worker/pose-worker.mjs" beside the program, run by `node` from
// PATH, with the models in "../../share/tessary/models" (the same layout in the build tree).
// Refuses with a sentence when the script or a model file is missing.
WorkerSetup installedWorker(const std::filesystem::path& programFolder);

// The folder of the running executable.
std::filesystem::path programFolder();

} // namespace dravik::batch
