// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/error.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace dravik::batch {

// The worker failed: unlike a bad photo, nothing more can be detected in this run.
class WorkerError : public DravikError {
  public:
    using DravikError::DravikError;
};

// Where the pose worker comes from and how long each of its answers may take.
struct WorkerSetup {
    std::string name;                 // the file messages name, e.g. the script
    std::vector<std::string> command; // program first
    std::chrono::milliseconds timeout{30000};
    // The Node.js the command runs, whose version the worker's ready answer gives; empty when the
    // command is the worker itself.
    std::filesystem::path node;
};

} // namespace dravik::batch
