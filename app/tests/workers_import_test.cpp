// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

#include <fstream>
#include <set>
#include <sys/stat.h>

namespace tessary::test {

namespace {

class ImportTest : public ModelTest {
  protected:
    ImportTest() {
        writeText(Bundle(temp.path() / "bundle").resourcePath("data-directory.txt"), data.string());
    }
    void import(const fs::path& folder) {
        chooser->answers.push_back(folder);
        model.importPhotoFolder();
    }

    fs::path data = temp.path() / "data";
};

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        if (!entry.path().filename().string().starts_with("."))
            names.insert(entry.path().filename().string());
    return names;
}

} // namespace

// A coach's folder as it comes off a card: photos beside what Tessary cannot read, a link that
// leads out and a pipe. The photos are copied, analysed with progress and opened; the rest is
// listed, read from nowhere and left as it was.
TEST_F(ImportTest, CopiesThePhotosAnalysesThemWithProgressAndOpensTheSession) {
    const fs::path card = temp.path() / "card" / "Track day";
    writePhoto(card / "a.png", 1);
    writePhoto(card / "b.png", 2);
    std::ofstream(card / "c.jpg") << "\xff\xd8\xff not really a photo";
    std::ofstream(card / "d.HEIC") << "heic";
    std::ofstream(card / "e.NEF") << "raw";
    writePhoto(temp.path() / "outside.png", 3);
    fs::create_symlink(temp.path() / "outside.png", card / "f.png");
    ASSERT_EQ(::mkfifo((card / "g.png").c_str(), 0600), 0);
    installFakeBatch(temp.path() / "bundle", "result", {{"FAKE_BATCH_PHOTO_MS", "300"}});

    std::set<std::string> statuses;
    QObject::connect(&model, &ReviewerModel::discoveryChanged,
                     [&] { statuses.insert(model.discoveryStatus()); });
    import(card);
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_TRUE(statuses.count("Analysing 1 of 2 photos\u2026"));
    EXPECT_TRUE(statuses.count("Analysing 2 of 2 photos\u2026"));
    EXPECT_EQ(model.discoveryFailures(), std::vector<std::string>{});

    const fs::path copy = data / "Track day";
    EXPECT_EQ(namesIn(copy), (std::set<std::string>{"a.png", "b.png", "session.json",
                                                    "results.json", "results.json.log"}));
    const std::vector<std::string>& unusable = model.unusablePhotos();
    ASSERT_EQ(unusable.size(), 5u);
    EXPECT_TRUE(unusable[0].starts_with("\u201cc.jpg\u201d")) << unusable[0];
    EXPECT_EQ(unusable[1], "\u201cd.HEIC\u201d is a HEIC/HEIF photo, which is not supported; "
                           "convert it to JPEG and import it again.");
    EXPECT_EQ(unusable[2], "\u201ce.NEF\u201d is a camera raw file, which is not supported; "
                           "export it as JPEG and import it again.");
    EXPECT_EQ(unusable[3], "\u201cf.png\u201d is a symbolic link, so it was not imported.");
    EXPECT_TRUE(unusable[4].starts_with("\u201cg.png\u201d is not a regular file")) << unusable[4];
    EXPECT_EQ(namesIn(card).size(), 7u); // the original is the user's, untouched

    ASSERT_TRUE(waitUntil([&] { return model.document() != nullptr; }));
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.document()->frames().size(), 2u);
    ASSERT_EQ(model.presets().size(), 1u);
    EXPECT_EQ(model.presets().front().manifest, (copy / "session.json").string());

    // The same folder again is a second session beside the first, not a change of it.
    import(card);
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_TRUE(fs::exists(data / "Track day 2" / "results.json"));
    EXPECT_EQ(model.presets().size(), 2u);
}

// Nothing usable, or no data folder: a sentence, and nothing is left in the data folder.
TEST_F(ImportTest, AFolderWithoutPhotosIsRefusedWithoutTrace) {
    const fs::path card = temp.path() / "empty card";
    fs::create_directories(card);
    std::ofstream(card / "IMG_1.HEIC") << "heic";
    import(card);
    ASSERT_TRUE(waitUntil([&] { return !model.isDiscovering(); }));
    EXPECT_EQ(model.error(), std::optional<std::string>(
                                 "\u201cempty card\u201d holds no JPEG or PNG photo that could be "
                                 "imported."));
    EXPECT_TRUE(fs::is_empty(data));
}

} // namespace tessary::test
