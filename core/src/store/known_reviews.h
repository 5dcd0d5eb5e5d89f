// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace dravik {

// The revision of each review file this process last read whole or wrote, with the file's stamp
// at that moment. While the stamp still matches, the file was not touched since (a rename over
// it brings a new inode, a write a new modification time), so a save need not read and decode it
// again to learn its revision.
void rememberReadReview(const std::filesystem::path& file, const FileStamp& stamp,
                        std::int64_t revision);
// The same for a file this process just wrote under a new inode, stamped as it is now.
void rememberWrittenReview(const std::filesystem::path& file, std::int64_t revision);
std::optional<std::int64_t> knownRevision(const std::filesystem::path& file);

} // namespace dravik
