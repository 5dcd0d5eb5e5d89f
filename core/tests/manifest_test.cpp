#include "test_support.h"

#include "json/json_reader.h"
#include <functional>
#include <gtest/gtest.h>

namespace dravik {
namespace {

using json::Json;

std::string decodeFailure(const Json& root) {
    try {
        SessionManifest::decode(root.dump(), "session.json");
    } catch (const DravikError& error) {
        return error.what();
    }
    return "(no failure)";
}

TEST(SessionManifest, RoundTripsThroughAFile) {
    test::TempDir dir;
    SessionManifest manifest = test::sampleManifest();
    manifest.pairs[0].riders[1].panel = {12.25, 0.5, 1000.125, 799.5};
    test::writeText(dir / "session.json", manifest.encode());
    EXPECT_EQ(SessionManifest::load(dir / "session.json"), manifest);
}

TEST(SessionManifest, RefusesInvalidContent) {
    const Json valid = Json::parse(test::sampleManifest().encode());
    struct Case {
        std::function<void(Json&)> change;
        std::string problem;
    };
    auto rider = [](Json& root) -> Json& { return root["pairs"][0]["riders"][1]; };
    const Case cases[] = {
        {[](Json& r) { r.erase("title"); }, "title is missing"},
        {[](Json& r) { r["pairs"] = Json::object(); }, "pairs must be an array"},
        {[](Json& r) { r["pairs"][1]["id"] = "corner-1"; },
         "pairs[1].id repeats the id of another pair"},
        {[](Json& r) { r["pairs"][1]["id"] = "a/b"; }, "pairs[1].id must not contain \"/\""},
        {[](Json& r) { r["pairs"][1]["riders"] = Json::array(); },
         "pairs[1].riders must list at least one rider"},
        {[&](Json& r) { rider(r)["role"] = "subject"; },
         "pairs[0].riders[1].role repeats the role of another rider of this pair"},
        {[&](Json& r) { rider(r)["id"] = "rider"; },
         "pairs[0].riders[1].id repeats the id of another rider of this pair"},
        {[&](Json& r) { rider(r)["role"] = "coach"; },
         "pairs[0].riders[1].role must be \"subject\" or \"reference\""},
        {[&](Json& r) { rider(r)["file"] = ""; }, "pairs[0].riders[1].file must not be empty"},
        {[&](Json& r) { rider(r)["sourceHash"] = "sha256:ABC"; },
         "pairs[0].riders[1].sourceHash must be \"sha256:\""},
        {[&](Json& r) { rider(r)["imageSize"]["width"] = 0; },
         "pairs[0].riders[1].imageSize.width must be a positive whole number"},
        {[&](Json& r) { rider(r)["imageSize"]["height"] = 800.5; },
         "pairs[0].riders[1].imageSize.height must be a whole number"},
        {[&](Json& r) { rider(r)["panel"]["width"] = -1; },
         "pairs[0].riders[1].panel.width must not be negative"},
        {[&](Json& r) { rider(r)["panel"]["x"] = 1; },
         "pairs[0].riders[1].panel must lie inside the 1200 × 800 photo"},
        {[&](Json& r) { rider(r)["crop"]["y"] = -0.5; }, "pairs[0].riders[1].crop must lie inside"},
        {[&](Json& r) { rider(r)["crop"]["x"] = "300"; },
         "pairs[0].riders[1].crop.x must be a finite number"},
        {[&](Json& r) { rider(r).erase("displayName"); },
         "pairs[0].riders[1].displayName is missing"},
    };
    for (const Case& c : cases) {
        Json changed = valid;
        c.change(changed);
        EXPECT_EQ(decodeFailure(changed).rfind(
                      "“session.json” is not a valid session manifest: " + c.problem, 0),
                  0u)
            << c.problem << "\n  got: " << decodeFailure(changed);
    }
}

TEST(SessionManifest, RefusesWritingWhatItCouldNotRead) {
    SessionManifest manifest = test::sampleManifest();
    manifest.pairs[0].riders[0].crop.width = 5000;
    try {
        manifest.encode();
        FAIL() << "an out-of-photo crop was written";
    } catch (const DravikError& error) {
        EXPECT_STREQ(error.what(), "The session manifest cannot be written: "
                                   "pairs[0].riders[0].crop must lie inside the 1200 × 800 photo.");
    }
}

} // namespace
} // namespace dravik
