#include "dravik/error.h"
#include "dravik/lean_analysis.h"
#include "lean/lean_json.h"
#include "lean_fixtures.h"
#include "test_support.h"

#include "json/json_writer.h"
#include <gtest/gtest.h>
#include <limits>
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

// A file of one proposal whose `key` holds `value` (raw JSON), or lacks it when value is empty.
std::string file(const std::string& key, const std::string& value) {
    json::Json item = json::write(proposal());
    if (value.empty())
        item.erase(key);
    else
        item[key] = json::Json::parse(value);
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
    EXPECT_TRUE(written["reference"].is_null());
    EXPECT_EQ(json::readLeanAnnotation(json::Node(written, source)), a);

    LeanPairContext context;
    context.pairID = "p1";
    context.cameraRollComparable = true;
    context.approvalDigest = leantest::hash('d');
    json::Json text = json::write(context);
    EXPECT_EQ(json::readLeanPairContext(json::Node(text, source)), context);
    text["approvalDigest"] = "sha256:XYZ";
    EXPECT_THROW(json::readLeanPairContext(json::Node(text, source)), DravikError);
}

TEST(LeanProposals, ReadsTheFileItWritesAndRefusesWhatItCouldNotReadBack) {
    test::TempDir dir;
    test::writeText(dir / "lean-proposals.json", encodeLeanProposals({proposal()}));
    EXPECT_EQ(loadLeanProposals(dir / "lean-proposals.json"),
              std::vector<LeanAnnotation>{proposal()});

    LeanAnnotation reviewed = proposal();
    reviewed.referenceReviewed = true;
    EXPECT_THROW(encodeLeanProposals({reviewed}), DravikError);
    LeanAnnotation infinite = proposal();
    infinite.wheel->a.x = std::numeric_limits<double>::infinity();
    EXPECT_THROW(encodeLeanProposals({infinite}), DravikError);
}

TEST(LeanProposals, RefusesHostileFilesWithASentenceNamingTheFile) {
    const std::string prefix = "“lean-proposals.json” is not a valid lean proposals file: ";
    const std::pair<std::string, std::string> cases[] = {
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":2},"uncertainty":3})"),
         "proposals[0].wheel is shorter than 1 pixel."},
        {file("wheel", R"({"a":{"x":1,"y":2},"b":{"x":1,"y":200},"uncertainty":0})"),
         "proposals[0].wheel has an uncertainty outside 0.5 to 50 pixels."},
        {file("wheel", R"({"a":{"x":1,"y":2,"z":0},"b":{"x":1,"y":200},"uncertainty":3})"),
         "proposals[0].wheel.a.z is not a known key."},
        {file("wheel", R"({"a":{"x":"1","y":2},"b":{"x":1,"y":200},"uncertainty":3})"),
         "proposals[0].wheel.a.x must be a finite number."},
        {file("wheel", ""), "proposals[0].wheel is missing."},
        {file("basis", R"("level")"),
         "proposals[0].basis must be \"assumedLevel\" or \"sharedFeature\"."},
        {file("sourceHash", R"("abc")"),
         "proposals[0].sourceHash must be \"sha256:\" followed by 64 lower-case hexadecimal "
         "digits."},
        {file("wheelReviewed", "true"),
         "proposals[0] is a proposal and cannot be marked reviewed."},
        {file("provenance", R"("reviewer")"),
         "proposals[0].provenance must name the analysis that proposed the lines, not "
         "\"reviewer\"."},
        {file("featureID", R"("tab\there")"),
         "proposals[0].featureID must have at most 100 characters and no control characters."},
        {R"({"format":"dravik-lean-proposals","version":1,"proposals":[],"extra":1})",
         "extra is not a known key."},
    };
    for (const auto& [text, problem] : cases)
        EXPECT_EQ(refusal(text), prefix + problem) << text;

    EXPECT_TRUE(refusal(R"({"format":"dravik-lean-proposals","version":1,"proposals":[)")
                    .starts_with(prefix));
}

} // namespace
} // namespace dravik
