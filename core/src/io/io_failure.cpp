// SPDX-License-Identifier: Apache-2.0
#include "io/io_failure.h"

#include "dravik/error.h"

#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>

namespace dravik {

std::string quotedName(const std::filesystem::path& file) {
    std::string name = file.filename().string();
    if (name.empty())
        name = file.parent_path().filename().string();
    return "\u201c" + name + "\u201d";
}

std::string reasonOf(int error) {
    std::string text = std::system_category().message(error);
    if (!text.empty())
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

std::string kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return "a regular file";
    case S_IFDIR:
        return "a folder";
    case S_IFLNK:
        return "a symbolic link";
    case S_IFIFO:
        return "a named pipe";
    case S_IFCHR:
    case S_IFBLK:
        return "a device";
    case S_IFSOCK:
        return "a socket";
    default:
        return "not a regular file";
    }
}

std::optional<mode_t> modeOfEntry(int folderFd, const std::string& name) {
    struct stat status {};
    if (::fstatat(folderFd, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return status.st_mode;
}

void throwWriteFailure(int error, const std::filesystem::path& file) {
    const std::string name = quotedName(file);
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        throw DravikError("There is not enough disk space to save " + name +
                          "; nothing on disk was changed.");
    case EROFS:
        throw DravikError(name + " cannot be saved because its folder is on a read-only disk; " +
                          "nothing on disk was changed.");
    case EACCES:
    case EPERM:
        throw DravikError(name + " cannot be saved because its folder is read-only or not " +
                          "writable for you; nothing on disk was changed.");
    case ENOENT:
    case ENOTDIR:
        throw DravikError(name + " cannot be saved because its folder does not exist.");
    default:
        throw DravikError(name + " could not be saved (" + std::system_category().message(error) +
                          "); nothing on disk was changed.");
    }
}

} // namespace dravik
