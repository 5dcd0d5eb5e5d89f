// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "environment/bundle.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tessary {

// The bundled sample session lives with the program, often where the user cannot write. The first
// launch copies it into the configured data folder, where it can be reviewed and saved like any
// other session; a copy that exists is never touched, so deleting it restores the sample.
// Returns the reason when the copy was needed but could not be made.
std::optional<std::string> provideSampleSession(const Bundle& bundle);

} // namespace tessary
