// SPDX-License-Identifier: Apache-2.0
#include "arrangement/file_set_commit.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "io/atomic_file.h"
#include "io/io_failure.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace dravik::arrangement {

namespace fs = std::filesystem;

namespace {

fs::path beside(const fs::path& file, std::string_view suffix) {
    return file.parent_path() / ("." + file.filename().string() + std::string(suffix));
}

fs::path folderOf(const fs::path& file) {
    return file.parent_path().empty() ? fs::path(".") : file.parent_path();
}

// 0 or the errno of the failure.
int syncFolder(const fs::path& folder) {
    try {
        return dravik::syncFolder(Folder::open(folder, Folder::Link::follow));
    } catch (const DravikError&) {
        return EIO;
    }
}

struct Slot {
    const FileWrite* write = nullptr;
    fs::path staged;
    std::optional<fs::path> backup; // a second name of the file replaced, while it is replaced
    bool placed = false;
};

// Keeps a second name of the file about to be replaced; none when there is no file yet.
void keepBackup(Slot& slot) {
    const fs::path& path = slot.write->path;
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) {
        if (errno == ENOENT)
            return;
        throwWriteFailure(errno, path);
    }
    const fs::path backup = beside(path, ".before-arrangement");
    ::unlink(backup.c_str()); // left by an arrangement that did not finish
    if (::link(path.c_str(), backup.c_str()) != 0) {
        const int error = errno;
        throw DravikError(quotedName(path) + " cannot be replaced safely here: its folder does " +
                          "not allow a second name for it while it is (" +
                          std::system_category().message(error) +
                          "); nothing on disk was changed.");
    }
    slot.backup = backup;
}

// The sentence of a failure names the file the user knows, not its hidden staging name.
void stage(const Slot& slot) {
    try {
        writeFileAtomically(slot.staged, slot.write->bytes);
    } catch (const DravikError& error) {
        std::string sentence = error.what();
        const std::string hidden = quotedName(slot.staged);
        if (auto at = sentence.find(hidden); at != std::string::npos)
            sentence.replace(at, hidden.size(), quotedName(slot.write->path));
        throw DravikError(sentence);
    }
}

// Puts back every file already replaced, newest first; true when all came back.
bool undo(std::vector<Slot>& slots) {
    bool restored = true;
    for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot) {
        if (!slot->placed)
            continue;
        const fs::path& path = slot->write->path;
        const int failed =
            slot->backup ? ::rename(slot->backup->c_str(), path.c_str()) : ::unlink(path.c_str());
        if (failed != 0) {
            restored = false;
            continue;
        }
        slot->placed = false;
        slot->backup.reset();
        syncFolder(folderOf(path));
    }
    return restored;
}

void discard(const std::vector<Slot>& slots, bool backupsToo) {
    for (const Slot& slot : slots) {
        if (!slot.placed)
            ::unlink(slot.staged.c_str());
        if (backupsToo && slot.backup)
            ::unlink(slot.backup->c_str());
    }
}

} // namespace

void commitFiles(const std::vector<FileWrite>& writes,
                 const std::function<void(std::size_t)>& beforeRename) {
    std::vector<Slot> slots;
    for (const FileWrite& write : writes)
        slots.push_back({&write, beside(write.path, ".arranged"), std::nullopt, false});
    try {
        for (const Slot& slot : slots)
            stage(slot);
        for (Slot& slot : slots)
            keepBackup(slot);
    } catch (...) {
        discard(slots, true);
        throw;
    }
    for (std::size_t i = 0; i < slots.size(); ++i) {
        Slot& slot = slots[i];
        const fs::path& path = slot.write->path;
        try {
            if (beforeRename)
                beforeRename(i);
            if (::rename(slot.staged.c_str(), path.c_str()) != 0)
                throwWriteFailure(errno, path);
            slot.placed = true;
            if (const int failure = syncFolder(folderOf(path)); failure != 0)
                throwWriteFailure(failure, path);
        } catch (...) {
            const bool restored = undo(slots);
            discard(slots, restored);
            if (!restored)
                throw DravikError("The session’s files could not all be replaced, nor all put "
                                  "back: the earlier ones are kept beside them as hidden "
                                  "“.name.before-arrangement” files.");
            throw;
        }
    }
    discard(slots, true);
}

} // namespace dravik::arrangement
