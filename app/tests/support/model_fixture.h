// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"
#include "environment/file_chooser.h"
#include "reviewer_model.h"
#include "samplegen.h"

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessary::test {

namespace fs = std::filesystem;

class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

// Answers the model's file questions from a script; an exhausted script cancels.
class ScriptedChooser : public FileChooser {
  public:
    std::optional<fs::path> chooseJson(const std::string& caption,
                                       const fs::path& startIn) override;
    std::optional<fs::path> chooseSaveFile(const std::string& caption, const fs::path& suggested,
                                           const std::string& filter) override;
    std::optional<fs::path> chooseFolder(const std::string& caption,
                                         const fs::path& startIn) override;
    std::deque<std::optional<fs::path>> answers;
    std::vector<std::string> captions;
    std::vector<fs::path> offered; // the start folder or suggested file of each question
};

struct SessionFiles {
    fs::path folder;
    fs::path manifest;
    fs::path results;
    fs::path review() const; // where the model keeps this session's review
    dravik::ReviewDocument raw() const;
    dravik::ReviewDocument saved() const; // the review as it is on disk
};

// The generated bundled sample: pair "turn-3" (subject Alex, reference Sam) and "turn-5"
// (Alex alone), copied into `folder`. Its companion files (lean proposals, framing, coaching)
// only when asked for: most tests want the bare photos and detections.
SessionFiles bundledSession(const fs::path& folder, bool companions = false);
// `photos` unpaired subject photos "copy-001-rider.jpg"… of 0.2 MP, copies of four generated
// ones; `alter` may change a copy's bytes before it is hashed into the session.
SessionFiles copiedSession(const fs::path& folder, int photos,
                           const samplegen::AlterCopy& alter = {});
// Generates the sessions the tests copy, replacing any left by an earlier build.
void regenerateSessions();

inline const std::string alex3 = "turn-3/alex";
inline const std::string sam3 = "turn-3/sam";
inline const std::string alex5 = "turn-5/alex";

// Runs queued work, deferred deletions included, until `done` holds; false when `limit` passes.
bool waitUntil(const std::function<bool()>& done,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

std::string readText(const fs::path& file);
// Writes `content` as the whole file, making its folder first.
void writeText(const fs::path& file, const std::string& content);

class ModelTest : public ::testing::Test {
  protected:
    ModelTest();

    // Opens a fresh copy of the bundled sample in a folder of its own; fails the test on error.
    SessionFiles openBundled(const std::string& name = "session", bool companions = false);
    std::int64_t indexOf(const std::string& frameID) const;
    const dravik::ReviewFrame& frameOf(const std::string& frameID) const;
    std::optional<dravik::JointEdit> editOf(const std::string& frameID,
                                            const std::string& joint) const;
    // Places a wheel line, or the reference line, on `frameID` with two clicks.
    void placeLean(const std::string& frameID, bool reference, dravik::Point2 a, dravik::Point2 b);

    TemporaryFolder temp;
    std::shared_ptr<ScriptedChooser> chooser;
    ReviewerModel model;
};

} // namespace tessary::test
