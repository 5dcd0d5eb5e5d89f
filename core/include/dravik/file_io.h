// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>

// The only way the core, the app and the batch program open files of a session. A session folder
// comes from someone else: any name in it may be a link leading out, a named pipe, a device or a
// file of a terabyte. Readers therefore never block and take regular files only, up to their
// format's size; writers never follow a link and never write into anything but a file of the
// folder's own. Every refusal is a DravikError sentence naming the file.

namespace dravik {

// Closes the descriptor on every path out.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor();

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

  private:
    int fd_ = -1;
};

// What a file looked like when it was read: a file replaced (another inode) or rewritten (another
// size or time) since has another stamp.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    std::int64_t changedNanoseconds = 0;
    bool operator==(const FileStamp&) const = default;
};

inline constexpr std::uint64_t mebibyte = 1u << 20;

struct FileContents {
    std::string bytes;
    FileStamp stamp;
};

// Opens a regular file for reading. Links are followed (where a link may lead is the caller's
// rule), but the open never waits on a named pipe, and a folder, pipe, device or socket is
// refused. `stamp`, when given, receives the opened file's stamp.
FileDescriptor openForReading(const std::filesystem::path& file, FileStamp* stamp = nullptr);

// The stamp of what is at `file` now, links followed; none when nothing is there.
std::optional<FileStamp> currentStamp(const std::filesystem::path& file);

// The whole of a regular file, refused unread when it is larger than `maxBytes`, the most a
// `kind` ("results file", "photo") can be.
FileContents readWholeFile(const std::filesystem::path& file, std::string_view kind,
                           std::uint64_t maxBytes);
// The same, or none when nothing is there (a dangling link counts as nothing).
std::optional<FileContents> readWholeFileIfPresent(const std::filesystem::path& file,
                                                   std::string_view kind, std::uint64_t maxBytes);

// The same file read and refused as readWholeFile does, but in pieces through `buffer` (not
// empty), so that it is never held whole: `take` gets each piece in order, every one but the last
// filling the buffer. Returns the stamp of the file read.
FileStamp readFileInPieces(const std::filesystem::path& file, std::string_view kind,
                           std::uint64_t maxBytes, std::span<std::uint8_t> buffer,
                           const std::function<void(std::span<const std::uint8_t>)>& take);

// A folder held open, so that what is made in it is made there even if a name on its path is
// swapped meanwhile.
class Folder {
  public:
    enum class Link { refuse, follow };

    // Opens a folder to write into. With Link::refuse a folder that is itself a link is refused;
    // Link::follow is for folders the user chose, such as the one of an opened manifest.
    static Folder open(const std::filesystem::path& folder, Link link = Link::refuse);

    // The folder `name` inside this one, made (mkdirat) when missing. A link, or anything that is
    // not a folder, is refused, so nothing is ever made through it.
    Folder subfolder(const std::string& name) const;
    // A new folder `name` inside this one; refused when anything is there already.
    Folder newSubfolder(const std::string& name) const;

    const std::filesystem::path& path() const { return path_; }
    int descriptor() const { return fd_.get(); }

  private:
    Folder(std::filesystem::path path, FileDescriptor fd)
        : path_(std::move(path)), fd_(std::move(fd)) {}
    Folder child(const std::string& name, bool mustBeNew) const;
    friend Folder folderOfFile(const std::filesystem::path& file);

    std::filesystem::path path_;
    FileDescriptor fd_;
};

// Opens a file of the folder's own for writing, creating it when missing. Refused, with nothing
// written: a link (even a dangling one), a folder, pipe, device or socket, and a file with other
// hard links, whose content is not the folder's alone. A log is emptied; a lock file is kept as
// it is.
enum class OwnFile { keep, empty };
FileDescriptor openOwnFile(const Folder& folder, const std::string& name, OwnFile content);
FileDescriptor openOwnFile(const std::filesystem::path& file, OwnFile content);

// The folder that holds `file`, links followed, for writing `file` into it; a folder that cannot
// be opened fails with the sentence of a failed save of `file`.
Folder folderOfFile(const std::filesystem::path& file);

} // namespace dravik
