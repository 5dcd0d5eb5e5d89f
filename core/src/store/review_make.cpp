// SPDX-License-Identifier: Apache-2.0
#include "store/review_make.h"

#include "dravik/store.h"
#include "hash/sha256.h"

#include "json/json_reader.h"
#include <map>
#include <utility>

namespace dravik {

namespace {

using RiderKey = std::pair<std::string, std::string>; // pair id, rider id

std::string riderName(const RiderKey& key) {
    return "pair “" + key.first + "”, rider “" + key.second + "”";
}

} // namespace

ReviewDocument ReviewStore::make(const std::filesystem::path& manifestPath,
                                 const std::filesystem::path& resultsPath) {
    return make(SessionManifest::load(manifestPath), manifestPath, resultsPath);
}

ReviewDocument ReviewStore::make(const SessionManifest& manifest,
                                 const std::filesystem::path& manifestPath,
                                 const std::filesystem::path& resultsPath) {
    json::Source source{json::fileLabel(resultsPath), "results file"};
    // The identity is the hash of exactly the bytes that were parsed.
    std::string bytes = json::readFile(resultsPath, source);
    ResultsFile results = ResultsFile::decode(bytes, source.label);
    return makeReview(manifest, results, sha256Text(bytes.data(), bytes.size()),
                      json::quoted(json::fileLabel(manifestPath)), json::quoted(source.label));
}

ReviewDocument makeReview(const SessionManifest& manifest, const ResultsFile& results,
                          std::string identity, const std::string& manifestLabel,
                          const std::string& resultsLabel) {
    std::map<RiderKey, const RiderInput*> riders;
    for (const PairInput& pair : manifest.pairs)
        for (const RiderInput& rider : pair.riders)
            riders.emplace(RiderKey{pair.id, rider.id}, &rider);

    std::map<RiderKey, const RiderResults*> found;
    for (const RiderResults& entry : results.riders) {
        RiderKey key{entry.pairID, entry.riderID};
        auto rider = riders.find(key);
        if (rider == riders.end())
            throw DravikError(resultsLabel + " lists " + riderName(key) + ", which " +
                              manifestLabel + " does not have.");
        if (rider->second->sourceHash != entry.sourceHash)
            throw DravikError(resultsLabel + " was made from another photo of " + riderName(key) +
                              " than the one " + manifestLabel + " names.");
        found.emplace(key, &entry);
    }

    std::vector<ReviewFrame> frames;
    for (const PairInput& pair : manifest.pairs) {
        for (const RiderInput& rider : pair.riders) {
            ReviewFrame frame;
            frame.id = pair.id + "/" + rider.id;
            frame.role = rider.role;
            frame.riderDisplayName = rider.displayName;
            frame.name = pair.title;
            frame.file = rider.file;
            frame.sourceHash = rider.sourceHash;
            frame.imageSize = rider.imageSize;
            frame.panel = rider.panel;
            frame.crop = rider.crop;
            frame.pairID = pair.id;
            frame.riderID = rider.id;
            if (auto entry = found.find({pair.id, rider.id}); entry != found.end())
                frame.raw = entry->second->results;
            frames.push_back(std::move(frame));
        }
    }
    ReviewDocument document(std::move(identity), std::move(frames), 0);
    std::map<std::string, PairPhotoAssessment> assessments;
    for (const PairInput& pair : manifest.pairs)
        if (pair.cornerDirection || !pair.photoCoaching.empty())
            assessments.emplace(pair.id,
                                PairPhotoAssessment{pair.cornerDirection, pair.photoCoaching});
    document.setPairAssessments(std::move(assessments));
    return document;
}

} // namespace dravik
