// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace dravik {

// The first 12 hex digits of a "sha256:" digest, as every digest is shown to people.
std::string shortDigest(std::string_view digest);

} // namespace dravik
