// SPDX-License-Identifier: Apache-2.0
#include "companions.h"
#include "dravik/detection.h"
#include "dravik/error.h"
#include "dravik/joints.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "hash/sha256.h"
#include "jpeg_writer.h"
#include "samplegen.h"
#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace tessary::samplegen {

namespace {

struct Shot {
    std::string pairID;
    std::string pairTitle;
    std::string riderID;
    std::string role;
    std::string displayName;
    std::string file;
    PhotoScene scene;
};

double tenth(double v) {
    return std::round(v * 10) / 10;
}
double hundredth(double v) {
    return std::round(v * 100) / 100;
}

void writeFile(const std::filesystem::path& file, const void* data, std::size_t size) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    out.close();
    if (!out)
        throw dravik::DravikError("Could not write “" + file.filename().string() + "”.");
}

std::vector<Shot> bundledShots(Random& random) {
    CornerLook turn3 = randomCorner(random);
    turn3.turn = 1; // the missing and doubtful joints below are on this corner's far side
    turn3.fromOutside = true;
    CornerLook turn5 = randomCorner(random);
    turn5.turn = -1;
    RiderLook alex = randomRider(random);
    RiderLook sam = randomRider(random);
    // Alex tucks in with bent elbows; Sam sits up with longer arms: a difference worth coaching.
    alex.style.crouch = 0.9;
    alex.style.elbowDrop = 0.8;
    sam.style.crouch = 0.3;
    sam.style.elbowDrop = 0.3;
    return {
        {"turn-3", "Turn 3", "alex", "subject", "Alex", "turn-3-alex.jpg",
         randomMoment(turn3, alex, random)},
        {"turn-3", "Turn 3", "sam", "reference", "Sam", "turn-3-sam.jpg",
         randomMoment(turn3, sam, random)},
        {"turn-5", "Turn 5", "alex", "subject", "Alex", "turn-5-alex.jpg",
         randomMoment(turn5, alex, random)},
    };
}

// What a coach would say from the turn-3 photos alone; the styles above make it true.
void addPhotoCoaching(dravik::PairInput& pair) {
    pair.cornerDirection = dravik::CornerDirection::left;
    pair.photoCoaching = {
        {"elbows-bent", "Elbows bent and low",
         "Alex's arms are bent with the elbows dropped, while Sam's are longer and straighter. "
         "Bent arms let the bars move freely; a single photo cannot show whether Alex is also "
         "steering through them.",
         dravik::PairFeature::insideElbow},
        {"upper-body-low", "Upper body tucked low",
         "Alex's chest is closer to the tank than Sam's in these photos. A still frame shows one "
         "moment of the corner, so compare more photos before changing the body position.",
         std::nullopt},
    };
}

std::vector<Shot> largeShots(Random& random, int photos) {
    std::vector<Shot> shots;
    for (int i = 1; i <= photos; ++i) {
        char id[32];
        std::snprintf(id, sizeof id, "photo-%03d", i);
        Random own = random.fork(static_cast<std::uint64_t>(i));
        const CornerLook corner = randomCorner(own);
        const RiderLook rider = randomRider(own);
        shots.push_back({id, "Photo " + std::to_string(i), "rider", "subject", "Rider",
                         std::string(id) + ".jpg", randomMoment(corner, rider, own)});
    }
    return shots;
}

// A detector's answer: the drawn joints moved by noise, less sure of what is behind the bike.
dravik::DravikResult detection(const RenderedPhoto& photo, const std::string& kind, double sigma,
                               Random& random) {
    const auto& names = dravik::InspectionRenderer::jointNames();
    const double biasX = random.gaussian() * sigma * 0.3, biasY = random.gaussian() * sigma * 0.3;
    dravik::DravikResult result{kind, "needsReview", 1, {}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const dravik::Point2 p = photo.joints[i];
        const double x =
            std::clamp(p.x + biasX + random.gaussian() * sigma, 0.0, photo.width - 1.0);
        const double y =
            std::clamp(p.y + biasY + random.gaussian() * sigma, 0.0, photo.height - 1.0);
        const double confidence =
            photo.farSide[i] ? random.uniform(0.5, 0.78) : random.uniform(0.78, 0.99);
        result.joints.push_back({names[i], tenth(x), tenth(y), hundredth(confidence)});
    }
    return result;
}

dravik::PixelRect panelFor(dravik::ImageSize size, bool whole) {
    if (whole)
        return {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    // About 60 % of the area, centred, so that decoding only the panel pays off.
    const double w = std::round(size.width * std::sqrt(0.6));
    const double h = std::round(size.height * std::sqrt(0.6));
    return {std::floor((size.width - w) / 2), std::floor((size.height - h) / 2), w, h};
}

dravik::PixelRect cropFor(const dravik::PixelRect& box, const dravik::PixelRect& panel) {
    const double margin = 0.15 * std::max(box.width, box.height);
    const double x0 = std::max(panel.x, std::floor(box.x - margin));
    const double y0 = std::max(panel.y, std::floor(box.y - margin));
    const double x1 = std::min(panel.maxX(), std::ceil(box.maxX() + margin));
    const double y1 = std::min(panel.maxY(), std::ceil(box.maxY() + margin));
    return {x0, y0, x1 - x0, y1 - y0};
}

void removeJoint(dravik::DravikResult& result, std::string_view joint) {
    std::erase_if(result.joints, [&](const dravik::JointResult& j) { return j.name == joint; });
}

void setConfidence(dravik::DravikResult& result, std::string_view joint, double confidence) {
    for (auto& j : result.joints)
        if (j.name == joint)
            j.confidence = confidence;
}

} // namespace

dravik::ImageSize photoSize(double megapixels) {
    const double width = std::sqrt(megapixels * 1e6 * 1.5);
    const int w = std::max(2, static_cast<int>(std::lround(width / 2)) * 2);
    return {w, std::max(2, static_cast<int>(std::lround(w / 1.5)))};
}

void writeSession(const std::filesystem::path& folder, const Options& options) {
    if (!options.bundled &&
        (options.photos < 1 || !(options.megapixels > 0.01) || options.megapixels > 200))
        throw dravik::DravikError("The session for “" + folder.filename().string() +
                                  "” needs at least one photo of 0.01 to 200 megapixels.");
    std::filesystem::create_directories(folder);
    Random random(options.seed);
    Random scenes = random.fork(1);
    Random noise = random.fork(2);
    const std::vector<Shot> shots =
        options.bundled ? bundledShots(scenes) : largeShots(scenes, options.photos);
    const dravik::ImageSize size =
        options.bundled ? dravik::ImageSize{1200, 800} : photoSize(options.megapixels);

    dravik::SessionManifest manifest;
    manifest.title = options.bundled
                         ? "Sample session"
                         : "Generated session · " + std::to_string(shots.size()) + " photos";
    dravik::ResultsFile results{"synthetic", "1", {}};
    std::map<std::string, WheelAxis> wheels;
    for (const Shot& shot : shots) {
        const RenderedPhoto photo = renderPhoto(shot.scene, size.width, size.height);
        const std::vector<std::uint8_t> jpeg =
            encodeJpeg(photo.rgb, photo.width, photo.height, options.jpegQuality);
        writeFile(folder / shot.file, jpeg.data(), jpeg.size());
        const std::string hash = dravik::sha256Text(jpeg.data(), jpeg.size());

        const dravik::PixelRect panel = panelFor(size, options.bundled);
        dravik::RiderInput rider{shot.riderID,
                                 shot.role,
                                 shot.displayName,
                                 shot.file,
                                 hash,
                                 size,
                                 panel,
                                 cropFor(photo.riderBox, panel)};
        if (manifest.pairs.empty() || manifest.pairs.back().id != shot.pairID)
            manifest.pairs.push_back({shot.pairID, shot.pairTitle, {}});
        manifest.pairs.back().riders.push_back(std::move(rider));

        const double pixelSigma = 0.003 * size.height;
        dravik::RiderResults found{shot.pairID, shot.riderID, hash, {}};
        found.results.push_back(detection(photo, "3D", pixelSigma, noise));
        found.results.push_back(detection(photo, "2D", pixelSigma * 1.4, noise));
        const std::string frameID = shot.pairID + "/" + shot.riderID;
        wheels[frameID] = {photo.wheelContact, photo.wheelTop};
        for (auto& result : found.results) {
            if (options.bundled && frameID == bundledMissingFrame &&
                result.kind == bundledMissingKind)
                removeJoint(result, bundledMissingJoint);
            if (options.bundled && frameID == bundledDoubtfulFrame &&
                result.kind == bundledDoubtfulKind)
                setConfidence(result, bundledDoubtfulJoint, bundledDoubtfulConfidence);
        }
        results.riders.push_back(std::move(found));
    }
    if (options.bundled)
        addPhotoCoaching(manifest.pairs.front());
    const std::string manifestText = manifest.encode();
    writeFile(folder / "session.json", manifestText.data(), manifestText.size());
    const std::string resultsText = results.encode();
    writeFile(folder / "results.json", resultsText.data(), resultsText.size());
    if (!options.bundled)
        return;
    const dravik::ReviewDocument raw =
        dravik::ReviewStore::make(folder / "session.json", folder / "results.json");
    for (const CompanionFile& file : bundledCompanions(raw, wheels))
        writeFile(folder / file.name, file.text.data(), file.text.size());
}

} // namespace tessary::samplegen
