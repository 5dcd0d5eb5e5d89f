// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pose_worker.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace dravik::batch {

// Exit statuses of the program.
enum ExitStatus : int { success = 0, failure = 1, needsAttention = 2, usage = 64 };

// "redetect <request.json> <result.json>": both passes on the request's crop.
int redetect(const std::filesystem::path& request, const std::filesystem::path& result,
             const WorkerSetup& setup);

// "feasibility <manifest> <output>": every rider photo of a session; needsAttention when some
// photo has no usable detection or could not be read.
int feasibility(const std::filesystem::path& manifest, const std::filesystem::path& output,
                const WorkerSetup& setup);

// Parses the arguments (without the program name), finds the worker, runs the sub-command and
// reports any failure as one sentence on stderr.
int runBatch(const std::vector<std::string>& arguments, const std::function<WorkerSetup()>& worker);

} // namespace dravik::batch
