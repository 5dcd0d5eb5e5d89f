// SPDX-License-Identifier: Apache-2.0
#include "store/known_reviews.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>

namespace dravik {

namespace {

struct KnownReview {
    FileStamp stamp;
    std::int64_t revision = 0;
};

// File times come from a clock that advances in ticks of a few milliseconds, so a write in the
// same tick as the one before it can leave the times as they were. A file read whole is only
// remembered once its times are older than any tick: a later write then shows in them.
constexpr std::int64_t settledNanoseconds = 100'000'000;

bool settled(const FileStamp& stamp) {
    const std::int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
    return std::max(stamp.modifiedNanoseconds, stamp.changedNanoseconds) < now - settledNanoseconds;
}

std::mutex knownMutex;
std::map<std::filesystem::path, KnownReview> known;

} // namespace

void rememberReadReview(const std::filesystem::path& file, const FileStamp& stamp,
                        std::int64_t revision) {
    const std::lock_guard guard(knownMutex);
    if (settled(stamp))
        known.insert_or_assign(file, KnownReview{stamp, revision});
    else
        known.erase(file);
}

void rememberWrittenReview(const std::filesystem::path& file, std::int64_t revision) {
    const std::optional<FileStamp> stamp = currentStamp(file);
    const std::lock_guard guard(knownMutex);
    if (stamp)
        known.insert_or_assign(file, KnownReview{*stamp, revision});
    else
        known.erase(file);
}

std::optional<std::int64_t> knownRevision(const std::filesystem::path& file) {
    const std::optional<FileStamp> stamp = currentStamp(file);
    if (!stamp)
        return std::nullopt;
    const std::lock_guard guard(knownMutex);
    const auto it = known.find(file);
    if (it == known.end() || !(it->second.stamp == *stamp))
        return std::nullopt;
    return it->second.revision;
}

} // namespace dravik
