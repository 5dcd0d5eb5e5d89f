// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace dravik {

// Throws the DravikError sentence for a failed write of `file`, by errno value: disk full,
// read-only or forbidden folder, missing folder, or the system's own reason.
[[noreturn]] void throwWriteFailure(int error, const std::filesystem::path& file);

// The file name in typographic quotes, as every sentence names it.
std::string quotedName(const std::filesystem::path& file);

// The system's reason for an errno value, as a clause: "no such file or directory".
std::string reasonOf(int error);

// What a file system entry is, for sentences: "a folder", "a named pipe", "a symbolic link" ...
std::string kindOf(mode_t mode);
// The type bits of the entry `name` of the folder `folderFd`, without following a link; none when
// nothing is there.
std::optional<mode_t> modeOfEntry(int folderFd, const std::string& name);

} // namespace dravik
