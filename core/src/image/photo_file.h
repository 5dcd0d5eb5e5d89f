#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace dravik {

// The whole file in memory, refusing anything over 256 MiB before reading it.
std::shared_ptr<const std::vector<std::uint8_t>> readPhotoFile(const std::filesystem::path& file);

} // namespace dravik
