#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace dravik {

// Replaces `path` with `bytes` so that a crash at any instant leaves either the previous file or
// the complete new one, durably: a temporary beside it is written in full, synced, renamed over
// `path`, and the folder is synced. An existing file keeps its permissions. On failure nothing
// on disk has changed and no temporary remains; the DravikError names the file and the reason.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

// The name prefix of the temporaries writeFileAtomically makes for `path` (".name.tmp-").
std::string temporaryPrefix(const std::filesystem::path& path);

// Deletes temporaries of `path` left behind by a writer that was killed before its rename. Only
// safe while holding a lock that every writer of `path` takes, or one could lose its temporary.
void removeStaleTemporaries(const std::filesystem::path& path);

} // namespace dravik
