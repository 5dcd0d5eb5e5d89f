// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/atomic_file.h"
#include "dravik/file_io.h"

#include <filesystem>
#include <string>

namespace dravik {

// writeFileAtomically writes a temporary beside `path` in full, syncs it, renames it over `path`
// and syncs the folder. An existing file keeps its permissions; a failure leaves no temporary.

// The name prefix of the temporaries writeFileAtomically makes for `path` (".name.tmp-").
std::string temporaryPrefix(const std::filesystem::path& path);

// Deletes temporaries of `path` left behind by a writer that was killed before its rename. Only
// safe while holding a lock that every writer of `path` takes, or one could lose its temporary.
void removeStaleTemporaries(const std::filesystem::path& path);

// fsync of a folder after a rename in it: 0 or the errno of the failure. File systems that cannot
// sync a folder at all count as synced; the rename is as durable as they allow.
int syncFolder(const Folder& folder);

} // namespace dravik
