// SPDX-License-Identifier: Apache-2.0
#include "store/file_lock.h"

#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/io_failure.h"
#include "io/own_file.h"

#include <cerrno>
#include <sys/file.h>
#include <thread>

namespace dravik {

std::filesystem::path FileLock::lockPath(const std::filesystem::path& file) {
    return file.parent_path() / ("." + file.filename().string() + ".lock");
}

FileLock::FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience) {
    // A lock standing as a link, a pipe or a hard link of another file is refused: locking is
    // harmless, but creating the lock through a link would create a file outside the folder.
    fd_ = openOwnFile(folderOfFile(file), lockPath(file).filename().string(), OwnFile::keep, file);
    // flock belongs to the open file description, so two threads of one process exclude each
    // other too, and a killed holder releases it with its descriptors.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(fd_.get(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (error == EINTR)
            continue;
        if (error != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) {
            if (error == EWOULDBLOCK)
                throw DravikError(quotedName(file) + " is being saved by another program, so " +
                                  "nothing was saved; try again in a moment.");
            throwWriteFailure(error, file);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace dravik
