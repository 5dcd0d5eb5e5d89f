#include "coaching_fixtures.h"
#include "dravik/error.h"
#include "dravik/framing.h"
#include "photo_fixtures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace dravik;
using coaching_fixtures::hash;
using Json = nlohmann::ordered_json;

namespace {

const std::string fileName = "photo-framing.json";
const std::string mismatch = "Photo framing does not match its source or panel.";
const PixelRect soloPanel{10.25, 20.5, 300.75, 200.125}; // the "solo/rider" frame's panel

PhotoFramingRegion soloRegion(PixelRect bounds) {
    return {"solo/rider", hash('c'), soloPanel, bounds};
}

std::string outcome(const std::vector<PhotoFramingRegion>& regions) {
    try {
        PhotoFramingRegion::decode(PhotoFramingRegion::encode(regions), fileName,
                                   coaching_fixtures::session());
    } catch (const DravikError& error) {
        return error.message();
    }
    return "(accepted)";
}

std::string outcome(const std::string& text) {
    try {
        PhotoFramingRegion::decode(text, fileName, coaching_fixtures::session());
    } catch (const DravikError& error) {
        return error.message();
    }
    return "(accepted)";
}

double below(double v) {
    return std::nextafter(v, -std::numeric_limits<double>::infinity());
}
double above(double v) {
    return std::nextafter(v, std::numeric_limits<double>::infinity());
}

} // namespace

TEST(PhotoFraming, LoadsBoundsByFrame) {
    photo_fixtures::TemporaryFolder folder;
    PhotoFramingRegion rider{"turn3/rider", hash('a'), {0, 0, 640, 480}, {100, 50, 200, 300}};
    std::string text = PhotoFramingRegion::encode({rider, soloRegion(soloPanel)});
    photo_fixtures::writeFile(folder / fileName,
                              std::vector<std::uint8_t>(text.begin(), text.end()));
    auto bounds = PhotoFramingRegion::load(folder / fileName, coaching_fixtures::session());
    ASSERT_EQ(bounds.size(), 2u);
    EXPECT_EQ(bounds.at("turn3/rider"), rider.bounds);
    EXPECT_EQ(bounds.at("solo/rider"), soloPanel); // the whole panel is inside itself
    EXPECT_TRUE(PhotoFramingRegion::decode("[]", fileName, coaching_fixtures::session()).empty());
}

TEST(PhotoFraming, PanelMustRepeatTheFramesExactly) {
    const PixelRect inner{50, 60, 100, 100};
    for (int side = 0; side < 4; ++side) {
        PhotoFramingRegion region = soloRegion(inner);
        double* field[] = {&region.panel.x, &region.panel.y, &region.panel.width,
                           &region.panel.height};
        *field[side] += 1e-9;
        EXPECT_EQ(outcome({region}), mismatch) << "panel field " << side;
    }
    PhotoFramingRegion otherPhoto = soloRegion(inner);
    otherPhoto.sourceHash = hash('d');
    EXPECT_EQ(outcome({otherPhoto}), mismatch);
    PhotoFramingRegion unknown = soloRegion(inner);
    unknown.frameID = "solo/ref";
    EXPECT_EQ(outcome({unknown}), mismatch);
}

TEST(PhotoFraming, BoundsMustLieInsideThePanelByAnyAmount) {
    const PixelRect& p = soloPanel;
    const double right = p.x + p.width;
    const double bottom = p.y + p.height;
    // Each sticks out by the smallest step a double can take.
    const std::vector<PixelRect> outside = {
        {below(p.x), p.y, 10, 10},       {p.x, below(p.y), 10, 10}, {p.x, p.y, above(p.width), 10},
        {p.x, p.y, 10, above(p.height)}, {p.x, p.y, 0, 10},         {p.x, p.y, 10, -1},
    };
    for (const PixelRect& bounds : outside) {
        ASSERT_TRUE(bounds.width <= 0 || bounds.height <= 0 || !p.contains(bounds));
        EXPECT_EQ(outcome({soloRegion(bounds)}), mismatch)
            << bounds.x << " " << bounds.y << " " << bounds.width << " " << bounds.height;
    }
    EXPECT_EQ(outcome({soloRegion({p.x + 10, p.y + 10, right - (p.x + 10), bottom - (p.y + 10)})}),
              "(accepted)");
}

TEST(PhotoFraming, ASecondRecordForAFrameMustRepeatItsBounds) {
    PhotoFramingRegion first = soloRegion({50, 60, 100, 100});
    EXPECT_EQ(outcome({first, first}), "(accepted)");
    PhotoFramingRegion moved = first;
    moved.bounds.x += 1e-9;
    EXPECT_EQ(outcome({first, moved}), mismatch);
    PhotoFramingRegion otherPanel = first;
    otherPanel.panel.width += 1;
    EXPECT_EQ(outcome({first, otherPanel}), mismatch);
}

TEST(PhotoFraming, MalformedFilesFailAsTheyAreRead) {
    const std::string prefix = "“photo-framing.json” is not a valid photo framing file: ";
    Json record = Json::parse(PhotoFramingRegion::encode({soloRegion({50, 60, 100, 100})}))[0];
    Json extra = record;
    extra["note"] = "x";
    Json extraInRect = record;
    extraInRect["bounds"]["unit"] = "px";
    Json missing = record;
    missing.erase("sourceHash");
    Json text = record;
    text["bounds"]["width"] = "100";

    EXPECT_EQ(outcome(Json::array({extra}).dump()),
              prefix + "[0].note is not a key this file may hold.");
    EXPECT_EQ(outcome(Json::array({extraInRect}).dump()),
              prefix + "[0].bounds.unit is not a key this file may hold.");
    EXPECT_EQ(outcome(Json::array({missing}).dump()), prefix + "[0].sourceHash is missing.");
    EXPECT_EQ(outcome(Json::array({text}).dump()),
              prefix + "[0].bounds.width must be a finite number.");
    EXPECT_EQ(outcome(Json::object({{"regions", Json::array({record})}}).dump()),
              prefix + "the document must be an array.");
    // A malformed record is reported as such even after one that does not fit.
    Json unfit = record;
    unfit["frameID"] = "nobody";
    EXPECT_EQ(outcome(Json::array({unfit, missing}).dump()), prefix + "[1].sourceHash is missing.");
}
