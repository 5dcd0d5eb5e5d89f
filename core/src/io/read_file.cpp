// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/io_failure.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace dravik {

namespace {

std::int64_t nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileStamp stampOf(const struct stat& status) {
    return FileStamp{static_cast<std::uint64_t>(status.st_dev),
                     static_cast<std::uint64_t>(status.st_ino),
                     static_cast<std::int64_t>(status.st_size), nanoseconds(status.st_mtim),
                     nanoseconds(status.st_ctim)};
}

[[noreturn]] void failRead(const std::filesystem::path& file, int error) {
    throw DravikError(quotedName(file) + " could not be read: " + reasonOf(error) + ".");
}

std::string mebibytes(std::uint64_t bytes) {
    return std::to_string(bytes / mebibyte) + " MiB";
}

[[noreturn]] void failTooLarge(const std::filesystem::path& file, std::string_view kind,
                               std::uint64_t maxBytes) {
    throw DravikError(quotedName(file) + " is too large to be a " + std::string(kind) + " (over " +
                      mebibytes(maxBytes) + ").");
}

// What one read gave; 0 at the end.
std::size_t readSome(int fd, const std::filesystem::path& file, void* into, std::size_t size) {
    for (;;) {
        const ssize_t got = ::read(fd, into, size);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            failRead(file, errno);
    }
}

// Reads to the end, or until more than `maxBytes` came: the file may grow while it is read.
std::string readAll(int fd, const std::filesystem::path& file, std::string_view kind,
                    std::uint64_t maxBytes, std::uint64_t expected) {
    std::string bytes;
    bytes.resize(static_cast<std::size_t>(std::min(expected, maxBytes) + 1));
    std::size_t done = 0;
    for (;;) {
        if (done == bytes.size()) {
            if (done > maxBytes)
                failTooLarge(file, kind, maxBytes);
            bytes.resize(std::min<std::uint64_t>(done * 2, maxBytes + 1));
        }
        const std::size_t got = readSome(fd, file, bytes.data() + done, bytes.size() - done);
        if (got == 0)
            break;
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

} // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = other.release();
    }
    return *this;
}

FileDescriptor::~FileDescriptor() {
    if (fd_ >= 0)
        ::close(fd_);
}

FileDescriptor openForReading(const std::filesystem::path& file, FileStamp* stamp) {
    const auto refuse = [&](mode_t mode) {
        throw DravikError(quotedName(file) + " is " + kindOf(mode) +
                          ", not a regular file, so it was not read.");
    };
    // Opening a device can have effects of its own (a tape rewinds), so what is plainly not a
    // regular file is not even opened; the descriptor's own fstat below is what counts.
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        refuse(status.st_mode);
    // O_NONBLOCK: opening a named pipe with no writer would otherwise wait for ever. It changes
    // nothing for the regular files that are read.
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd)
        failRead(file, errno);
    if (::fstat(fd.get(), &status) != 0)
        failRead(file, errno);
    if (!S_ISREG(status.st_mode))
        refuse(status.st_mode);
    if (stamp)
        *stamp = stampOf(status);
    return fd;
}

std::optional<FileStamp> currentStamp(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return std::nullopt;
    return stampOf(status);
}

FileContents readWholeFile(const std::filesystem::path& file, std::string_view kind,
                           std::uint64_t maxBytes) {
    FileContents contents;
    const FileDescriptor fd = openForReading(file, &contents.stamp);
    const auto size = static_cast<std::uint64_t>(contents.stamp.size);
    if (size > maxBytes)
        failTooLarge(file, kind, maxBytes);
    contents.bytes = readAll(fd.get(), file, kind, maxBytes, size);
    return contents;
}

FileStamp readFileInPieces(const std::filesystem::path& file, std::string_view kind,
                           std::uint64_t maxBytes, std::span<std::uint8_t> buffer,
                           const std::function<void(std::span<const std::uint8_t>)>& take) {
    if (buffer.empty())
        throw std::invalid_argument("readFileInPieces needs a buffer to read into");
    FileStamp stamp;
    const FileDescriptor fd = openForReading(file, &stamp);
    if (static_cast<std::uint64_t>(stamp.size) > maxBytes)
        failTooLarge(file, kind, maxBytes);
    std::uint64_t done = 0;
    for (bool end = false; !end;) {
        std::size_t filled = 0;
        while (filled < buffer.size() && !end) {
            const std::size_t got =
                readSome(fd.get(), file, buffer.data() + filled, buffer.size() - filled);
            filled += got;
            end = got == 0;
        }
        done += filled;
        // The file may grow while it is read.
        if (done > maxBytes)
            failTooLarge(file, kind, maxBytes);
        if (filled > 0)
            take(buffer.first(filled));
    }
    return stamp;
}

std::optional<FileContents> readWholeFileIfPresent(const std::filesystem::path& file,
                                                   std::string_view kind, std::uint64_t maxBytes) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0 && errno == ENOENT)
        return std::nullopt;
    return readWholeFile(file, kind, maxBytes);
}

} // namespace dravik
