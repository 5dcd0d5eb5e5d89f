// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace dravik::discovery {

// A name starting with "." is hidden: such files and folders are never looked at.
bool isHidden(std::string_view name);
// ".jpg", ".jpeg" or ".png" in any case, and not hidden.
bool isPhotoName(std::string_view name);

struct SessionFolder {
    std::string name;
    bool link = false; // a symbolic link to a folder: never a session, since it may lead anywhere
};

// The visible sub-folders of the data folder, and the links to folders, by name in byte order.
// Fails with one sentence naming the data folder when it is missing, not a folder or unreadable.
std::vector<SessionFolder> sessionFolders(const std::filesystem::path& dataDirectory);

// The photos directly inside a folder, by name in byte order. Symbolic links are left out: the
// manifest may only name files that live in the session's own folder.
std::vector<std::string> photoNames(const std::filesystem::path& folder);

} // namespace dravik::discovery
