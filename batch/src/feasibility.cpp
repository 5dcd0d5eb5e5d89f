#include "batch_run.h"
#include "dravik/atomic_file.h"
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/error.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "photo_check.h"
#include "pose_detector.h"

#include <algorithm>
#include <iostream>

namespace dravik::batch {

namespace {

constexpr const char* detectorName = "MoveNet SinglePose Thunder";
constexpr const char* detectorVersion = "4 (TensorFlow.js 4.22, WebAssembly)";

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

PixelRect within(const PixelRect& rect, const PixelRect& panel) {
    double left = std::max(rect.x, panel.x);
    double top = std::max(rect.y, panel.y);
    double right = std::min(rect.maxX(), panel.maxX());
    double bottom = std::min(rect.maxY(), panel.maxY());
    return {left, top, std::max(0.0, right - left), std::max(0.0, bottom - top)};
}

} // namespace

int feasibility(const std::filesystem::path& manifestFile, const std::filesystem::path& output,
                const WorkerSetup& setup) {
    SessionManifest manifest = SessionManifest::load(manifestFile);
    const bool mayCrop = writtenByDiscovery(manifest);
    bool cropped = false;
    bool attention = false;
    PoseWorker worker(setup);
    PoseDetector detector(worker);
    ResultsFile results{detectorName, detectorVersion, {}};
    for (PairInput& pair : manifest.pairs)
        for (RiderInput& rider : pair.riders) {
            RiderResults found{pair.id, rider.id, rider.sourceHash, {}};
            try {
                auto file = ReviewStore::assetURL(rider.file, manifestFile);
                ImageInput photo = loadCheckedPhoto(file, rider.sourceHash);
                auto passes = detector.detectTwice(photo, rider.crop, photoLabel(file));
                DravikResult best = passes.refined ? *passes.refined : passes.primary;
                found.results.push_back(best);
                if (!best.usable()) {
                    attention = true;
                    std::cerr << "No single rider was found in " << photoLabel(file) << ".\n";
                } else if (mayCrop && passes.refinedCrop) {
                    PixelRect crop = within(*passes.refinedCrop, rider.panel);
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
            results.riders.push_back(std::move(found));
        }
    writeFileAtomically(output, results.encode());
    if (cropped)
        writeFileAtomically(manifestFile, manifest.encode());
    return attention ? needsAttention : success;
}

} // namespace dravik::batch
