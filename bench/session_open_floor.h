// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace tessary::bench {

struct FloorPhoto {
    std::filesystem::path file;
    dravik::PixelRect panel;
};

// The same work as opening a session, done the plainest way on one thread: read each file,
// SHA-256 it, decode its panel with libjpeg-turbo's partial decode. Returns the panels.
std::vector<std::vector<std::uint8_t>> decodeOnOneCore(const std::vector<FloorPhoto>& photos);

// The floor of verifying photos: each file read and hashed with SHA-256 on this thread, through
// one reused buffer. Returns the digests' first bytes, so that the work cannot be left out.
std::uint64_t hashOnOneCore(const std::vector<std::filesystem::path>& files);

} // namespace tessary::bench
