#include "opening/photo_stamp.h"

#include <sys/stat.h>

namespace tessary {

namespace {

std::int64_t nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

} // namespace

std::optional<PhotoStamp> stampOf(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return std::nullopt;
    return PhotoStamp{static_cast<std::uint64_t>(status.st_dev),
                      static_cast<std::uint64_t>(status.st_ino),
                      static_cast<std::int64_t>(status.st_size), nanoseconds(status.st_mtim),
                      nanoseconds(status.st_ctim)};
}

} // namespace tessary
