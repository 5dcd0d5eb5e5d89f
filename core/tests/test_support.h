#pragma once

// Shared helpers for core tests: a temporary folder and a small valid session on disk.

#include "dravik/detection.h"
#include "dravik/error.h"
#include "dravik/joints.h"
#include "dravik/manifest.h"
#include "hash/sha256.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace dravik::test {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
  public:
    TempDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "dravik-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("cannot create a temporary folder");
        path_ = pattern;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

  private:
    std::filesystem::path path_;
};

inline void writeText(const std::filesystem::path& file, std::string_view text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}

inline std::string readText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::string hashOf(std::string_view text) {
    return sha256Text(text.data(), text.size());
}

// A usable result with all 19 joints, joint i at (origin.x + 10 i, origin.y + 5 i).
inline DravikResult poseResult(std::string kind, Point2 origin) {
    DravikResult result{std::move(kind), "needsReview", 1, {}};
    int i = 0;
    for (const std::string& name : InspectionRenderer::jointNames()) {
        result.joints.push_back({name, origin.x + 10 * i, origin.y + 5 * i, 0.9});
        ++i;
    }
    return result;
}

inline RiderInput riderInput(std::string id, std::string role, std::string file) {
    RiderInput rider;
    rider.id = std::move(id);
    rider.role = std::move(role);
    rider.displayName = rider.id == "rider" ? "Rider" : "Reference rider";
    rider.file = std::move(file);
    rider.sourceHash = hashOf(rider.file);
    rider.imageSize = {1200, 800};
    rider.panel = {0, 0, 1200, 800};
    rider.crop = {300, 100, 500, 600};
    return rider;
}

// Pair "corner-1" (subject "rider", reference "ref") and pair "solo" (subject "rider" alone).
inline SessionManifest sampleManifest() {
    SessionManifest manifest;
    manifest.title = "Sample corner";
    manifest.pairs.push_back({"corner-1",
                              "Turn 3 entry",
                              {riderInput("rider", "subject", "photos/rider.jpg"),
                               riderInput("ref", "reference", "photos/ref.jpg")}});
    manifest.pairs.push_back({"solo", "Turn 5 exit", {riderInput("rider", "subject", "solo.png")}});
    return manifest;
}

// The subject of "corner-1" has a 3D and a 2D result, the reference a 2D result only, and the
// rider of "solo" no entry at all.
inline ResultsFile sampleResults() {
    const SessionManifest manifest = sampleManifest();
    ResultsFile results{"test-detector", "1.0", {}};
    results.riders.push_back({"corner-1",
                              "rider",
                              manifest.pairs[0].riders[0].sourceHash,
                              {poseResult("3D", {400, 150}), poseResult("2D", {410, 160})}});
    results.riders.push_back({"corner-1",
                              "ref",
                              manifest.pairs[0].riders[1].sourceHash,
                              {poseResult("2D", {350, 120})}});
    return results;
}

struct SessionFiles {
    std::filesystem::path manifest; // <folder>/session.json
    std::filesystem::path results;  // <folder>/results.json
};

// Writes sampleManifest() and sampleResults() into `folder`; photos are not written.
inline SessionFiles writeSession(const std::filesystem::path& folder,
                                 const SessionManifest& manifest = sampleManifest(),
                                 const ResultsFile& results = sampleResults()) {
    SessionFiles files{folder / "session.json", folder / "results.json"};
    writeText(files.manifest, manifest.encode());
    writeText(files.results, results.encode());
    return files;
}

} // namespace dravik::test
