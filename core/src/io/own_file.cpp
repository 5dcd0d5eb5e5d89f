// SPDX-License-Identifier: Apache-2.0
#include "io/own_file.h"

#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/io_failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dravik {

namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& what) {
    throw DravikError(quotedName(file) + " is " + what + ", so nothing was written to it.");
}

} // namespace

FileDescriptor openOwnFile(const Folder& folder, const std::string& name, OwnFile content,
                           const std::filesystem::path& savedFile) {
    const std::filesystem::path file = folder.path() / name;
    // What is plainly not a regular file is not even opened: opening a device can have effects
    // of its own. The descriptor's own fstat below is what counts.
    if (auto mode = modeOfEntry(folder.descriptor(), name); mode && !S_ISREG(*mode))
        refuse(file, kindOf(*mode) + ", not a regular file");
    // Read and write, so that a named pipe opens at once instead of waiting for a reader.
    FileDescriptor fd(::openat(folder.descriptor(), name.c_str(),
                               O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                               0666));
    if (!fd) {
        const int error = errno;
        if (error == ELOOP || error == EISDIR || error == ENXIO)
            if (auto mode = modeOfEntry(folder.descriptor(), name))
                refuse(file, kindOf(*mode) + ", not a regular file");
        throwWriteFailure(error, savedFile);
    }
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0)
        throwWriteFailure(errno, savedFile);
    if (!S_ISREG(status.st_mode))
        refuse(file, kindOf(status.st_mode) + ", not a regular file");
    if (status.st_nlink > 1)
        refuse(file, "linked to another file (it has " + std::to_string(status.st_nlink) +
                         " hard links)");
    if (content == OwnFile::empty && status.st_size > 0 && ::ftruncate(fd.get(), 0) != 0)
        throwWriteFailure(errno, savedFile);
    return fd;
}

FileDescriptor openOwnFile(const Folder& folder, const std::string& name, OwnFile content) {
    return openOwnFile(folder, name, content, folder.path() / name);
}

FileDescriptor openOwnFile(const std::filesystem::path& file, OwnFile content) {
    return openOwnFile(folderOfFile(file), file.filename().string(), content);
}

} // namespace dravik
