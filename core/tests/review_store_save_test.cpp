#include "dravik/error.h"
#include "dravik/store.h"
#include "save_fixtures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace dravik;
using dravik::test::readText;
using savetest::document;

namespace {

struct ReviewStoreSaveTest : testing::Test {
    dravik::test::TempDir folder;
    fs::path file = folder.path() / "joint-review-0123456789ab.json";

    // Saving must fail with exactly `sentence` and leave the folder as it was, byte for byte.
    void expectRefused(const ReviewDocument& doc, std::optional<std::int64_t> expected,
                       const std::string& sentence) {
        const bool existed = fs::exists(file);
        const std::string before = existed ? readText(file) : "";
        const auto entriesBefore = savetest::entries(folder.path());
        try {
            ReviewStore::save(doc, file, expected);
            ADD_FAILURE() << "the save was not refused";
        } catch (const DravikError& e) {
            EXPECT_EQ(e.message(), sentence);
        }
        EXPECT_EQ(fs::exists(file), existed);
        if (existed) {
            EXPECT_EQ(readText(file), before);
        }
        EXPECT_EQ(savetest::entries(folder.path()), entriesBefore);
    }
};

TEST_F(ReviewStoreSaveTest, ExpectedRevisionDecidesWhetherToWrite) {
    // No file and none expected: the first save of a session.
    ReviewStore::save(document(3), file, std::nullopt);
    EXPECT_EQ(ReviewStore::load(file), document(3));

    expectRefused(document(4), std::nullopt,
                  "The review “joint-review-0123456789ab.json” was created elsewhere (revision 3 "
                  "on disk, none expected); nothing was saved.");
    expectRefused(document(4), 2,
                  "The review “joint-review-0123456789ab.json” was changed elsewhere (revision 3 "
                  "on disk, 2 expected); nothing was saved.");

    ReviewStore::save(document(4, 2), file, 3);
    EXPECT_EQ(ReviewStore::load(file), document(4, 2));
    EXPECT_EQ(savetest::entries(folder.path()), std::vector<std::string>{file.filename().string()});
}

TEST_F(ReviewStoreSaveTest, DeletedFileIsWrittenAgainEvenWhenARevisionWasExpected) {
    ReviewStore::save(document(1), file, std::nullopt);
    fs::remove(file);
    ReviewStore::save(document(2), file, 1);
    EXPECT_EQ(ReviewStore::load(file), document(2));
}

TEST_F(ReviewStoreSaveTest, UnreadableFileOrDocumentIsNeverOverwritten) {
    std::ofstream(file) << R"({"format": "dravik-review", "version": 99})";
    expectRefused(document(1), 0,
                  "The file “joint-review-0123456789ab.json” on disk is not a review that can be "
                  "read here, so it was not overwritten; nothing was saved.");

    fs::remove(file);
    ReviewStore::save(document(1), file, std::nullopt);
    auto frames = document(2).frames();
    frames[0].raw[0].joints[7].x = INFINITY;
    const ReviewDocument broken(document(2).identity(), frames, 2);
    EXPECT_THROW(ReviewStore::save(broken, file, 1), DravikError);
    EXPECT_EQ(ReviewStore::load(file), document(1));
    EXPECT_EQ(savetest::entries(folder.path()), std::vector<std::string>{file.filename().string()});
}

TEST_F(ReviewStoreSaveTest, StaleTemporaryOfADeadWriterIsRemovedByTheNextSave) {
    ReviewStore::save(document(1), file, std::nullopt);
    const auto stale = folder.path() / ".joint-review-0123456789ab.json.tmp-deadXY";
    std::ofstream(stale) << "{\"format\": \"dravik-rev";
    std::ofstream(folder.path() / "notes.txt") << "the reviewer's own file";
    ReviewStore::save(document(2), file, 1);
    EXPECT_EQ(savetest::entries(folder.path()),
              (std::vector<std::string>{file.filename().string(), "notes.txt"}));
}

TEST_F(ReviewStoreSaveTest, SaveAfterAnotherProcessChangedTheFileIsRefused) {
    ReviewStore::save(document(1), file, std::nullopt);
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        try {
            auto theirs = ReviewStore::load(file);
            theirs.setJoint(0, "nose", Point2{10, 20}, JointReviewState::corrected);
            ReviewStore::save(theirs, file, 1);
            ::_exit(0);
        } catch (...) {
            ::_exit(1);
        }
    }
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    const std::string theirs = readText(file);

    auto mine = document(1);
    mine.setJoint(0, "left_knee", Point2{30, 40}, JointReviewState::corrected);
    expectRefused(mine, 1,
                  "The review “joint-review-0123456789ab.json” was changed elsewhere (revision 2 "
                  "on disk, 1 expected); nothing was saved.");
    EXPECT_EQ(readText(file), theirs);
}

// Writers that start together from the same revision: the lock lets exactly one of them in.
TEST_F(ReviewStoreSaveTest, ConcurrentWritersFromOneRevisionLeaveExactlyOneWinner) {
    for (int round = 0; round < 5; ++round) {
        fs::remove(file);
        ReviewStore::save(document(1), file, std::nullopt);
        int start[2];
        ASSERT_EQ(::pipe(start), 0);
        constexpr int writers = 6;
        std::vector<pid_t> children;
        for (int w = 0; w < writers; ++w) {
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                ::close(start[1]);
                char byte;
                (void)!::read(start[0], &byte, 1); // released when the parent closes its end
                try {
                    ReviewStore::save(document(2, w + 1), file, 1);
                    ::_exit(0);
                } catch (const DravikError&) {
                    ::_exit(1);
                } catch (...) {
                    ::_exit(2);
                }
            }
            children.push_back(child);
        }
        ::close(start[0]);
        ::close(start[1]);
        int winner = -1;
        int refused = 0;
        for (int w = 0; w < writers; ++w) {
            int status = 0;
            ASSERT_EQ(::waitpid(children[w], &status, 0), children[w]);
            ASSERT_TRUE(WIFEXITED(status));
            if (WEXITSTATUS(status) == 0) {
                EXPECT_EQ(winner, -1) << "two writers saved over revision 1";
                winner = w;
            } else {
                EXPECT_EQ(WEXITSTATUS(status), 1);
                ++refused;
            }
        }
        ASSERT_NE(winner, -1);
        EXPECT_EQ(refused, writers - 1);
        EXPECT_EQ(ReviewStore::load(file), document(2, winner + 1));
    }
}

} // namespace
