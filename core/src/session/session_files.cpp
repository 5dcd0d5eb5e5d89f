// SPDX-License-Identifier: Apache-2.0
#include "dravik/session_files.h"

#include "dravik/error.h"
#include "dravik/store.h"
#include "session/resolved_path.h"

#include "json/json_reader.h"

namespace dravik {

namespace fs = std::filesystem;

namespace {

// Also true for hard links and for spellings that resolve differently but name one file.
bool sameFile(const fs::path& a, const fs::path& b) {
    if (resolvedPath(a) == resolvedPath(b))
        return true;
    std::error_code error;
    return fs::equivalent(a, b, error) && !error;
}

} // namespace

bool SessionFiles::isReviewName(std::string_view fileName) {
    return fileName.starts_with("joint-review-") && fileName.ends_with(".json");
}

void SessionFiles::refuseAsTarget(const fs::path& target, const fs::path& manifest,
                                  const fs::path& results, const ReviewDocument& document) {
    auto refuse = [&] {
        throw DravikError(json::quoted(json::fileLabel(target)) +
                          " is a file of the session, so it was not overwritten; choose another "
                          "file.");
    };
    const fs::path folder = resolvedPath(manifest).parent_path();
    if (sameFile(target, manifest) || sameFile(target, results))
        refuse();
    if (resolvedPath(fs::absolute(target).parent_path()) == folder &&
        isReviewName(target.filename().string()))
        refuse();
    for (std::string_view name : companions)
        if (sameFile(target, folder / name))
            refuse();
    for (const ReviewFrame& frame : document.frames()) {
        fs::path photo;
        try {
            photo = ReviewStore::assetURL(frame.file, manifest);
        } catch (const DravikError&) {
            continue; // a photo outside the folder is refused when it is read, not here
        }
        if (sameFile(target, photo))
            refuse();
    }
}

} // namespace dravik
