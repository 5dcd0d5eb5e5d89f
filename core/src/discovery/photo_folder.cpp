// SPDX-License-Identifier: Apache-2.0
#include "discovery/photo_folder.h"

#include "dravik/error.h"

#include "json/json_reader.h"
#include <algorithm>
#include <cctype>
#include <optional>
#include <system_error>

namespace dravik::discovery {

namespace fs = std::filesystem;

namespace {

std::string reason(const std::error_code& error) {
    std::string text = error.message();
    if (!text.empty())
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

std::string named(const fs::path& folder) {
    return json::quoted(json::fileLabel(folder));
}

[[noreturn]] void unreadable(std::string_view what, const fs::path& folder,
                             const std::error_code& error) {
    throw DravikError(std::string(what) + named(folder) + " could not be read: " + reason(error) +
                      ".");
}

// Lists a folder, calling keep(entry) for each visible entry and taking what it returns, if
// anything; any error is unreadable().
template <class Keep> auto list(const fs::path& folder, std::string_view what, Keep keep) {
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error)
        unreadable(what, folder, error);
    std::vector<typename decltype(keep(*it))::value_type> kept;
    for (; it != fs::directory_iterator(); it.increment(error)) {
        if (isHidden(it->path().filename().string()))
            continue;
        if (auto item = keep(*it))
            kept.push_back(std::move(*item));
    }
    if (error)
        unreadable(what, folder, error);
    return kept;
}

} // namespace

bool isHidden(std::string_view name) {
    return !name.empty() && name.front() == '.';
}

bool isPhotoName(std::string_view name) {
    if (isHidden(name))
        return false;
    std::string extension = fs::path(name).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".jpg" || extension == ".jpeg" || extension == ".png";
}

std::vector<SessionFolder> sessionFolders(const fs::path& dataDirectory) {
    std::error_code error;
    fs::file_status status = fs::status(dataDirectory, error);
    if (status.type() == fs::file_type::not_found)
        throw DravikError("The data folder " + named(dataDirectory) + " does not exist.");
    if (error)
        unreadable("The data folder ", dataDirectory, error);
    if (status.type() != fs::file_type::directory)
        throw DravikError("The data folder " + named(dataDirectory) + " is not a folder.");
    auto folders =
        list(dataDirectory, "The data folder ",
             [](const fs::directory_entry& entry) -> std::optional<SessionFolder> {
                 std::error_code ignored; // what cannot be looked at is not a session
                 if (!entry.is_directory(ignored))
                     return std::nullopt;
                 return SessionFolder{entry.path().filename().string(), entry.is_symlink(ignored)};
             });
    std::sort(folders.begin(), folders.end(),
              [](const SessionFolder& a, const SessionFolder& b) { return a.name < b.name; });
    return folders;
}

std::vector<std::string> photoNames(const fs::path& folder) {
    auto names = list(folder, "The folder ",
                      [](const fs::directory_entry& entry) -> std::optional<std::string> {
                          std::error_code ignored;
                          std::string name = entry.path().filename().string();
                          if (!isPhotoName(name) ||
                              entry.symlink_status(ignored).type() != fs::file_type::regular)
                              return std::nullopt;
                          return name;
                      });
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace dravik::discovery
