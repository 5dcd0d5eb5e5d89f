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

} // namespace tessary::bench
