#include "discovery/photo_folder.h"

#include "dravik/error.h"

#include "json/json_reader.h"
#include <algorithm>
#include <cctype>
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

// Lists a folder, calling keep(entry) for each visible entry; any error is unreadable().
template <class Keep>
std::vector<std::string> list(const fs::path& folder, std::string_view what, Keep keep) {
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error)
        unreadable(what, folder, error);
    std::vector<std::string> names;
    for (; it != fs::directory_iterator(); it.increment(error)) {
        std::string name = it->path().filename().string();
        if (!isHidden(name) && keep(*it))
            names.push_back(std::move(name));
    }
    if (error)
        unreadable(what, folder, error);
    std::sort(names.begin(), names.end());
    return names;
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

std::vector<std::string> sessionFolderNames(const fs::path& dataDirectory) {
    std::error_code error;
    fs::file_status status = fs::status(dataDirectory, error);
    if (status.type() == fs::file_type::not_found)
        throw DravikError("The data folder " + named(dataDirectory) + " does not exist.");
    if (error)
        unreadable("The data folder ", dataDirectory, error);
    if (status.type() != fs::file_type::directory)
        throw DravikError("The data folder " + named(dataDirectory) + " is not a folder.");
    return list(dataDirectory, "The data folder ", [](const fs::directory_entry& entry) {
        std::error_code ignored; // a folder that cannot even be looked at is not a session
        return entry.is_directory(ignored);
    });
}

std::vector<std::string> photoNames(const fs::path& folder) {
    return list(folder, "The folder ", [](const fs::directory_entry& entry) {
        std::error_code ignored;
        return isPhotoName(entry.path().filename().string()) &&
               entry.symlink_status(ignored).type() == fs::file_type::regular;
    });
}

} // namespace dravik::discovery
