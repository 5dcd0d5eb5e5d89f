// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/io_failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dravik {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

[[noreturn]] void refuse(const std::filesystem::path& folder, const std::string& kind) {
    throw DravikError("The folder " + quotedName(folder) + " is " + kind +
                      ", not a folder, so nothing was written into it.");
}

[[noreturn]] void failOpen(const std::filesystem::path& folder, int error) {
    throw DravikError("The folder " + quotedName(folder) +
                      " could not be opened: " + reasonOf(error) + ".");
}

} // namespace

Folder Folder::open(const std::filesystem::path& folder, Link link) {
    const std::filesystem::path path = folder.empty() ? std::filesystem::path(".") : folder;
    const int flags = folderFlags | (link == Link::refuse ? O_NOFOLLOW : 0);
    FileDescriptor fd(::open(path.c_str(), flags));
    if (fd)
        return Folder(path, std::move(fd));
    const int error = errno;
    struct stat status {};
    if ((error == ENOTDIR || error == ELOOP) && ::lstat(path.c_str(), &status) == 0)
        refuse(path, kindOf(status.st_mode));
    failOpen(path, error);
}

Folder folderOfFile(const std::filesystem::path& file) {
    std::filesystem::path folder = file.parent_path();
    if (folder.empty())
        folder = ".";
    FileDescriptor fd(::open(folder.c_str(), folderFlags));
    if (!fd)
        throwWriteFailure(errno, file);
    return Folder(folder, std::move(fd));
}

Folder Folder::subfolder(const std::string& name) const {
    return child(name, false);
}

Folder Folder::newSubfolder(const std::string& name) const {
    return child(name, true);
}

Folder Folder::child(const std::string& name, bool mustBeNew) const {
    const std::filesystem::path path = path_ / name;
    if (::mkdirat(fd_.get(), name.c_str(), 0777) != 0) {
        const int error = errno;
        if (error != EEXIST)
            throw DravikError("The folder " + quotedName(path) +
                              " could not be created: " + reasonOf(error) + ".");
        if (mustBeNew)
            throw DravikError("The folder " + quotedName(path) +
                              " exists already, so nothing was written into it.");
    }
    // mkdirat never follows a link, but a link may stand where the folder should be: opening
    // without following refuses it.
    FileDescriptor fd(::openat(fd_.get(), name.c_str(), folderFlags | O_NOFOLLOW));
    if (fd)
        return Folder(path, std::move(fd));
    const int error = errno;
    if (auto mode = modeOfEntry(fd_.get(), name); mode && (error == ENOTDIR || error == ELOOP))
        refuse(path, kindOf(*mode));
    failOpen(path, error);
}

} // namespace dravik
