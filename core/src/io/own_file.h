// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"

#include <filesystem>
#include <string>

namespace dravik {

// openOwnFile, with failures of the system (full disk, read-only folder) told as failures to
// save `savedFile`: the lock of a review is an implementation detail of saving the review.
FileDescriptor openOwnFile(const Folder& folder, const std::string& name, OwnFile content,
                           const std::filesystem::path& savedFile);

} // namespace dravik
