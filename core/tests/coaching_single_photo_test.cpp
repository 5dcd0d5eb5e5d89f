#include "coaching_fixtures.h"
#include "dravik/coaching.h"
#include "dravik/error.h"
#include "photo_fixtures.h"

#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace dravik;
using coaching_fixtures::hash;
using Json = nlohmann::ordered_json;

namespace {

const std::string fileName = "single-photo-coaching.json";

SinglePhotoCoaching soloNotes() {
    return {"solo/rider",
            hash('c'),
            {"Head turned toward the exit.", "Inside knee close to the tank."},
            {"One photo from the outside of the corner.", "Feet hidden by the fairing."}};
}

std::string refusal(const Json& file) {
    try {
        SinglePhotoCoaching::decode(file.dump(), fileName, coaching_fixtures::session());
    } catch (const DravikError& error) {
        return error.message();
    }
    return "(accepted)";
}

} // namespace

TEST(SinglePhotoCoachingFile, RoundTripsKeyedByFrame) {
    photo_fixtures::TemporaryFolder folder;
    std::string text = SinglePhotoCoaching::encode({soloNotes()});
    photo_fixtures::writeFile(folder / fileName,
                              std::vector<std::uint8_t>(text.begin(), text.end()));
    auto notes = SinglePhotoCoaching::load(folder / fileName, coaching_fixtures::session());
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes.at("solo/rider"), soloNotes());

    SinglePhotoCoaching noBasis = soloNotes();
    noBasis.assessmentBasis.clear();
    EXPECT_EQ(SinglePhotoCoaching::decode(SinglePhotoCoaching::encode({noBasis}), fileName,
                                          coaching_fixtures::session())
                  .at("solo/rider"),
              noBasis);
}

TEST(SinglePhotoCoachingFile, RefusesNotesThatDoNotMatchTheSession) {
    const std::string mismatch = "“single-photo-coaching.json” does not match this session: ";
    const std::string invalid = "“single-photo-coaching.json” is not a valid photo coaching file: ";
    struct Case {
        std::string name;
        std::function<void(Json&)> change;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"unknown photo", [](Json& f) { f["photos"][0]["frameID"] = "solo/other"; },
         mismatch + "photos[0].frameID names no photo of this session."},
        {"reference photo",
         [](Json& f) {
             f["photos"][0]["frameID"] = "turn3/ref";
             f["photos"][0]["sourceHash"] = hash('b');
         },
         mismatch + "photos[0].frameID names a reference rider’s photo."},
        {"photo with a reference rider",
         [](Json& f) {
             f["photos"][0]["frameID"] = "turn3/rider";
             f["photos"][0]["sourceHash"] = hash('a');
         },
         mismatch + "photos[0].frameID names a photo compared with a reference rider."},
        {"photo replaced", [](Json& f) { f["photos"][0]["sourceHash"] = hash('e'); },
         mismatch + "photos[0].sourceHash is not the hash of the photo this session analysed."},
        {"twice", [](Json& f) { f["photos"].push_back(f["photos"][0]); },
         invalid + "photos[1].frameID repeats a photo that has a record before it."},
        {"no observations", [](Json& f) { f["photos"][0]["observations"] = Json::array(); },
         invalid + "photos[0].observations must hold at least one observation."},
        {"blank observation", [](Json& f) { f["photos"][0]["observations"][1] = ""; },
         invalid + "photos[0].observations[1] must not be empty."},
        {"basis missing", [](Json& f) { f["photos"][0].erase("assessmentBasis"); },
         invalid + "photos[0].assessmentBasis is missing."},
    };
    const Json valid = Json::parse(SinglePhotoCoaching::encode({soloNotes()}));
    EXPECT_EQ(refusal(valid), "(accepted)");
    for (const Case& c : cases) {
        Json file = valid;
        c.change(file);
        EXPECT_EQ(refusal(file), c.message) << c.name;
    }
}
