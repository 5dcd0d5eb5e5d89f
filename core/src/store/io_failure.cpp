#include "store/io_failure.h"

#include "dravik/error.h"

#include <cerrno>
#include <system_error>

namespace dravik {

std::string quotedName(const std::filesystem::path& file) {
    return "\u201c" + file.filename().string() + "\u201d";
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
