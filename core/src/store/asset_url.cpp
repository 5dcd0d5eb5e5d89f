// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"

#include "json/geometry_codec.h"
#include "json/json_reader.h"
#include <deque>
#include <system_error>

namespace dravik {

namespace fs = std::filesystem;

namespace {

constexpr int maxSymlinkHops = 40;

// Resolves `relative` under the real folder `base` the way the kernel would, one component at a
// time. Unlike weakly_canonical it also follows dangling links, whose target may appear later.
// Returns none when the links loop.
std::optional<fs::path> resolveUnder(const fs::path& base, const fs::path& relative) {
    fs::path current = base;
    std::deque<fs::path> pending(relative.begin(), relative.end());
    int hops = 0;
    while (!pending.empty()) {
        fs::path part = pending.front();
        pending.pop_front();
        if (part.empty() || part == ".")
            continue;
        if (part == "..") {
            current = current.parent_path();
            continue;
        }
        fs::path next = current / part;
        std::error_code error;
        if (!fs::is_symlink(fs::symlink_status(next, error))) {
            current = next;
            continue;
        }
        if (++hops > maxSymlinkHops)
            return std::nullopt;
        fs::path target = fs::read_symlink(next, error);
        if (error)
            return std::nullopt;
        if (target.is_absolute())
            current = target.root_path();
        fs::path rest = target.relative_path();
        pending.insert(pending.begin(), rest.begin(), rest.end());
    }
    return current;
}

bool isInside(const fs::path& path, const fs::path& folder) {
    fs::path relative = path.lexically_relative(folder);
    return !relative.empty() && relative != "." && *relative.begin() != "..";
}

} // namespace

fs::path ReviewStore::assetURL(const std::string& file, const fs::path& manifest) {
    const std::string manifestLabel = json::quoted(json::fileLabel(manifest));
    const std::string fileLabel = json::quoted(file);
    if (file.empty())
        throw DravikError(manifestLabel + " names a photo with an empty path.");
    // A NUL would cut the path short where the system reads it.
    if (auto problem = json::photoPathProblem(file)) {
        const std::string escaped =
            json::Json(file).dump(-1, ' ', true, json::Json::error_handler_t::replace);
        throw DravikError("The photo path " + json::quoted(escaped.substr(1, escaped.size() - 2)) +
                          " in " + manifestLabel + " " + *problem + ".");
    }
    fs::path relative(file);
    if (relative.has_root_path())
        throw DravikError("The photo path " + fileLabel + " in " + manifestLabel +
                          " must be relative to the manifest’s folder.");
    fs::path normal = relative.lexically_normal();
    if (normal.empty() || normal == "." || *normal.begin() == "..")
        throw DravikError("The photo path " + fileLabel + " in " + manifestLabel +
                          " leads outside the manifest’s folder.");

    std::error_code error;
    fs::path folder = fs::absolute(manifest, error).parent_path();
    fs::path realFolder = fs::weakly_canonical(folder, error);
    if (error)
        throw DravikError("The folder of " + manifestLabel +
                          " could not be resolved: " + error.message() + ".");
    auto resolved = resolveUnder(realFolder, relative);
    if (!resolved)
        throw DravikError("The photo path " + fileLabel + " in " + manifestLabel +
                          " could not be resolved because its links loop or cannot be read.");
    if (!isInside(*resolved, realFolder))
        throw DravikError("The photo path " + fileLabel + " in " + manifestLabel +
                          " leads outside the manifest’s folder.");
    return *resolved;
}

} // namespace dravik
