// SPDX-License-Identifier: Apache-2.0
#include "batch_run.h"
#include "dravik/atomic_file.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "photo_check.h"
#include "rect_math.h"
#include "rider_detector.h"
#include "upright.h"

#include <algorithm>
#include <iostream>

namespace dravik::batch {

namespace {

constexpr const char* detectorName = "MoveNet SinglePose Thunder";
constexpr const char* detectorVersion =
    "4, the rider found with NanoDet and MoveNet MultiPose (TensorFlow.js 4.22, WebAssembly)";

// Discovery writes every photo as an unnamed rider cropped to its whole panel. Only then are the
// crops ours to replace; a manifest anybody has named or cropped is left as it is.
bool writtenByDiscovery(const SessionManifest& manifest) {
    bool any = false;
    for (const PairInput& pair : manifest.pairs)
        for (const RiderInput& rider : pair.riders) {
            if (rider.displayName != SessionDiscovery::unreviewedRiderName() ||
                rider.crop != rider.panel)
                return false;
            any = true;
        }
    return any;
}

// The wheel axes proposed beside the manifest, each telling its rider's lean. A proposals file
// that cannot be read only costs the hints.
std::vector<LeanAnnotation> leanProposals(const std::filesystem::path& manifestFile) {
    const std::filesystem::path file = manifestFile.parent_path() / "lean-proposals.json";
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return {};
    try {
        return loadLeanProposals(file);
    } catch (const DravikError& failure) {
        std::cerr << failure.what() << " Riders are detected without its lean hints.\n";
        return {};
    }
}

std::optional<double> proposedLean(const std::vector<LeanAnnotation>& proposals,
                                   const PairInput& pair, const RiderInput& rider) {
    for (const LeanAnnotation& proposal : proposals)
        if (proposal.frameID == pair.id + "/" + rider.id &&
            proposal.sourceHash == rider.sourceHash && proposal.wheel &&
            !proposal.wheelNotObservable)
            return wheelLean({proposal.wheel->a, proposal.wheel->b});
    return std::nullopt;
}

} // namespace

int feasibility(const std::filesystem::path& manifestFile, const std::filesystem::path& output,
                const WorkerSetup& setup) {
    SessionManifest manifest = SessionManifest::load(manifestFile);
    const bool mayCrop = writtenByDiscovery(manifest);
    const std::vector<LeanAnnotation> proposals = leanProposals(manifestFile);
    bool cropped = false;
    bool attention = false;
    PoseWorker worker(setup);
    RiderDetector detector(worker);
    ResultsFile results{detectorName, detectorVersion, {}};
    std::size_t total = 0;
    for (const PairInput& pair : manifest.pairs)
        total += pair.riders.size();
    std::size_t current = 0;
    for (PairInput& pair : manifest.pairs)
        for (RiderInput& rider : pair.riders) {
            // The app reads this line to show how far the analysis has come.
            std::cout << "Analysing photo " << ++current << " of " << total << ": " << rider.file
                      << std::endl;
            RiderResults entry{pair.id, rider.id, rider.sourceHash, {}};
            try {
                auto file = ReviewStore::assetURL(rider.file, manifestFile);
                ImageInput photo = loadCheckedPhoto(file, rider.sourceHash);
                Detection found = detector.detect(photo, rider.crop, photoLabel(file),
                                                  proposedLean(proposals, pair, rider));
                DravikResult best = found.refined ? *found.refined : found.primary;
                entry.results.push_back(best);
                if (!best.usable()) {
                    attention = true;
                    std::cerr << "No single rider was found in " << photoLabel(file) << ".\n";
                } else if (mayCrop && found.riderArea) {
                    PixelRect crop = intersection(*found.riderArea, rider.panel);
                    if (crop.width > 0 && crop.height > 0 && crop != rider.crop) {
                        rider.crop = crop;
                        cropped = true;
                    }
                }
            } catch (const WorkerError&) {
                throw; // the run cannot go on without its model
            } catch (const DravikError& error) {
                attention = true;
                std::cerr << error.what() << "\n";
            }
            results.riders.push_back(std::move(entry));
        }
    writeFileAtomically(output, results.encode());
    if (cropped)
        writeFileAtomically(manifestFile, manifest.encode());
    return attention ? needsAttention : success;
}

} // namespace dravik::batch
