// SPDX-License-Identifier: Apache-2.0
#include "environment/photo_folder_import.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/image.h"
#include "environment/fresh_uuid.h"

#include <QStringDecoder>
#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace tessary {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t largestPhoto = 256u << 20; // the core's cap on a photo file

constexpr std::array rawExtensions{".cr2", ".cr3", ".crw", ".nef", ".nrw", ".arw", ".srf",
                                   ".sr2", ".dng", ".raf", ".orf", ".rw2", ".rwl", ".pef",
                                   ".srw", ".x3f", ".3fr", ".erf", ".kdc", ".mrw", ".iiq"};

std::string quoted(const std::string& name) {
    return "\u201c" + name + "\u201d";
}

std::string lowerExtension(const fs::path& name) {
    std::string extension = name.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool isUtf8(const std::string& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString decoded = decoder(QByteArrayView(bytes.data(), std::ssize(bytes)));
    return !decoder.hasError();
}

// Why a file directly in the chosen folder is not a photo to copy; none for a JPEG or PNG file.
std::optional<std::string> refusal(const std::string& name, const struct stat& info) {
    if (!isUtf8(name))
        return "The name of a file is not valid UTF-8, so it was not imported; rename it and "
               "import the folder again.";
    if (S_ISLNK(info.st_mode))
        return quoted(name) + " is a symbolic link, so it was not imported.";
    if (S_ISDIR(info.st_mode))
        return quoted(name) +
               " is a folder; only the photos directly in the chosen folder are imported.";
    if (!S_ISREG(info.st_mode))
        return quoted(name) + " is not a regular file (a pipe, socket or device), so it was not "
                              "read.";
    const std::string extension = lowerExtension(name);
    if (extension == ".heic" || extension == ".heif")
        return quoted(name) + " is a HEIC/HEIF photo, which is not supported; convert it to JPEG "
                              "and import it again.";
    if (std::find(rawExtensions.begin(), rawExtensions.end(), extension) != rawExtensions.end())
        return quoted(name) + " is a camera raw file, which is not supported; export it as JPEG "
                              "and import it again.";
    if (extension != ".jpg" && extension != ".jpeg" && extension != ".png")
        return quoted(name) + " is not a JPEG or PNG photo, so it was not imported.";
    return std::nullopt;
}

// Decodes the copy at an eighth of its size: a header that reads but data that does not would
// otherwise only be found when the session opens, and then refuse all of it.
void checkDecodes(const fs::path& copy) {
    const dravik::ImageInput photo = dravik::ImageInput::load(copy);
    const dravik::ImageSize size = photo.size();
    photo.reduced({0, 0, static_cast<double>(size.width), static_cast<double>(size.height)}, 8);
}

// The copy of one photo, or why there is none.
std::optional<std::string> copyPhoto(const fs::path& source, const std::string& name,
                                     const struct stat& seen, const dravik::Folder& staging) {
    try {
        dravik::FileContents contents = dravik::readWholeFile(source / name, "photo", largestPhoto);
        // What was read is what was looked at, not a link swapped in since.
        if (contents.stamp.inode != static_cast<std::uint64_t>(seen.st_ino) ||
            contents.stamp.device != static_cast<std::uint64_t>(seen.st_dev))
            return quoted(name) + " changed while it was imported; import the folder again.";
        dravik::writeFileAtomically(staging, name, contents.bytes);
        checkDecodes(staging.path() / name);
        return std::nullopt;
    } catch (const dravik::DravikError& failure) {
        std::error_code ignored;
        fs::remove(staging.path() / name, ignored);
        return failure.what();
    }
}

std::string folderTitle(const fs::path& source) {
    std::string name = fs::path(source).lexically_normal().filename().string();
    if (name.empty())
        name = fs::path(source).lexically_normal().parent_path().filename().string();
    name.erase(0, name.find_first_not_of('.'));
    return name.empty() || !isUtf8(name) ? "Imported photos" : name;
}

// Renames the finished copy to the first free name: "ride", "ride 2", "ride 3", …
fs::path moveIntoPlace(const dravik::Folder& data, const std::string& staged,
                       const std::string& title) {
    for (int attempt = 1; attempt < 10'000; ++attempt) {
        const std::string name = attempt == 1 ? title : title + " " + std::to_string(attempt);
        if (::renameat2(data.descriptor(), staged.c_str(), data.descriptor(), name.c_str(),
                        RENAME_NOREPLACE) == 0)
            return data.path() / name;
        if (errno != EEXIST)
            throw dravik::DravikError("The imported photos could not be moved into " +
                                      quoted(data.path().string()) + ": " + std::strerror(errno) +
                                      ".");
    }
    throw dravik::DravikError("Every name for " + quoted(title) + " is taken in " +
                              quoted(data.path().string()) + ".");
}

} // namespace

ImportedFolder copyPhotoFolder(const fs::path& source, const fs::path& dataFolder) {
    std::error_code error;
    // The chosen folder itself is followed, as every folder a user chooses is.
    if (!fs::is_directory(source, error))
        throw dravik::DravikError(quoted(source.string()) + " is not a folder of photos.");
    std::vector<std::string> names;
    for (auto entry = fs::directory_iterator(source, error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with('.'))
            names.push_back(name);
    }
    if (error)
        throw dravik::DravikError("The folder " + quoted(source.string()) +
                                  " could not be read: " + error.message() + ".");
    std::sort(names.begin(), names.end());

    fs::create_directories(dataFolder, error);
    const dravik::Folder data = dravik::Folder::open(dataFolder, dravik::Folder::Link::follow);
    const std::string staged = ".import-" + freshUuid().text();
    ImportedFolder imported;
    try {
        const dravik::Folder staging = data.newSubfolder(staged);
        for (const std::string& name : names) {
            struct stat info {};
            if (::lstat((source / name).c_str(), &info) != 0)
                continue; // gone since it was listed
            auto reason = refusal(name, info);
            if (!reason)
                reason = copyPhoto(source, name, info, staging);
            if (reason)
                imported.unusable.push_back({name, *reason});
            else
                ++imported.photos;
        }
        if (imported.photos == 0)
            throw dravik::DravikError(quoted(folderTitle(source)) +
                                      " holds no JPEG or PNG photo that could be imported.");
        imported.folder = moveIntoPlace(data, staged, folderTitle(source));
    } catch (...) {
        fs::remove_all(data.path() / staged, error);
        throw;
    }
    return imported;
}

} // namespace tessary
