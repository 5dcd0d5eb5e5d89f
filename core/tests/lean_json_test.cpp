#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean/lean_json.h"
#include "lean_fixtures.h"
#include "test_support.h"

#include "json/json_writer.h"
#include <gtest/gtest.h>
#include <string>

namespace dravik {
namespace {

using leantest::line;

std::string refusal(std::string_view text) {
    try {
        decodeLeanProposals(text, "lean-proposals.json");
    } catch (const DravikError& error) {
        return error.message();
    }
    return "";
}

LeanAnnotation proposal() {
    LeanAnnotation a = leantest::lines(leantest::frame("p1", "rider", "subject", 'a'),
                                       line(400.25, 900, 460, 300, 6), line(100, 950, 900, 930),
                                       LeanBasis::sharedFeature, "white gate post");
    a.provenance = "edge-finder 2.1";
    return a;
}

// One proposal as text, with `key` replaced by `value` (raw JSON), or removed when empty.
std::string file(const std::string& key = "", const std::string& value = "") {
    json::Json item = json::write(proposal());
    if (!key.empty()) {
        if (value.empty())
            item.erase(key);
        else
            item[key] = json::Json::parse(value);
    }
    json::Json root = json::header("dravik-lean-proposals", 1);
    root["proposals"] = json::Json::array({item});
    return root.dump();
}

TEST(LeanJson, ValuesSurviveWriteAndRead) {
    json::Source source{"joint-review-x.json", "review document"};
    LeanAnnotation a = proposal();
    a.provenance = "reviewer";
    a.wheelReviewed = true;
    a.reference.reset();
    json::Json written = json::write(a);
    EXPECT_EQ(json::readLeanAnnotation(json::Node(written, source)), a);
    EXPECT_TRUE(written["reference"].is_null()) << "an absent line is written as null";

    LeanPairContext context;
    context.pairID = "p1";
    context.cameraRollComparable = context.similarSpeed = true;
    for (auto digest : {std::optional<std::string>(), std::optional(leantest::hash('d'))}) {
        context.approvalDigest = digest;
        json::Json text = json::write(context);
        EXPECT_EQ(json::readLeanPairContext(json::Node(text, source)), context);
    }
}

TEST(LeanJson, PairContextNeedsEveryKeyAndAWellFormedDigest) {
    json::Source source{"joint-review-x.json", "review document"};
    LeanPairContext context;
    context.pairID = "p1";
    json::Json text = json::write(context);
    text["approvalDigest"] = "sha256:XYZ";
    EXPECT_THROW(json::readLeanPairContext(json::Node(text, source)), DravikError);
    text.erase("approvalDigest");
    EXPECT_THROW(json::readLeanPairContext(json::Node(text, source)), DravikError);
}

TEST(LeanProposals, ReadsTheDocumentedFileAndRoundTrips) {
    test::TempDir dir;
    const std::string text = encodeLeanProposals({proposal()});
    test::writeText(dir / "lean-proposals.json", text);
    auto proposals = loadLeanProposals(dir / "lean-proposals.json");
    ASSERT_EQ(proposals.size(), 1u);
    EXPECT_EQ(proposals[0], proposal());
    EXPECT_EQ(refusal(file()), "");
    EXPECT_TRUE(decodeLeanProposals(R"({"format":"dravik-lean-proposals","version":1,
                                        "proposals":[]})",
                                    "lean-proposals.json")
                    .empty());
}

TEST(LeanProposals, RefusesHostileFilesWithASentenceNamingTheFile) {
    const std::string prefix = "“lean-proposals.json” is not a valid lean proposals file: ";
    struct Case {
        std::string text;
        std::string problem; // after the prefix
    };
    const std::vector<Case> cases = {
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":2},"uncertainty":3})"),
         "proposals[0].wheel is shorter than 1 pixel."},
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":200},"uncertainty":0})"),
         "proposals[0].wheel has an uncertainty outside 0.5 to 50 pixels."},
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":200}})"),
         "proposals[0].wheel.uncertainty is missing."},
        {file("wheel", R"({"a":{"x":1,"y":2,"z":0},"b":{"x":1,"y":200},"uncertainty":3})"),
         "proposals[0].wheel.a.z is not a known key."},
        {file("wheel", R"({"a":{"x":"1","y":2},"b":{"x":1,"y":200},"uncertainty":3})"),
         "proposals[0].wheel.a.x must be a finite number."},
        {file("wheel"), "proposals[0].wheel is missing."},
        {file("basis", R"("level")"),
         "proposals[0].basis must be \"assumedLevel\" or \"sharedFeature\"."},
        {file("sourceHash", R"("abc")"),
         "proposals[0].sourceHash must be \"sha256:\" followed by 64 lower-case hexadecimal "
         "digits."},
        {file("frameID", R"("")"), "proposals[0].frameID must not be empty."},
        {file("wheelReviewed", "true"),
         "proposals[0] is a proposal and cannot be marked reviewed."},
        {file("referenceReviewed", "1"), "proposals[0].referenceReviewed must be true or false."},
        {file("provenance", R"("reviewer")"),
         "proposals[0].provenance must name the analysis that proposed the lines, not "
         "\"reviewer\"."},
        {file("provenance", R"("")"), "proposals[0].provenance must not be empty."},
        {file("featureID", R"("tab\there")"),
         "proposals[0].featureID must have at most 100 characters and no control characters."},
        {file("wheelReviewd", "false"), "proposals[0].wheelReviewd is not a known key."},
        {R"([])", "the document must be a JSON object."},
        {R"({"format":"dravik-lean-proposals","version":1})", "proposals is missing."},
        {R"({"format":"dravik-lean-proposals","version":1,"proposals":{}})",
         "proposals must be an array."},
        {R"({"format":"dravik-lean-proposals","version":1,"proposals":[],"extra":1})",
         "extra is not a known key."},
        {R"({"format":"dravik-lean-proposals","version":1,"proposals":[],"proposals":[]})",
         "the key proposals appears twice in one object."},
    };
    for (const Case& c : cases)
        EXPECT_EQ(refusal(c.text), prefix + c.problem) << c.text;

    EXPECT_EQ(refusal(R"({"format":"dravik-lean-proposals","version":2,"proposals":[]})"),
              "“lean-proposals.json” uses version 2 of the lean proposals file format, but only "
              "version 1 can be read.");
    EXPECT_NE(refusal(R"({"format":"dravik-lean-proposals","version":1,"proposals":[1e400]})"), "");
    std::string deep = R"({"format":"dravik-lean-proposals","version":1,"proposals":)" +
                       std::string(100000, '[') + std::string(100000, ']') + "}";
    EXPECT_NE(refusal(deep), "");
}

TEST(LeanProposals, EncodingRefusesWhatCouldNotBeReadBack) {
    LeanAnnotation reviewed = proposal();
    reviewed.referenceReviewed = true;
    EXPECT_THROW(encodeLeanProposals({reviewed}), DravikError);
    LeanAnnotation infinite = proposal();
    infinite.wheel->a.x = std::numeric_limits<double>::infinity();
    EXPECT_THROW(encodeLeanProposals({infinite}), DravikError);
}

} // namespace
} // namespace dravik
