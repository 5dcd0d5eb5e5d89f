#include "dravik/error.h"
#include "dravik/store.h"
#include "store/atomic_file.h"
#include "store/file_lock.h"
#include "store/io_failure.h"

#include <cerrno>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace dravik {

namespace {

// The whole file, or none when it does not exist.
std::optional<std::string> readIfPresent(const std::filesystem::path& file) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT)
            return std::nullopt;
        const int error = errno;
        throw DravikError("The review " + quotedName(file) + " exists but cannot be read (" +
                          std::system_category().message(error) + "), so it was not overwritten.");
    }
    std::string bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int error = errno;
            ::close(fd);
            throw DravikError("The review " + quotedName(file) + " exists but cannot be read (" +
                              std::system_category().message(error) +
                              "), so it was not overwritten.");
        }
        if (got == 0)
            break;
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return bytes;
}

// What this process last wrote to a review file. A file whose identity and times still match was
// not touched since, so its revision is known without reading and decoding it again; a rename
// over it (new inode) or any write (new modification time) makes it unknown.
struct WrittenFile {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};
    std::int64_t revision = 0;

    bool matches(const struct stat& info) const {
        return info.st_dev == device && info.st_ino == inode && info.st_size == size &&
               info.st_mtim.tv_sec == modified.tv_sec && info.st_mtim.tv_nsec == modified.tv_nsec &&
               info.st_ctim.tv_sec == changed.tv_sec && info.st_ctim.tv_nsec == changed.tv_nsec;
    }
};

std::mutex writtenMutex;
std::map<std::filesystem::path, WrittenFile> written;

std::optional<std::int64_t> knownRevision(const std::filesystem::path& file) {
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0)
        return std::nullopt;
    const std::lock_guard guard(writtenMutex);
    auto it = written.find(file);
    if (it == written.end() || !it->second.matches(info))
        return std::nullopt;
    return it->second.revision;
}

void rememberWritten(const std::filesystem::path& file, std::int64_t revision) {
    struct stat info {};
    const std::lock_guard guard(writtenMutex);
    if (::stat(file.c_str(), &info) != 0) {
        written.erase(file);
        return;
    }
    written.insert_or_assign(file, WrittenFile{info.st_dev, info.st_ino, info.st_size, info.st_mtim,
                                               info.st_ctim, revision});
}

// A file that is not a review this library can read (another format, a newer version, damage)
// is refused rather than overwritten: it may be someone's work.
std::optional<std::int64_t> revisionOnDisk(const std::filesystem::path& file) {
    const auto bytes = readIfPresent(file);
    if (!bytes)
        return std::nullopt;
    try {
        return ReviewStore::decode(*bytes, file.filename().string()).revision();
    } catch (const DravikError&) {
        throw DravikError("The file " + quotedName(file) +
                          " on disk is not a review that can be read here, so it was not " +
                          "overwritten; nothing was saved.");
    }
}

} // namespace

// A missing file is written even when a revision was expected: nothing is overwritten, and
// refusing would leave the reviewer's edits, now the only copy, with nowhere to go.
void ReviewStore::save(const ReviewDocument& document, const std::filesystem::path& file,
                       std::optional<std::int64_t> expectedRevision) {
    const std::string bytes = encode(document); // refuses a bad document before touching the disk
    const FileLock lock(file);
    // Every writer holds the lock, so any temporary of ours left now belongs to a dead writer.
    removeStaleTemporaries(file);
    auto onDisk = knownRevision(file);
    if (!onDisk)
        onDisk = revisionOnDisk(file);
    if (onDisk && !expectedRevision)
        throw DravikError("The review " + quotedName(file) + " was created elsewhere (revision " +
                          std::to_string(*onDisk) + " on disk, none expected); nothing was saved.");
    if (onDisk && *onDisk != *expectedRevision)
        throw DravikError("The review " + quotedName(file) + " was changed elsewhere (revision " +
                          std::to_string(*onDisk) + " on disk, " +
                          std::to_string(*expectedRevision) + " expected); nothing was saved.");
    writeFileAtomically(file, bytes);
    rememberWritten(file, document.revision());
}

} // namespace dravik
