// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct DiscoveredSession {
    std::string title;
    std::filesystem::path manifest;
    std::filesystem::path results;
    bool newlyAnalyzed = false; // this run analysed the folder
    bool operator==(const DiscoveredSession&) const = default;
};

struct SessionDiscoveryFailure {
    std::filesystem::path folder;
    std::string message; // one sentence
    bool operator==(const SessionDiscoveryFailure&) const = default;
};

struct SessionDiscoveryReport {
    std::vector<DiscoveredSession> sessions;
    std::vector<SessionDiscoveryFailure> failures;
};

namespace SessionDiscovery {
using Progress = std::function<void(const std::string& folderName)>;
using Analyze = std::function<void(const std::filesystem::path& manifest,
                                   const std::filesystem::path& results)>;

// Every immediate sub-folder of `dataDirectory` holding JPEG or PNG photos is a session, visited
// in name order. A folder without "session.json" gets one written (each photo its own unreviewed
// subject frame) and is analysed into "results.json" beside it; `knownResults` (results path by
// manifest path) names results kept elsewhere. A folder's failure, whatever `analyze` throws, is
// reported and the run goes on; the run itself never throws for a folder. Photos and saved
// reviews are never written. `progress` gets each session folder's name first, from the calling
// thread, with no lock held.
SessionDiscoveryReport
run(const std::filesystem::path& dataDirectory,
    const std::map<std::filesystem::path, std::filesystem::path>& knownResults,
    const Progress& progress, const Analyze& analyze);

// The rider name of automatically imported photos.
std::string_view unreviewedRiderName();
} // namespace SessionDiscovery

} // namespace dravik
