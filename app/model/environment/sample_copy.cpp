// SPDX-License-Identifier: Apache-2.0
#include "environment/sample_copy.h"

#include <QString>
#include <system_error>
#include <unistd.h>

namespace tessary {

namespace fs = std::filesystem;

std::optional<std::string> provideSampleSession(const Bundle& bundle) {
    const fs::path sample = bundle.resourcePath("sample-session");
    const auto dataFolder = bundle.dataDirectory();
    std::error_code error;
    if (!dataFolder || !fs::is_directory(sample, error))
        return std::nullopt;
    const fs::path copy = *dataFolder / "sample-session";
    if (fs::exists(copy, error) || error)
        return std::nullopt;

    // Copied beside its final place and renamed, so a half-made copy is never taken for the sample.
    const fs::path partial =
        dataFolder->string() + "/.sample-session.partial-" + std::to_string(::getpid());
    fs::create_directories(*dataFolder, error);
    if (!error)
        fs::copy(sample, partial, fs::copy_options::recursive, error);
    if (!error) {
        // The installed files may be read-only; the user's copy must not be.
        fs::permissions(partial, fs::perms::owner_all, fs::perm_options::add, error);
        for (auto entry = fs::recursive_directory_iterator(partial, error);
             !error && entry != fs::recursive_directory_iterator(); entry.increment(error))
            fs::permissions(entry->path(), fs::perms::owner_write, fs::perm_options::add, error);
    }
    if (!error)
        fs::rename(partial, copy, error);
    if (!error)
        return std::nullopt;
    std::error_code ignored;
    fs::remove_all(partial, ignored);
    return "The sample session could not be copied to \u201c" + dataFolder->string() +
           "\u201d: " + error.message() + ".";
}

} // namespace tessary
