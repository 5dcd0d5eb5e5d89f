// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/store.h"
#include "io/atomic_file.h"
#include "io/io_failure.h"
#include "store/file_lock.h"
#include "store/known_reviews.h"
#include "store/review_text.h"

#include "json/json_reader.h"

namespace dravik {

namespace {

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
    // Refuses a bad document before touching the disk.
    const ReviewText text = encodeReviewText(document);
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
    writeFileAtomically(file, text.pieces());
    rememberWrittenReview(file, document.revision());
}

} // namespace dravik
