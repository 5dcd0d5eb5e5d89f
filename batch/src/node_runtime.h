// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace dravik::batch {

// The Node.js fixed when Tessary was built (TESSARY_NODE), so that another `node` earlier in a
// user's PATH never runs the pose worker.
std::filesystem::path configuredNode();

// `node` itself once it has answered `--version` with 18 or later, the oldest Node.js the worker
// runs on; refuses with a sentence when it is missing, does not answer, or is older.
std::filesystem::path checkedNode(const std::filesystem::path& node);

} // namespace dravik::batch
