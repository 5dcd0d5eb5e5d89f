// SPDX-License-Identifier: Apache-2.0
#include "dravik/coco_export.h"
#include "dravik/discovery.h"
#include "dravik/session_review.h"
#include "dravik/store.h"
#include "photo_fixtures.h"
#include "test_support.h"

#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;
using namespace dravik;
using Json = nlohmann::json;
using test::failureOf;
using test::readText;

namespace {

const std::vector<std::string> cocoNames{
    "nose",           "left_eye",   "right_eye",   "left_ear",   "right_ear",   "left_shoulder",
    "right_shoulder", "left_elbow", "right_elbow", "left_wrist", "right_wrist", "left_hip",
    "right_hip",      "left_knee",  "right_knee",  "left_ankle", "right_ankle"};

std::set<std::string> keysOf(const Json& object) {
    std::set<std::string> keys;
    for (const auto& item : object.items())
        keys.insert(item.key());
    return keys;
}

// The COCO person-keypoints layout, strictly: the keys each object has, how ids refer to each
// other, 17 (x, y, v) triples with labelled ones inside the photo, and counts and areas that
// agree with what they count. The values of single points are the cases' to check.
void expectCocoLayout(const Json& coco, std::size_t categories) {
    ASSERT_EQ(keysOf(coco),
              (std::set<std::string>{"info", "licenses", "images", "annotations", "categories"}));
    ASSERT_EQ(coco["categories"].size(), categories);
    std::set<int> categoryIDs;
    for (const Json& category : coco["categories"]) {
        EXPECT_EQ(keysOf(category),
                  (std::set<std::string>{"id", "name", "supercategory", "keypoints", "skeleton"}));
        EXPECT_TRUE(categoryIDs.insert(category["id"].get<int>()).second);
        EXPECT_EQ(category["supercategory"], "person");
        EXPECT_EQ(category["keypoints"].get<std::vector<std::string>>(), cocoNames);
        EXPECT_EQ(category["skeleton"], Json::parse("[[16,14],[14,12],[17,15],[15,13],[12,13],"
                                                    "[6,12],[7,13],[6,7],[6,8],[7,9],[8,10],"
                                                    "[9,11],[2,3],[1,2],[1,3],[2,4],[3,5],[4,6],"
                                                    "[5,7]]"));
    }
    std::map<int, const Json*> images;
    for (const Json& image : coco["images"]) {
        EXPECT_EQ(keysOf(image), (std::set<std::string>{"id", "file_name", "width", "height",
                                                        "frame_id", "source_hash"}));
        EXPECT_TRUE(images.emplace(image["id"].get<int>(), &image).second);
    }
    std::set<int> annotationIDs;
    for (const Json& annotation : coco["annotations"]) {
        EXPECT_EQ(keysOf(annotation),
                  (std::set<std::string>{"id", "image_id", "category_id", "iscrowd", "keypoints",
                                         "num_keypoints", "bbox", "area", "extra_keypoints"}));
        EXPECT_TRUE(annotationIDs.insert(annotation["id"].get<int>()).second);
        EXPECT_TRUE(categoryIDs.contains(annotation["category_id"].get<int>()));
        ASSERT_TRUE(images.contains(annotation["image_id"].get<int>()));
        const Json& image = *images[annotation["image_id"].get<int>()];
        const double width = image["width"], height = image["height"];
        EXPECT_EQ(annotation["iscrowd"], 0);
        auto expectTriples = [&](const Json& values, std::size_t count) {
            int labelled = 0;
            EXPECT_EQ(values.size(), 3 * count);
            if (values.size() != 3 * count)
                return labelled;
            for (std::size_t i = 0; i < values.size(); i += 3) {
                const double x = values[i], y = values[i + 1];
                const bool unlabelled = values[i + 2] == 0;
                EXPECT_TRUE(unlabelled || (x >= 0 && x <= width && y >= 0 && y <= height));
                labelled += !unlabelled;
            }
            return labelled;
        };
        EXPECT_EQ(annotation["num_keypoints"], expectTriples(annotation["keypoints"], 17));
        EXPECT_EQ(keysOf(annotation["extra_keypoints"]), (std::set<std::string>{"neck", "pelvis"}));
        for (const auto& extra : annotation["extra_keypoints"])
            expectTriples(extra, 1);
        const auto bbox = annotation["bbox"].get<std::vector<double>>();
        ASSERT_EQ(bbox.size(), 4u);
        EXPECT_TRUE(bbox[0] >= 0 && bbox[1] >= 0 && bbox[0] + bbox[2] <= width &&
                    bbox[1] + bbox[3] <= height);
        EXPECT_DOUBLE_EQ(annotation["area"].get<double>(), bbox[2] * bbox[3]);
    }
}

// (x, y, v) of a joint in an annotation, neck and pelvis included.
std::vector<double> keypoint(const Json& annotation, const std::string& joint) {
    if (joint == "neck" || joint == "pelvis")
        return annotation["extra_keypoints"][joint].get<std::vector<double>>();
    const auto at =
        3 * std::size_t(std::find(cocoNames.begin(), cocoNames.end(), joint) - cocoNames.begin());
    const auto& values = annotation["keypoints"];
    return {values[at].get<double>(), values[at + 1].get<double>(), values[at + 2].get<double>()};
}

struct SampleExport : testing::Test {
    test::TempDir folder;
    fs::path manifest = folder / "session.json";
    fs::path results = folder / "results.json";
    fs::path output = folder / "coco.json";

    void SetUp() override {
        fs::copy(fs::path(TESSARY_SOURCE_DIR) / "data/sample-session", folder.path(),
                 fs::copy_options::recursive);
    }

    Json exported(const CocoExportOptions& options) {
        const SessionReview review = SessionReview::open(manifest, results);
        CocoExport::write(review.document, manifest, results, output, options);
        return Json::parse(readText(output));
    }
};

} // namespace

TEST_F(SampleExport, ReviewedJointsAreExportedWithTheirVisibility) {
    SessionReview review = SessionReview::open(manifest, results);
    ReviewDocument& document = review.document;
    document.setJoint(0, "left_elbow", Point2{850.5, 402}, JointReviewState::corrected);
    document.setJoint(0, "nose", Point2{925, 264.5}, JointReviewState::confirmedVisible);
    document.setJoint(0, "left_knee", std::nullopt, JointReviewState::obscured);
    document.setJoint(0, "right_wrist", Point2{700, 380}, JointReviewState::uncertain);
    document.setJoint(0, "neck", Point2{860, 300}, JointReviewState::corrected);
    document.setJoint(2, "pelvis", Point2{500, 400}, JointReviewState::uncertain);
    ReviewStore::save(document, review.file, std::nullopt);

    const Json coco = exported({});
    expectCocoLayout(coco, 1);
    ASSERT_EQ(coco["images"].size(), 2u) << "the unreviewed reference photo is left out";
    EXPECT_EQ(coco["images"][0]["file_name"], "turn-3-alex.jpg");
    EXPECT_EQ(coco["images"][1]["frame_id"], "turn-5/alex");
    const Json& alex = coco["annotations"][0];
    EXPECT_EQ(keypoint(alex, "left_elbow"), (std::vector<double>{850.5, 402, 2}));
    EXPECT_EQ(keypoint(alex, "nose"), (std::vector<double>{925, 264.5, 2}));
    EXPECT_EQ(keypoint(alex, "right_wrist"), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(keypoint(alex, "left_knee"), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(keypoint(alex, "left_eye"), (std::vector<double>{0, 0, 0})) << "detected only";
    EXPECT_EQ(keypoint(alex, "neck"), (std::vector<double>{860, 300, 2}));
    EXPECT_EQ(alex["num_keypoints"], 2);
    const PixelRect crop = document.frames()[0].crop;
    EXPECT_EQ(alex["bbox"], Json({crop.x, crop.y, crop.width, crop.height}));
    EXPECT_EQ(coco["annotations"][1]["num_keypoints"], 0);

    const Json occluded = exported({.uncertainAsOccluded = true});
    EXPECT_EQ(keypoint(occluded["annotations"][0], "right_wrist"),
              (std::vector<double>{700, 380, 1}));
    EXPECT_EQ(occluded["annotations"][0]["num_keypoints"], 3);
    EXPECT_EQ(keypoint(occluded["annotations"][1], "pelvis"), (std::vector<double>{500, 400, 1}));

    // The detector's points of every photo, in a category of their own.
    const Json all = exported({.includeUnreviewed = true});
    expectCocoLayout(all, 2);
    EXPECT_EQ(all["categories"][1]["name"], "person (unreviewed detection)");
    ASSERT_EQ(all["images"].size(), 3u);
    ASSERT_EQ(all["annotations"].size(), 5u);
    const Json& sam = all["annotations"][2];
    EXPECT_EQ(sam["category_id"], 2);
    const auto seed = *document.frames()[1].seedPoint("left_elbow", "3D");
    EXPECT_EQ(keypoint(sam, "left_elbow"), (std::vector<double>{seed.x, seed.y, 2}));

    // Same review, same bytes.
    const std::string first = readText(output);
    exported({.includeUnreviewed = true});
    EXPECT_EQ(readText(output), first);
}

TEST_F(SampleExport, SessionFilesAndChangedPhotosAreRefusedWritingNothing) {
    const SessionReview review = SessionReview::open(manifest, results);
    ReviewDocument document = review.document;
    document.setJoint(1, "nose", Point2{900, 250}, JointReviewState::corrected);
    for (const fs::path& target : {manifest, results, folder / "joint-review-000000000000.json",
                                   folder / "lean-proposals.json", folder / "turn-3-sam.jpg",
                                   folder / "../" / folder.path().filename() / "./results.json"}) {
        const std::string before = fs::exists(target) ? readText(target) : "";
        EXPECT_EQ(
            failureOf([&] { CocoExport::write(document, manifest, results, target, {}); }),
            "“" + target.filename().string() +
                "” is a file of the session, so it was not overwritten; choose another file.");
        EXPECT_EQ(fs::exists(target) ? readText(target) : "", before);
    }

    fs::copy_file(folder / "turn-5-alex.jpg", folder / "turn-3-sam.jpg",
                  fs::copy_options::overwrite_existing);
    EXPECT_EQ(failureOf([&] { CocoExport::write(document, manifest, results, output, {}); }),
              "The photo “turn-3-sam.jpg” has changed since the session was analysed, so its "
              "joints were not exported.");
    EXPECT_FALSE(fs::exists(output));
}

// A photo taken with the camera on its side: the exported size and points are those of the
// photo as shown, which is what the detector and the reviewer worked in.
TEST(CocoExportTest, EXIFRotatedPhotoIsExportedInOrientedPixels) {
    using namespace photo_fixtures;
    test::TempDir data;
    test::writeText(data / "ride" / "sideways.jpg",
                    encodeJpeg(storedFor(gradient(40, 60), 6), {.orientation = 6}));
    auto analyze = [](const fs::path& manifest, const fs::path& results) {
        const SessionManifest session = SessionManifest::load(manifest);
        const RiderInput& rider = session.pairs[0].riders[0];
        ResultsFile file{"test-detector", "1", {}};
        file.riders.push_back({session.pairs[0].id,
                               rider.id,
                               rider.sourceHash,
                               {DravikResult{"2D", "needsReview", 1, {{"nose", 12, 50, 0.9}}}}});
        test::writeText(results, file.encode());
    };
    const auto report = SessionDiscovery::run(
        data.path(), {}, [](const std::string&) {}, analyze);
    ASSERT_EQ(report.sessions.size(), 1u);
    const fs::path manifest = report.sessions[0].manifest;
    const fs::path results = report.sessions[0].results;

    SessionReview review = SessionReview::open(manifest, results);
    review.document.setJoint(0, "left_ankle", Point2{30, 55}, JointReviewState::corrected);
    review.document.setJoint(0, "nose", Point2{12, 50}, JointReviewState::confirmedVisible);
    const fs::path output = data / "exports" / "coco.json";
    fs::create_directories(output.parent_path());
    CocoExport::write(review.document, manifest, results, output, {});

    const Json coco = Json::parse(readText(output));
    expectCocoLayout(coco, 1);
    EXPECT_EQ(coco["images"][0]["file_name"], "../ride/sideways.jpg");
    EXPECT_EQ(coco["images"][0]["width"], 40);
    EXPECT_EQ(coco["images"][0]["height"], 60);
    EXPECT_EQ(keypoint(coco["annotations"][0], "left_ankle"), (std::vector<double>{30, 55, 2}));
    EXPECT_EQ(keypoint(coco["annotations"][0], "nose"), (std::vector<double>{12, 50, 2}));
}
