// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"

#include <chrono>
#include <filesystem>

namespace dravik {

// An exclusive lock on a file's hidden sibling ".name.lock", held for the object's life, so that
// a check of the file and the write that follows it are never interleaved with another writer's.
// The lock file stays in place: deleting it would let two writers lock two different files.
class FileLock {
  public:
    // Waits up to `patience` for another holder, then refuses with a DravikError naming `file`.
    explicit FileLock(const std::filesystem::path& file,
                      std::chrono::milliseconds patience = std::chrono::seconds(10));
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    static std::filesystem::path lockPath(const std::filesystem::path& file);

  private:
    FileDescriptor fd_; // closing it releases the lock
};

} // namespace dravik
