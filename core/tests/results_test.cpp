#include "test_support.h"

#include "json/json_reader.h"
#include <functional>
#include <gtest/gtest.h>

namespace dravik {
namespace {

using json::Json;

template <class Decode> std::string failureOf(Decode decode) {
    try {
        decode();
    } catch (const DravikError& error) {
        return error.what();
    }
    return "(no failure)";
}

TEST(ResultsFile, RoundTripsThroughAFile) {
    test::TempDir dir;
    ResultsFile results = test::sampleResults();
    results.riders[1].results[0].joints[3].x = 0.1 + 0.2;
    results.riders[1].results.push_back({"2D", "failed", 0, {}});
    test::writeText(dir / "results.json", results.encode());
    EXPECT_EQ(ResultsFile::load(dir / "results.json"), results);
}

TEST(ResultsFile, RefusesInvalidContent) {
    const Json valid = Json::parse(test::sampleResults().encode());
    struct Case {
        std::function<void(Json&)> change;
        std::string problem;
    };
    auto result = [](Json& root) -> Json& { return root["riders"][1]["results"][0]; };
    const Case cases[] = {
        {[](Json& r) { r["riders"][1]["riderID"] = "rider"; },
         "riders[1] repeats a rider already listed (pair “corner-1”, rider “rider”)"},
        {[](Json& r) { r["riders"][0].erase("sourceHash"); }, "riders[0].sourceHash is missing"},
        {[](Json& r) { r["riders"][0]["pairID"] = ""; }, "riders[0].pairID must not be empty"},
        {[&](Json& r) { result(r)["joints"][2]["name"] = "tail"; },
         "riders[1].results[0].joints[2].name is not a known joint name"},
        {[&](Json& r) { result(r)["joints"][2]["name"] = "nose"; },
         "riders[1].results[0].joints[2].name repeats a joint already listed"},
        {[&](Json& r) { result(r)["joints"][0]["confidence"] = 1.5; },
         "riders[1].results[0].joints[0].confidence must lie between 0 and 1"},
        {[&](Json& r) { result(r)["joints"][0]["y"] = nullptr; },
         "riders[1].results[0].joints[0].y is missing"},
        {[&](Json& r) { result(r)["count"] = -1; },
         "riders[1].results[0].count must not be negative"},
        {[&](Json& r) { result(r)["kind"] = ""; }, "riders[1].results[0].kind must not be empty"},
    };
    for (const Case& c : cases) {
        Json changed = valid;
        c.change(changed);
        std::string message =
            failureOf([&] { ResultsFile::decode(changed.dump(), "results.json"); });
        EXPECT_EQ(message.rfind("“results.json” is not a valid results file: " + c.problem, 0), 0u)
            << c.problem << "\n  got: " << message;
    }
    // A number that overflows to infinity never reaches the reader as a value.
    std::string text = valid.dump();
    text.replace(text.find("\"x\":400.0"), 9, "\"x\":1e999");
    EXPECT_NE(failureOf([&] { ResultsFile::decode(text, "results.json"); }).find("too large"),
              std::string::npos);
}

TEST(DravikResult, UsableOnlyForOneReviewableRider) {
    DravikResult result = test::poseResult("3D", {0, 0});
    EXPECT_TRUE(result.usable());
    EXPECT_EQ(result.point("left_elbow"), (Point2{70, 35}));
    auto changed = [&](auto change) {
        DravikResult copy = result;
        change(copy);
        return copy.usable();
    };
    EXPECT_FALSE(changed([](DravikResult& r) { r.status = "failed"; }));
    EXPECT_FALSE(changed([](DravikResult& r) { r.count = 2; }));
    EXPECT_FALSE(changed([](DravikResult& r) { r.count = 0; }));
    EXPECT_FALSE(changed([](DravikResult& r) { r.joints.clear(); }));
    result.joints.erase(result.joints.begin());
    EXPECT_EQ(result.point("nose"), std::nullopt);
}

TEST(RetryFiles, RoundTripAndRefuseInvalidContent) {
    test::TempDir dir;
    RetryRequest request{"/photos/corner/rider.jpg", test::hashOf("rider"), {10, 20, 300.5, 400}};
    test::writeText(dir / "request.json", request.encode());
    EXPECT_EQ(RetryRequest::load(dir / "request.json"), request);
    EXPECT_EQ(request.encode().find('\n'), std::string::npos);

    for (const DetectionRetry& retry :
         {DetectionRetry{test::poseResult("2D", {1, 2}), test::poseResult("2D", {3, 4})},
          DetectionRetry{std::nullopt, test::poseResult("3D", {1, 2})}, DetectionRetry{}}) {
        test::writeText(dir / "result.json", retry.encode());
        EXPECT_EQ(DetectionRetry::load(dir / "result.json"), retry);
    }

    auto requestFailure = [&](std::function<void(Json&)> change) {
        Json root = Json::parse(request.encode());
        change(root);
        return failureOf([&] { RetryRequest::decode(root.dump(), "request.json"); });
    };
    EXPECT_EQ(requestFailure([](Json& r) { r["source"] = "rider.jpg"; }),
              "“request.json” is not a valid retry request: source must be an absolute path.");
    EXPECT_EQ(requestFailure([](Json& r) { r["crop"]["width"] = 0; }),
              "“request.json” is not a valid retry request: crop must have a positive width and "
              "height.");
    EXPECT_EQ(requestFailure([](Json& r) { r["format"] = "dravik-detection-retry"; }),
              "“request.json” is not a valid retry request: the document must have \"format\": "
              "\"dravik-retry-request\".");
    EXPECT_NE(failureOf([&] {
                  DetectionRetry::decode(R"({"format":"dravik-detection-retry","version":1,)"
                                         R"("primary":{"kind":"2D"}})",
                                         "result.json");
              }).find("primary.status is missing"),
              std::string::npos);
    EXPECT_EQ(failureOf([&] { DetectionRetry::load(dir / "missing.json"); }),
              "“missing.json” could not be read: no such file or directory.");
}

} // namespace
} // namespace dravik
