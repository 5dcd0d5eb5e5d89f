// SPDX-License-Identifier: Apache-2.0
#include "dravik/detection.h"
#include "dravik/error.h"
#include "dravik/manifest.h"
#include "hash/sha256.h"
#include "samplegen.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>

namespace tessary::samplegen {

namespace {

std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    if (!in && !in.eof())
        throw dravik::DravikError("Could not read “" + file.filename().string() + "”.");
    return bytes;
}

void writeText(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << bytes;
    out.close();
    if (!out)
        throw dravik::DravikError("Could not write “" + file.filename().string() + "”.");
}

} // namespace

void writeCopiedSession(const std::filesystem::path& source, const std::filesystem::path& folder,
                        int photos, const AlterCopy& alter) {
    const dravik::SessionManifest original = dravik::SessionManifest::load(source / "session.json");
    const dravik::ResultsFile found = dravik::ResultsFile::load(source / "results.json");
    if (original.pairs.empty())
        throw dravik::DravikError("The session to copy has no photos.");
    std::map<std::string, const dravik::RiderResults*> resultsOf;
    for (const dravik::RiderResults& rider : found.riders)
        resultsOf[rider.pairID + "/" + rider.riderID] = &rider;

    std::filesystem::create_directories(folder);
    dravik::SessionManifest manifest{"Copied session", {}};
    dravik::ResultsFile results{found.detector, found.detectorVersion, {}};
    std::map<std::string, std::string> bytesOf; // each photo read once
    for (int index = 0; index < photos; ++index) {
        dravik::PairInput pair =
            original.pairs[static_cast<std::size_t>(index) % original.pairs.size()];
        char name[32];
        std::snprintf(name, sizeof name, "copy-%03d", index + 1);
        const std::string originalID = pair.id;
        pair.id = name;
        for (dravik::RiderInput& rider : pair.riders) {
            auto cached = bytesOf.find(rider.file);
            if (cached == bytesOf.end())
                cached = bytesOf.emplace(rider.file, readFile(source / rider.file)).first;
            std::string bytes = cached->second;
            if (alter)
                alter(index, bytes);
            rider.file = std::string(name) + "-" + rider.id + ".jpg";
            writeText(folder / rider.file, bytes);
            rider.sourceHash = dravik::sha256Text(bytes.data(), bytes.size());
            if (auto detected = resultsOf.find(originalID + "/" + rider.id);
                detected != resultsOf.end()) {
                dravik::RiderResults copied = *detected->second;
                copied.pairID = name;
                copied.sourceHash = rider.sourceHash;
                results.riders.push_back(std::move(copied));
            }
        }
        manifest.pairs.push_back(std::move(pair));
    }
    writeText(folder / "session.json", manifest.encode());
    writeText(folder / "results.json", results.encode());
}

} // namespace tessary::samplegen
