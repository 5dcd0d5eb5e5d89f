// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "child_process.h"
#include "dravik/detection.h"

#include <filesystem>

namespace tessary::RetryWorker {

// 60 s to answer, 0.5 s between SIGTERM and SIGKILL.
ChildLimits defaultLimits();

// Writes "request.json" into a fresh `directory`, runs "dravik-batch redetect <request> <result>"
// with its output in "process.log", and reads its "result.json". Blocks; throws a DravikError.
// Everything written stays in `directory` for diagnosis.
dravik::DetectionRetry run(const dravik::RetryRequest& request, const std::filesystem::path& helper,
                           const std::filesystem::path& directory,
                           const ChildLimits& limits = defaultLimits());

} // namespace tessary::RetryWorker
