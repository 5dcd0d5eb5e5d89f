// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tessary {

// A file of a chosen folder that was not imported, and why, in one sentence.
struct UnusablePhoto {
    std::string file;
    std::string reason;
    bool operator==(const UnusablePhoto&) const = default;
};

struct ImportedFolder {
    std::filesystem::path folder; // the new session folder inside the data folder
    std::size_t photos = 0;
    std::vector<UnusablePhoto> unusable; // in name order
};

// Copies the JPEG and PNG photos directly inside `source` into a new folder of `dataFolder`,
// named after `source` ("ride", then "ride 2", …). The original stays the user's: the photos are
// copied, never linked. The copy is made under a hidden name and renamed into place whole, so
// discovery never sees half of it. Links, pipes, devices and sub-folders are not followed or
// read; photos that do not decode, and HEIC or camera raw files, are listed as unusable. Throws a
// DravikError sentence when nothing could be imported or the copy failed; nothing is left behind.
ImportedFolder copyPhotoFolder(const std::filesystem::path& source,
                               const std::filesystem::path& dataFolder);

} // namespace tessary
