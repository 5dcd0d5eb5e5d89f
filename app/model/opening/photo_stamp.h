#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tessary {

// What a photo file looked like when it was decoded. A file replaced or rewritten since then
// has another stamp, so its decoded picture is never reused for it.
struct PhotoStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::int64_t changedNanoseconds = 0;
    bool operator==(const PhotoStamp&) const = default;
};

// None when the file cannot be examined.
std::optional<PhotoStamp> stampOf(const std::filesystem::path& file);

} // namespace tessary
