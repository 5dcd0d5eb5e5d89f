// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace dravik {

// "sha256:" + 64 lower-case hex digits of the bytes.
std::string sha256Text(const void* data, std::size_t size);

} // namespace dravik
