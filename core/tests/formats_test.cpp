// SPDX-License-Identifier: Apache-2.0
#include "test_support.h"

#include "json/json_reader.h"
#include "json/json_writer.h"
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

// The JSON reader and writer, and the session manifest, results and retry files built on them.

namespace dravik {
namespace {

using json::Json;
using test::failureOf;

const json::Source source{"results.json", "results file"};

std::string nested(int depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonReader, RefusesHostileTextAndNamesTheKeyPath) {
    const std::string prefix = "“results.json” is not a valid results file: ";
    const std::pair<std::string, std::string> texts[] = {
        {"{\"a\": 1,}", "it is not well-formed JSON"},
        {"{\"a\": \"\xff\"}", "it is not well-formed JSON"},
        {"{\"a\": 1e999}", "it holds a number too large to represent"},
        {"[{\"odd key\": 1, \"odd key\": 1}]", "the key [\"odd key\"] appears twice in one object"},
        {nested(65), "it is nested more than 64 levels deep"},
        {"{\"a\":" + nested(64) + "}", "it is nested more than 64 levels deep"},
    };
    for (const auto& [text, problem] : texts) {
        const std::string message = failureOf([&] { json::parse(text, source); });
        EXPECT_TRUE(message.starts_with(prefix + problem))
            << text.substr(0, 40) << " -> " << message;
    }
    EXPECT_NO_THROW(json::parse(nested(64), source));
    // Equal keys in different objects are not duplicates.
    EXPECT_NO_THROW(json::parse(R"({"a": {"k": 1}, "b": {"k": 2}, "k": [{"k": 3}]})", source));

    Json root = json::parse(
        R"({"riders": [{}, {}, {"joints": [{"x": "12", "n": 1.5, "big": 9223372036854775808}]}]})",
        source);
    json::Node joint = json::Node(root, source)["riders"].items()[2]["joints"].items()[0];
    EXPECT_EQ(joint["n"].number(), 1.5);
    EXPECT_FALSE(joint.find("absent").has_value());
    auto header = [&](const std::string& text) {
        return [&, text] {
            Json document = json::parse(text, source);
            json::expectHeader(json::Node(document, source), "dravik-results", 1);
        };
    };
    EXPECT_EQ(failureOf(header(R"({"format": "dravik-results", "version": 1})")), "");
    EXPECT_EQ(failureOf(header(R"({"format": "dravik-results", "version": 2})")),
              "“results.json” uses version 2 of the results file format, but only version 1 can be "
              "read.");
    const std::pair<std::function<void()>, std::string> reads[] = {
        {[&] { joint["x"].number(); }, "riders[2].joints[0].x must be a finite number."},
        {[&] { joint["y"]; }, "riders[2].joints[0].y is missing."},
        {[&] { joint["n"].integer(); }, "riders[2].joints[0].n must be a whole number."},
        {[&] { joint["big"].integer(); }, "riders[2].joints[0].big is too large"},
        {header("[1]"), "the document must be a JSON object"},
    };
    for (const auto& [read, problem] : reads)
        EXPECT_TRUE(failureOf(read).starts_with(prefix + problem)) << failureOf(read);
}

TEST(JsonReader, ReadsFilesUpToTheSizeLimit) {
    test::TempDir dir;
    EXPECT_EQ(failureOf([&] { json::readFile(dir / "results.json", source); }),
              "“results.json” could not be read: no such file or directory.");

    std::string text(json::maxFileBytes, ' ');
    test::writeText(dir / "big.json", text);
    EXPECT_EQ(json::readFile(dir / "big.json", source).size(), json::maxFileBytes);
    test::writeText(dir / "big.json", text + " ");
    EXPECT_EQ(failureOf([&] { json::readFile(dir / "big.json", source); }),
              "“big.json” is too large to be a results file (over 32 MiB).");
}

TEST(JsonWriter, RefusesWhatCannotBeReadBack) {
    json::Json value = {{"frames", {{{"x", 1.0}}, {{"x", std::nan("")}}}}};
    EXPECT_EQ(failureOf([&] { json::dump(value, "review document"); }),
              "The review document cannot be written: frames[1].x is not a finite number.");
    value["frames"][1]["x"] = "\xc3";
    EXPECT_EQ(failureOf([&] { json::dump(value, "review document"); }),
              "The review document cannot be written: it holds text that is not valid UTF-8.");
}

TEST(SessionManifest, RefusesInvalidContentAndNeverWritesIt) {
    const Json valid = Json::parse(test::sampleManifest().encode());
    auto rider = [](Json& root) -> Json& { return root["pairs"][0]["riders"][1]; };
    test::expectRefusals(
        valid, [](const std::string& text) { SessionManifest::decode(text, "session.json"); },
        "“session.json” is not a valid session manifest: ",
        {
            {[](Json& r) { r["pairs"][1]["id"] = "corner-1"; },
             "pairs[1].id repeats the id of another pair"},
            {[](Json& r) { r["pairs"][1]["id"] = "a/b"; }, "pairs[1].id must not contain \"/\""},
            {[](Json& r) { r["pairs"][1]["riders"] = Json::array(); },
             "pairs[1].riders must list at least one rider"},
            {[&](Json& r) { rider(r)["role"] = "subject"; },
             "pairs[0].riders[1].role repeats the role of another rider of this pair"},
            {[&](Json& r) { rider(r)["id"] = "rider"; },
             "pairs[0].riders[1].id repeats the id of another rider of this pair"},
            {[](Json& r) { r["pairs"][0]["cornerDirection"] = "left"; },
             "pairs[0].cornerDirection must be \"Unknown\", \"Left\" or \"Right\"."},
            {[&](Json& r) { rider(r)["role"] = "coach"; },
             "pairs[0].riders[1].role must be \"subject\" or \"reference\""},
            {[&](Json& r) { rider(r)["file"] = ""; }, "pairs[0].riders[1].file must not be empty"},
            {[&](Json& r) { rider(r)["file"] = "photos/ref.jpg\n"; },
             "pairs[0].riders[1].file must not contain a control character"},
            {[&](Json& r) { rider(r)["sourceHash"] = "sha256:ABC"; },
             "pairs[0].riders[1].sourceHash must be \"sha256:\""},
            {[&](Json& r) { rider(r)["imageSize"]["width"] = 0; },
             "pairs[0].riders[1].imageSize.width must be a positive whole number"},
            {[&](Json& r) { rider(r)["panel"]["x"] = 1; },
             "pairs[0].riders[1].panel must lie inside the 1200 × 800 photo"},
        });
    // What it could not read back is never written.
    SessionManifest manifest = test::sampleManifest();
    manifest.pairs[0].riders[0].crop.width = 5000;
    EXPECT_EQ(failureOf([&] { manifest.encode(); }),
              "The session manifest cannot be written: pairs[0].riders[0].crop must lie inside "
              "the 1200 × 800 photo.");
}

TEST(ResultsFile, RoundTripsThroughAFileAndRefusesInvalidContent) {
    test::TempDir dir;
    ResultsFile results = test::sampleResults();
    results.riders[1].results[0].joints[3].x = 0.1 + 0.2; // survives bit for bit
    results.riders[1].results.push_back({"2D", "failed", 0, {}});
    // Candidates may name a vehicle listed after its rider.
    results.riders[0].results[1].candidates = {{"person", {400, 100, 200, 500}, 0.8, 2},
                                               {"person", {10, 10, 50, 120}, 0.2, std::nullopt},
                                               {"motorcycle", {380, 350, 300, 250}, 0.6, {}}};
    results.riders[0].results[1].rider = 0;
    test::writeText(dir / "results.json", results.encode());
    EXPECT_EQ(ResultsFile::load(dir / "results.json"), results);
    // Results without candidates are written as detectors before them wrote them.
    EXPECT_EQ(test::sampleResults().encode().find("candidates"), std::string::npos);

    const Json valid = Json::parse(results.encode());
    auto result = [](Json& root) -> Json& { return root["riders"][1]["results"][0]; };
    auto candidates = [](Json& root) -> Json& {
        return root["riders"][0]["results"][1]["candidates"];
    };
    test::expectRefusals(
        valid, [](const std::string& text) { ResultsFile::decode(text, "results.json"); },
        "“results.json” is not a valid results file: ",
        {
            {[](Json& r) { r["riders"][1]["riderID"] = "rider"; },
             "riders[1] repeats a rider already listed (pair “corner-1”, rider “rider”)"},
            {[&](Json& r) { result(r)["joints"][2]["name"] = "tail"; },
             "riders[1].results[0].joints[2].name is not a known joint name"},
            {[&](Json& r) { result(r)["joints"][2]["name"] = "nose"; },
             "riders[1].results[0].joints[2].name repeats a joint already listed"},
            {[&](Json& r) { result(r)["joints"][0]["confidence"] = 1.5; },
             "riders[1].results[0].joints[0].confidence must lie between 0 and 1"},
            {[&](Json& r) { result(r)["count"] = -1; },
             "riders[1].results[0].count must not be negative"},
            {[&](Json& r) { candidates(r)[2]["kind"] = "car"; },
             "riders[0].results[1].candidates[2].kind must be “person”, “bicycle” or “motorcycle”"},
            {[&](Json& r) { candidates(r)[1]["score"] = 1.5; },
             "riders[0].results[1].candidates[1].score must lie between 0 and 1"},
            {[&](Json& r) { candidates(r)[0]["riding"] = 3; },
             "riders[0].results[1].candidates[0].riding must be the position of a candidate"},
            {[&](Json& r) { candidates(r)[0]["riding"] = 1; },
             "riders[0].results[1].candidates[0].riding must be the position of a vehicle"},
            {[&](Json& r) { candidates(r)[2]["riding"] = 0; },
             "riders[0].results[1].candidates[2].riding is for people only"},
            {[&](Json& r) { r["riders"][0]["results"][1]["rider"] = 2; },
             "riders[0].results[1].rider must name a person"},
            {[&](Json& r) { result(r)["rider"] = 0; },
             "riders[1].results[0].rider must be the position of a candidate"},
        });
}

TEST(DravikResult, UsableOnlyForOneReviewableRider) {
    DravikResult result = test::poseResult("3D", {0, 0});
    EXPECT_TRUE(result.usable());
    for (const auto& change : std::vector<std::function<void(DravikResult&)>>{
             [](DravikResult& r) { r.status = "failed"; }, [](DravikResult& r) { r.count = 2; },
             [](DravikResult& r) { r.count = 0; }, [](DravikResult& r) { r.joints.clear(); }}) {
        DravikResult copy = result;
        change(copy);
        EXPECT_FALSE(copy.usable());
    }
}

TEST(RetryFiles, RoundTripAndRefuseInvalidContent) {
    test::TempDir dir;
    RetryRequest request{"/photos/corner/rider.jpg", test::hashOf("rider"), {10, 20, 300.5, 400}};
    test::writeText(dir / "request.json", request.encode());
    EXPECT_EQ(RetryRequest::load(dir / "request.json"), request);
    request.wheel = WheelAxis{{100, 380}, {160, 120.5}};
    test::writeText(dir / "request.json", request.encode());
    EXPECT_EQ(RetryRequest::load(dir / "request.json"), request);

    for (const DetectionRetry& retry :
         {DetectionRetry{test::poseResult("2D", {1, 2}), test::poseResult("2D", {3, 4})},
          DetectionRetry{std::nullopt, test::poseResult("3D", {1, 2})}, DetectionRetry{}}) {
        test::writeText(dir / "result.json", retry.encode());
        EXPECT_EQ(DetectionRetry::load(dir / "result.json"), retry);
    }

    test::expectRefusals(
        Json::parse(request.encode()),
        [](const std::string& text) { RetryRequest::decode(text, "request.json"); },
        "“request.json” is not a valid retry request: ",
        {
            {[](Json& r) { r["source"] = "rider.jpg"; }, "source must be an absolute path."},
            {[](Json& r) { r["crop"]["width"] = 0; },
             "crop must have a positive width and height."},
            {[](Json& r) { r["wheel"]["b"] = r["wheel"]["a"]; },
             "wheel must join two different points."},
            {[](Json& r) { r["wheel"].erase("b"); }, "wheel.b is missing."},
        });
}

} // namespace
} // namespace dravik
