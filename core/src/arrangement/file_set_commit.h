// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace dravik::arrangement {

struct FileWrite {
    std::filesystem::path path;
    std::string bytes;
};

// Replaces several files together, in the given order, or leaves every one of them as it was.
// Each new file is first written whole and durably under a hidden name beside its target
// (".name.arranged"); the files it replaces get a hidden hard link (".name.before-arrangement")
// to come back to. Then the new files are renamed into place one by one, the folder synced after
// each; when a rename fails, those done are undone from the links. Only the moments between two
// renames are not covered against a crash: the links stay behind then, to restore by hand.
// Callers must exclude other writers of these files. `beforeRename(i)`, for tests, runs before
// the i-th rename and may throw to stand for its failure.
void commitFiles(const std::vector<FileWrite>& writes,
                 const std::function<void(std::size_t)>& beforeRename = {});

} // namespace dravik::arrangement
