// SPDX-License-Identifier: Apache-2.0
#include "dravik/launch_config.h"
#include "test_support.h"

#include <gtest/gtest.h>

using namespace dravik;
using test::failureOf;

TEST(LaunchConfig, PresetsHaveExactlyTheirThreeStringKeys) {
    test::TempDir dir;
    test::writeText(
        dir / "launch.json",
        R"([{"title": "Sample", "manifest": "~/s/session.json", "results": "r.json"}])");
    EXPECT_EQ(loadLaunchPresets(dir / "launch.json"),
              (std::vector<LaunchPreset>{{"Sample", "~/s/session.json", "r.json"}}));
    EXPECT_TRUE(decodeLaunchPresets("[]", "launch.json").empty());

    const std::string prefix = "“launch.json” is not a valid preset list: ";
    const std::pair<std::string, std::string> refusals[] = {
        {R"({"title": "a"})", "the document must be an array."},
        {R"([{"title": "a", "manifest": "m"}])", "[0].results is missing."},
        {R"([{"title": "a", "manifest": "m", "results": "r", "extra": 1}])",
         "[0].extra is not a key of a preset (only \"title\", \"manifest\" and \"results\" are)."},
        {R"([{"title": "a", "title": "b", "manifest": "m", "results": "r"}])",
         "the key title appears twice in one object."},
        {R"([{"title": 1, "manifest": "m", "results": "r"}])", "[0].title must be a string."},
        {R"([{"title": "a", "manifest": "m\u0000.json", "results": "r"}])",
         "[0].manifest must not contain a NUL character."},
    };
    for (const auto& [text, problem] : refusals)
        EXPECT_EQ(failureOf([&] { decodeLaunchPresets(text, "launch.json"); }), prefix + problem);
}

TEST(LaunchConfig, DataDirectoryIsOneTrimmedLineOfText) {
    EXPECT_EQ(decodeDataDirectory("\xef\xbb\xbf  $XDG_DATA_HOME/tessary/sessions \r\n", "d.txt"),
              "$XDG_DATA_HOME/tessary/sessions");
    EXPECT_EQ(decodeDataDirectory(" \n\t\n", "d.txt"), std::nullopt);
    const std::string prefix = "“d.txt” is not a valid data folder setting: ";
    EXPECT_EQ(failureOf([] { decodeDataDirectory("/data\n/other\n", "d.txt"); }),
              prefix + "it must hold one folder path on one line, without control characters.");
    EXPECT_EQ(failureOf([] { decodeDataDirectory("/caf\xe9", "d.txt"); }),
              prefix + "it is not UTF-8 text.");
}
