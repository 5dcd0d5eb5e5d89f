// SPDX-License-Identifier: Apache-2.0
#include "discovery/discovered_manifest.h"
#include "discovery/photo_folder.h"
#include "dravik/discovery.h"
#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/manifest.h"
#include "dravik/parallel.h"
#include "io/atomic_file.h"

#include "json/json_reader.h"
#include <optional>
#include <system_error>

namespace dravik::SessionDiscovery {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view manifestName = "session.json";
constexpr std::string_view resultsName = "results.json";

bool existsAsFile(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

bool occupied(const fs::path& file) {
    std::error_code error;
    return fs::symlink_status(file, error).type() != fs::file_type::not_found && !error;
}

// A preset may spell the manifest's path differently (relative, through a link): the same file
// counts, as long as it still exists.
std::optional<fs::path> knownResultsFor(const fs::path& manifest,
                                        const std::map<fs::path, fs::path>& knownResults) {
    for (const auto& [knownManifest, results] : knownResults) {
        std::error_code error;
        if (fs::equivalent(knownManifest, manifest, error) && existsAsFile(results))
            return results;
    }
    return std::nullopt;
}

// Folder names only title the session, so an odd byte is shown as U+FFFD rather than refused.
std::string displayText(const std::string& bytes) {
    return json::Json::parse(
               json::Json(bytes).dump(-1, ' ', false, json::Json::error_handler_t::replace))
        .get<std::string>();
}

// A photo's name is written into the manifest as it is, so it must be text.
void requireTextName(const std::string& photo) {
    if (displayText(photo) != photo)
        throw DravikError("The name of the photo " + json::quoted(displayText(photo)) +
                          " is not valid UTF-8; rename the photo so that its folder can be "
                          "analysed.");
}

std::string writeManifest(const fs::path& folder, const std::vector<std::string>& photos) {
    for (const std::string& photo : photos)
        requireTextName(photo);
    std::vector<discovery::PhotoFacts> facts =
        parallelMap<discovery::PhotoFacts>(photos.size(), [&](std::size_t i) {
            ImageInput image = ImageInput::load(folder / photos[i]);
            return discovery::PhotoFacts{photos[i], image.sourceHash(), image.size()};
        });
    std::string title = displayText(json::fileLabel(folder));
    SessionManifest manifest = discovery::manifestForPhotos(title, facts);
    writeFileAtomically(folder / manifestName, manifest.encode());
    return title;
}

DiscoveredSession visit(const fs::path& folder, const std::vector<std::string>& photos,
                        const std::map<fs::path, fs::path>& knownResults, const Analyze& analyze) {
    const fs::path manifest = folder / manifestName;
    const fs::path results = folder / resultsName;
    std::string title;
    if (occupied(manifest)) {
        title = SessionManifest::load(manifest).title;
        if (title.empty())
            title = displayText(json::fileLabel(folder));
        if (auto known = knownResultsFor(manifest, knownResults))
            return {title, manifest, *known, false};
        if (existsAsFile(results))
            return {title, manifest, results, false};
    } else {
        title = writeManifest(folder, photos);
    }
    if (!analyze)
        throw DravikError(json::quoted(json::fileLabel(folder)) + " has not been analysed yet.");
    analyze(manifest, results);
    if (!existsAsFile(results))
        throw DravikError("The analysis of " + json::quoted(json::fileLabel(folder)) +
                          " finished without writing " + json::quoted(resultsName) + ".");
    return {title, manifest, results, true};
}

// Whatever a folder throws becomes one sentence; DravikError texts are sentences already.
std::string describeFailure(const fs::path& folder) {
    std::string name = json::quoted(json::fileLabel(folder));
    try {
        throw;
    } catch (const DravikError& error) {
        return error.message();
    } catch (const std::exception& error) {
        std::string text = error.what();
        if (text.empty())
            return name + " could not be analysed.";
        if (text.back() != '.')
            text += '.';
        return name + " could not be analysed: " + text;
    } catch (...) {
        return name + " could not be analysed for an unknown reason.";
    }
}

} // namespace

std::string_view unreviewedRiderName() {
    return "Unreviewed rider";
}

SessionDiscoveryReport run(const fs::path& dataDirectory,
                           const std::map<fs::path, fs::path>& knownResults,
                           const Progress& progress, const Analyze& analyze) {
    SessionDiscoveryReport report;
    std::error_code error;
    fs::path data = fs::absolute(dataDirectory, error).lexically_normal();
    if (error)
        data = dataDirectory.lexically_normal();
    if (!data.has_filename() && data.has_parent_path() && data != data.root_path())
        data = data.parent_path();

    std::vector<discovery::SessionFolder> folders;
    try {
        folders = discovery::sessionFolders(data);
    } catch (...) {
        report.failures.push_back({data, describeFailure(data)});
        return report;
    }
    for (const auto& [name, link] : folders) {
        const fs::path folder = data / name;
        if (link) {
            report.failures.push_back({folder, json::quoted(name) +
                                                   " is a symbolic link, so it is not opened as a "
                                                   "session and nothing is written into it."});
            continue;
        }
        try {
            std::vector<std::string> photos = discovery::photoNames(folder);
            if (photos.empty())
                continue;
            if (progress)
                progress(name);
            report.sessions.push_back(visit(folder, photos, knownResults, analyze));
        } catch (...) {
            report.failures.push_back({folder, describeFailure(folder)});
        }
    }
    return report;
}

} // namespace dravik::SessionDiscovery
