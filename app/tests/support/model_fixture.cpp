// SPDX-License-Identifier: Apache-2.0
#include "model_fixture.h"

#include "dravik/store.h"
#include "samplegen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <unistd.h>

namespace tessary::test {

namespace {

// Generating photos is slow: tests copy one generated set, kept in the build tree. The same
// options always give the same bytes, so a set left by an earlier run is as good as a new one.
fs::path generated(const std::string& name, const samplegen::Options& options) {
    const fs::path folder = fs::path(TESSARY_APP_TEST_SESSIONS) / name;
    if (fs::exists(folder / "results.json"))
        return folder;
    const fs::path partial = folder.string() + ".partial-" + std::to_string(::getpid());
    samplegen::writeSession(partial, options);
    std::error_code lostRace; // another process got there first with the same bytes
    fs::rename(partial, folder, lostRace);
    fs::remove_all(partial, lostRace);
    return folder;
}

fs::path bundled() {
    samplegen::Options options;
    options.bundled = true;
    return generated("bundled", options);
}

fs::path smallPhotos() {
    samplegen::Options options;
    options.photos = 4;
    options.megapixels = 0.2;
    return generated("small", options);
}

} // namespace

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > limit.count())
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 10);
        QTest::qWait(5);
    }
    return true;
}

// Whatever cannot be read, a folder included, reads as empty.
std::string readText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeText(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    path_ = fs::temp_directory_path() / ("tessary-app-test-" + std::to_string(random()));
    fs::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::optional<fs::path> ScriptedChooser::chooseJson(const std::string& caption,
                                                    const fs::path& startIn) {
    captions.push_back(caption);
    offered.push_back(startIn);
    if (answers.empty())
        return std::nullopt;
    auto answer = answers.front();
    answers.pop_front();
    return answer;
}

std::optional<fs::path> ScriptedChooser::chooseSaveFile(const std::string& caption,
                                                        const fs::path& suggested,
                                                        const std::string&) {
    return chooseJson(caption, suggested);
}

std::optional<fs::path> ScriptedChooser::chooseFolder(const std::string& caption,
                                                      const fs::path& startIn) {
    return chooseJson(caption, startIn);
}

fs::path SessionFiles::review() const {
    return folder / dravik::ReviewStore::reviewFileName(raw());
}

dravik::ReviewDocument SessionFiles::raw() const {
    return dravik::ReviewStore::make(manifest, results);
}

dravik::ReviewDocument SessionFiles::saved() const {
    return dravik::ReviewStore::load(review());
}

SessionFiles bundledSession(const fs::path& folder, bool companions) {
    static const std::set<std::string> companionFiles{"lean-proposals.json", "photo-framing.json",
                                                      "single-photo-coaching.json",
                                                      "coaching-checklist.json"};
    fs::create_directories(folder);
    for (const fs::directory_entry& entry : fs::directory_iterator(bundled()))
        if (companions || !companionFiles.contains(entry.path().filename().string()))
            fs::copy_file(entry.path(), folder / entry.path().filename());
    return {folder, folder / "session.json", folder / "results.json"};
}

SessionFiles copiedSession(const fs::path& folder, int photos, const samplegen::AlterCopy& alter) {
    samplegen::writeCopiedSession(smallPhotos(), folder, photos, alter);
    return {folder, folder / "session.json", folder / "results.json"};
}

void regenerateSessions() {
    fs::remove_all(TESSARY_APP_TEST_SESSIONS);
    bundled();
    smallPhotos();
}

ModelTest::ModelTest()
    : chooser(std::make_shared<ScriptedChooser>()), model(Bundle(temp.path() / "bundle"), chooser) {
}

SessionFiles ModelTest::openBundled(const std::string& name, bool companions) {
    SessionFiles session = bundledSession(temp.path() / name, companions);
    model.load(session.manifest, session.results);
    EXPECT_EQ(model.error(), std::nullopt);
    return session;
}

std::int64_t ModelTest::indexOf(const std::string& frameID) const {
    return static_cast<std::int64_t>(model.document()->frameIndex(frameID).value());
}

const dravik::ReviewFrame& ModelTest::frameOf(const std::string& frameID) const {
    return *model.document()->frame(frameID);
}

std::optional<dravik::JointEdit> ModelTest::editOf(const std::string& frameID,
                                                   const std::string& joint) const {
    const auto& edits = frameOf(frameID).edits;
    auto found = edits.find(joint);
    return found == edits.end() ? std::nullopt : std::optional(found->second);
}

void ModelTest::placeLean(const std::string& frameID, bool reference, dravik::Point2 a,
                          dravik::Point2 b) {
    model.beginLeanPlacement(reference);
    model.placeLean(a, frameID);
    model.placeLean(b, frameID);
}

} // namespace tessary::test
