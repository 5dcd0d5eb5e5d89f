// SPDX-License-Identifier: Apache-2.0
#include "io/atomic_file.h"

#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/io_failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <random>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace dravik {

namespace {

std::filesystem::path folderOf(const std::filesystem::path& path) {
    auto folder = path.parent_path();
    return folder.empty() ? std::filesystem::path(".") : folder;
}

std::string randomSuffix() {
    static constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    std::array<unsigned char, 8> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), GRND_NONBLOCK) !=
        static_cast<ssize_t>(bytes.size())) {
        std::random_device device;
        for (auto& b : bytes)
            b = static_cast<unsigned char>(device());
    }
    std::string suffix;
    for (auto b : bytes)
        suffix += alphabet[b % alphabet.size()];
    return suffix;
}

// Like mkstemp, but created with 0666 so that the user's umask decides the final mode.
FileDescriptor openTemporary(const Folder& folder, const std::string& prefix,
                             std::string& temporary) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = prefix + randomSuffix();
        FileDescriptor fd(::openat(folder.descriptor(), temporary.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (fd || errno != EEXIST)
            return fd;
    }
    errno = EEXIST;
    return FileDescriptor();
}

// Returns 0 or the errno of the failure; a short write is continued, never committed.
int writeAll(int fd, std::span<const std::string_view> pieces) {
    std::vector<iovec> left;
    for (std::string_view piece : pieces)
        if (!piece.empty())
            left.push_back({const_cast<char*>(piece.data()), piece.size()});
    std::size_t next = 0;
    while (next < left.size()) {
        const auto count = static_cast<int>(std::min<std::size_t>(left.size() - next, IOV_MAX));
        const ssize_t written = ::writev(fd, &left[next], count);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (written == 0)
            return ENOSPC; // a regular file that accepts nothing is full
        auto done = static_cast<std::size_t>(written);
        for (; next < left.size() && done >= left[next].iov_len; ++next)
            done -= left[next].iov_len;
        if (done > 0) {
            left[next].iov_base = static_cast<char*>(left[next].iov_base) + done;
            left[next].iov_len -= done;
        }
    }
    return 0;
}

int syncData(int fd) {
    while (::fdatasync(fd) != 0) {
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace

int syncFolder(const Folder& folder) {
    while (::fsync(folder.descriptor()) != 0) {
        if (errno == EINTR)
            continue;
        // Some file systems cannot sync a folder at all; the rename is as durable as they allow.
        return errno == EINVAL || errno == EROFS ? 0 : errno;
    }
    return 0;
}

std::string temporaryPrefix(const std::filesystem::path& path) {
    return "." + path.filename().string() + ".tmp-";
}

void writeFileAtomically(const Folder& folder, const std::string& name,
                         std::span<const std::string_view> pieces) {
    const std::filesystem::path path = folder.path() / name;
    struct stat existing {};
    const bool exists =
        ::fstatat(folder.descriptor(), name.c_str(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
    // Renaming over a link would be harmless to its target, but a link or a pipe where a file of
    // ours belongs is not ours to remove.
    if (exists && !S_ISREG(existing.st_mode))
        throw DravikError(quotedName(path) + " is " + kindOf(existing.st_mode) +
                          ", not a regular file, so it was not replaced; nothing was written.");
    std::string temporary;
    FileDescriptor fd = openTemporary(folder, temporaryPrefix(path), temporary);
    if (!fd)
        throwWriteFailure(errno, path);
    if (exists)
        ::fchmod(fd.get(), existing.st_mode & 07777); // best effort: a lost mode is no failure

    int failure = writeAll(fd.get(), pieces);
    if (failure == 0)
        failure = syncData(fd.get());
    // Linux closes the descriptor even when close() reports EINTR, and the data is synced by now.
    if (::close(fd.release()) != 0 && failure == 0 && errno != EINTR)
        failure = errno;
    if (failure == 0 &&
        ::renameat(folder.descriptor(), temporary.c_str(), folder.descriptor(), name.c_str()) != 0)
        failure = errno;
    if (failure != 0) {
        ::unlinkat(folder.descriptor(), temporary.c_str(), 0);
        throwWriteFailure(failure, path);
    }
    if (const int folderFailure = syncFolder(folder); folderFailure != 0)
        throw DravikError(quotedName(path) + " was replaced, but its folder could not be synced (" +
                          std::system_category().message(folderFailure) +
                          "), so the change may not survive a power failure.");
}

void writeFileAtomically(const Folder& folder, const std::string& name, std::string_view bytes) {
    writeFileAtomically(folder, name, std::span<const std::string_view>(&bytes, 1));
}

void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes) {
    writeFileAtomically(folderOfFile(path), path.filename().string(), bytes);
}

void writeFileAtomically(const std::filesystem::path& path,
                         std::span<const std::string_view> pieces) {
    writeFileAtomically(folderOfFile(path), path.filename().string(), pieces);
}

void removeStaleTemporaries(const std::filesystem::path& path) {
    const std::string prefix = temporaryPrefix(path);
    std::error_code error;
    for (std::filesystem::directory_iterator it(folderOf(path), error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.starts_with(prefix) &&
            it->symlink_status(error).type() == std::filesystem::file_type::regular)
            ::unlink(it->path().c_str()); // best effort: a leftover costs space, not correctness
    }
}

} // namespace dravik
