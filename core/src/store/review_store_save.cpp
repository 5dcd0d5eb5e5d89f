// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/store.h"
#include "io/atomic_file.h"
#include "io/io_failure.h"
#include "store/file_lock.h"

#include "json/json_reader.h"
#include <map>
#include <mutex>
#include <sys/stat.h>

namespace dravik {

namespace {

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
    if (::lstat(file.c_str(), &info) != 0)
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
    if (::lstat(file.c_str(), &info) != 0) {
        written.erase(file);
        return;
    }
    written.insert_or_assign(file, WrittenFile{info.st_dev, info.st_ino, info.st_size, info.st_mtim,
                                               info.st_ctim, revision});
}

// A file that is not a review this library can read (another format, a newer version, damage)
// is refused rather than overwritten: it may be someone's work.
std::optional<std::int64_t> revisionOnDisk(const std::filesystem::path& file) {
    std::optional<FileContents> contents;
    try {
        contents = readWholeFileIfPresent(file, "review document", json::maxFileBytes);
    } catch (const DravikError& error) {
        throw DravikError("The review " + quotedName(file) +
                          " was not overwritten, because it could not be checked: " +
                          json::clause(error.message()) + ".");
    }
    if (!contents)
        return std::nullopt;
    try {
        return ReviewStore::decode(contents->bytes, file.filename().string()).revision();
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
        throw ReviewChangedElsewhere("The review " + quotedName(file) +
                                     " was created elsewhere (revision " + std::to_string(*onDisk) +
                                     " on disk, none expected); nothing was saved.");
    if (onDisk && *onDisk != *expectedRevision)
        throw ReviewChangedElsewhere("The review " + quotedName(file) +
                                     " was changed elsewhere (revision " + std::to_string(*onDisk) +
                                     " on disk, " + std::to_string(*expectedRevision) +
                                     " expected); nothing was saved.");
    writeFileAtomically(file, bytes);
    rememberWritten(file, document.revision());
}

} // namespace dravik
