// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared helpers for core tests: a temporary folder, frames and a small valid session on disk.

#include "dravik/detection.h"
#include "dravik/error.h"
#include "dravik/joints.h"
#include "dravik/manifest.h"
#include "dravik/review.h"
#include "hash/sha256.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

// Writes a file, creating the folders on the way.
inline void writeText(const std::filesystem::path& file, std::string_view text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!out)
        throw std::runtime_error("cannot write " + file.string());
}

inline std::string_view bytesOf(const std::vector<std::uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
inline void writeText(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes) {
    writeText(file, bytesOf(bytes));
}

inline std::string readText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::string hashOf(std::string_view bytes) {
    return sha256Text(bytes.data(), bytes.size());
}
inline std::string hashOf(const std::vector<std::uint8_t>& bytes) {
    return hashOf(bytesOf(bytes));
}
inline std::string digitHash(char digit) {
    return "sha256:" + std::string(64, digit);
}

// The sentence of the DravikError that `action` throws, or "" when it throws none.
template <class Action> std::string failureOf(Action&& action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

// Each change made to a copy of `valid` must make `decode` (taking the changed text) fail with a
// sentence that starts with `prefix` and the case's problem, or is exactly that when `whole`.
using JsonChange = std::pair<std::function<void(nlohmann::ordered_json&)>, std::string>;
template <class Decode>
void expectRefusals(const nlohmann::ordered_json& valid, Decode decode, const std::string& prefix,
                    const std::vector<JsonChange>& cases, bool whole = false) {
    for (const auto& [change, problem] : cases) {
        nlohmann::ordered_json changed = valid;
        change(changed);
        const std::string message = failureOf([&] { decode(changed.dump()); });
        if (whole)
            EXPECT_EQ(message, prefix + problem);
        else
            EXPECT_TRUE(message.starts_with(prefix + problem)) << problem << "\n  got: " << message;
    }
}

// A frame of pair `pairID` showing `panel` of the 2000 × 1500 photo "photos/<riderID>.jpg".
inline ReviewFrame frame(const std::string& pairID, const std::string& riderID,
                         const std::string& role, char hashDigit,
                         PixelRect panel = {0, 0, 2000, 1500}) {
    ReviewFrame f;
    f.pairID = pairID;
    f.riderID = riderID;
    f.id = pairID + "/" + riderID;
    f.role = role;
    f.riderDisplayName = role == "subject" ? "Rider" : "Reference rider";
    f.name = pairID;
    f.file = "photos/" + riderID + ".jpg";
    f.sourceHash = digitHash(hashDigit);
    f.imageSize = {2000, 1500};
    f.panel = panel;
    f.crop = panel;
    return f;
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

// Writes the manifest and the results into `folder`; photos are not written.
inline SessionFiles writeSession(const std::filesystem::path& folder,
                                 const SessionManifest& manifest = sampleManifest(),
                                 const ResultsFile& results = sampleResults()) {
    SessionFiles files{folder / "session.json", folder / "results.json"};
    writeText(files.manifest, manifest.encode());
    writeText(files.results, results.encode());
    return files;
}

// A valid document of `frames` single-rider pairs, each with a full 19-joint detection, so that
// its encoded size grows with `frames` (about 3 KB each). Deterministic for a given revision.
inline ReviewDocument savedDocument(std::int64_t revision, int frames = 1) {
    std::vector<ReviewFrame> list;
    for (int i = 0; i < frames; ++i) {
        ReviewFrame f = frame("pair" + std::to_string(i), "rider", "subject", 'a');
        DravikResult result{"3D", "needsReview", 1, {}};
        int j = 0;
        for (const auto& name : InspectionRenderer::jointNames()) {
            result.joints.push_back(
                {name, 1000.5 + j * 31 + revision % 97, 600.25 + j * 43, 0.5 + j * 0.01});
            ++j;
        }
        f.raw.push_back(std::move(result));
        list.push_back(std::move(f));
    }
    return ReviewDocument(digitHash('9'), std::move(list), revision);
}

// Every entry of a folder except a review's lock file, sorted.
inline std::vector<std::string> entries(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const auto name = entry.path().filename().string();
        if (!name.ends_with(".lock"))
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace dravik::test
