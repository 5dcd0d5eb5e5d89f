// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model_fixture.h"

#include <filesystem>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tessary::test {

// Installs the fake batch program as the bundle's dravik-batch, answering in `mode` (see
// fake-batch/fake_batch.cpp) with `environment` added.
void installFakeBatch(const fs::path& bundleRoot, const std::string& mode,
                      const std::map<std::string, std::string>& environment = {});

bool contains(const fs::path& file, const std::string& text);

// Processes of `group` that still run (zombies, gone but for their exit status, do not count).
std::vector<pid_t> livingMembers(pid_t group);

// A small PNG photo, different for every `seed`.
void writePhoto(const fs::path& file, int seed);

} // namespace tessary::test
