// SPDX-License-Identifier: Apache-2.0
#include "dravik/coco_export.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/joints.h"
#include "dravik/session_files.h"
#include "dravik/store.h"
#include "session/resolved_path.h"

#include "json/json_writer.h"
#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace dravik {

namespace fs = std::filesystem;

namespace {

using json::Json;

constexpr std::size_t cocoKeypoints = 17; // the first 17 joints are COCO's, in COCO's order
constexpr int reviewedCategory = 1;
constexpr int unreviewedCategory = 2;
// The detection the window shows first; a detector of another kind still seeds it.
constexpr std::string_view shownKind = "3D";

// COCO's person skeleton, keypoints numbered from 1.
constexpr std::pair<int, int> cocoSkeleton[] = {
    {16, 14}, {14, 12}, {17, 15}, {15, 13}, {12, 13}, {6, 12}, {7, 13}, {6, 7}, {6, 8}, {7, 9},
    {8, 10},  {9, 11},  {2, 3},   {1, 2},   {1, 3},   {2, 4},  {3, 5},  {4, 6}, {5, 7}};

struct Keypoint {
    Point2 point;
    int visibility = 0; // COCO's v: 0 not labelled, 1 labelled but not visible, 2 visible
};

Keypoint reviewedKeypoint(const ReviewFrame& frame, const std::string& joint,
                          const CocoExportOptions& options) {
    auto edit = frame.edits.find(joint);
    if (edit == frame.edits.end() || !edit->second.point)
        return {};
    switch (edit->second.state) {
    case JointReviewState::corrected:
    case JointReviewState::confirmedVisible:
        return {*edit->second.point, 2};
    case JointReviewState::uncertain:
        return options.uncertainAsOccluded ? Keypoint{*edit->second.point, 1} : Keypoint{};
    case JointReviewState::obscured:
        break;
    }
    return {};
}

Keypoint detectedKeypoint(const ReviewFrame& frame, const std::string& joint) {
    auto point = frame.seedPoint(joint, shownKind);
    return point ? Keypoint{*point, 2} : Keypoint{};
}

// COCO writes a keypoint that is not labelled as 0, 0, 0.
void append(Json& list, const Keypoint& keypoint) {
    if (keypoint.visibility == 0) {
        list.insert(list.end(), {0, 0, 0});
        return;
    }
    list.insert(list.end(), {keypoint.point.x, keypoint.point.y, keypoint.visibility});
}

Json category(int id, std::string_view name) {
    const auto& joints = InspectionRenderer::jointNames();
    Json skeleton = Json::array();
    for (auto [a, b] : cocoSkeleton)
        skeleton.push_back(Json::array({a, b}));
    return Json{{"id", id},
                {"name", name},
                {"supercategory", "person"},
                {"keypoints",
                 Json(std::vector<std::string>(joints.begin(), joints.begin() + cocoKeypoints))},
                {"skeleton", std::move(skeleton)}};
}

template <class KeypointOf>
Json annotation(std::size_t id, std::size_t imageID, int categoryID, const ReviewFrame& frame,
                KeypointOf keypointOf, std::size_t& labelled) {
    const auto& joints = InspectionRenderer::jointNames();
    Json keypoints = Json::array();
    labelled = 0;
    for (std::size_t i = 0; i < cocoKeypoints; ++i) {
        const Keypoint keypoint = keypointOf(joints[i]);
        append(keypoints, keypoint);
        labelled += keypoint.visibility > 0;
    }
    // neck and pelvis are no COCO keypoints: they ride along outside the 17.
    Json extra = Json::object();
    for (std::size_t i = cocoKeypoints; i < joints.size(); ++i) {
        Json triple = Json::array();
        append(triple, keypointOf(joints[i]));
        extra[joints[i]] = std::move(triple);
    }
    const PixelRect& crop = frame.crop;
    return Json{{"id", id},
                {"image_id", imageID},
                {"category_id", categoryID},
                {"iscrowd", 0},
                {"keypoints", std::move(keypoints)},
                {"num_keypoints", labelled},
                {"bbox", Json::array({crop.x, crop.y, crop.width, crop.height})},
                {"area", crop.width * crop.height},
                {"extra_keypoints", std::move(extra)}};
}

// The photo as it is now must be the one the joints were placed on.
ImageSize checkedSize(const ReviewFrame& frame, const fs::path& photo, const fs::path& manifest) {
    const ImageInput input = ImageInput::load(photo);
    const std::string name = json::quoted(json::fileLabel(photo));
    if (input.sourceHash() != frame.sourceHash)
        throw DravikError("The photo " + name +
                          " has changed since the session was analysed, so its joints were not "
                          "exported.");
    if (input.size() != frame.imageSize)
        throw DravikError(json::quoted(json::fileLabel(manifest)) + " gives the photo " + name +
                          " another size than it has, so its joints were not exported.");
    return input.size();
}

// Relative to the export file's folder, so that the two can move together; absolute when the
// only folder they share is the root.
std::string nameFrom(const fs::path& photo, const fs::path& output) {
    const fs::path target = resolvedPath(photo);
    const fs::path folder = resolvedPath(fs::absolute(output).parent_path());
    auto shared = std::mismatch(target.begin(), target.end(), folder.begin(), folder.end());
    if (std::distance(target.begin(), shared.first) <= 1)
        return target.generic_string();
    return target.lexically_relative(folder).generic_string();
}

} // namespace

CocoExport CocoExport::make(const ReviewDocument& document, const fs::path& manifest,
                            const fs::path& output, const CocoExportOptions& options) {
    CocoExport result;
    Json images = Json::array();
    Json annotations = Json::array();
    for (const ReviewFrame& frame : document.frames()) {
        const bool reviewed = !frame.edits.empty();
        bool detected = false;
        if (options.includeUnreviewed)
            for (const std::string& joint : InspectionRenderer::jointNames())
                detected = detected || frame.seedPoint(joint, shownKind).has_value();
        if (!reviewed && !detected)
            continue;
        const fs::path photo = ReviewStore::assetURL(frame.file, manifest);
        const ImageSize size = checkedSize(frame, photo, manifest);
        const std::size_t imageID = images.size() + 1;
        images.push_back(Json{{"id", imageID},
                              {"file_name", nameFrom(photo, output)},
                              {"width", size.width},
                              {"height", size.height},
                              {"frame_id", frame.id},
                              {"source_hash", frame.sourceHash}});
        std::size_t labelled = 0;
        if (reviewed) {
            annotations.push_back(annotation(
                annotations.size() + 1, imageID, reviewedCategory, frame,
                [&](const std::string& joint) { return reviewedKeypoint(frame, joint, options); },
                labelled));
            ++result.annotations;
            result.keypoints += labelled;
        }
        if (detected)
            annotations.push_back(annotation(
                annotations.size() + 1, imageID, unreviewedCategory, frame,
                [&](const std::string& joint) { return detectedKeypoint(frame, joint); },
                labelled));
    }
    result.images = images.size();

    Json categories = Json::array({category(reviewedCategory, "person")});
    if (options.includeUnreviewed)
        categories.push_back(category(unreviewedCategory, "person (unreviewed detection)"));
    const Json root{{"info",
                     {{"description", "Reviewed rider joints"},
                      {"review_identity", document.identity()},
                      {"review_revision", document.revision()}}},
                    {"licenses", Json::array()},
                    {"images", std::move(images)},
                    {"annotations", std::move(annotations)},
                    {"categories", std::move(categories)}};
    result.text = json::dump(root, "COCO keypoint file", json::Layout::compact) + "\n";
    return result;
}

CocoExport CocoExport::write(const ReviewDocument& document, const fs::path& manifest,
                             const fs::path& results, const fs::path& output,
                             const CocoExportOptions& options) {
    SessionFiles::refuseAsTarget(output, manifest, results, document);
    CocoExport result = make(document, manifest, output, options);
    writeFileAtomically(output, result.text);
    return result;
}

} // namespace dravik
