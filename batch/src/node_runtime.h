// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace dravik::batch {

// The Node.js fixed when Tessary was built (TESSARY_NODE), so that another `node` earlier in a
// user's PATH never runs the pose worker.
std::filesystem::path configuredNode();

// `node` itself when it is an executable file; refuses with a sentence naming it otherwise.
std::filesystem::path presentNode(const std::filesystem::path& node);

// Refuses with a sentence unless `version`, what `node` says its version is ("v20.11.1"), is 18 or
// later, the oldest Node.js the worker runs on.
void checkNodeVersion(const std::filesystem::path& node, const std::optional<std::string>& version);

// `node` itself once it is present and has answered `--version` with 18 or later; refuses with a
// sentence when it is missing, does not answer, or is older.
std::filesystem::path checkedNode(const std::filesystem::path& node);

} // namespace dravik::batch
