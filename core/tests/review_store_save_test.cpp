// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/store.h"
#include "test_support.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace dravik;
using dravik::test::entries;
using dravik::test::readText;
using dravik::test::savedDocument;

namespace {

// Runs `body` in a child process; its exit status is 0 when it returned, 1 when it failed with a
// DravikError, 2 for anything else.
pid_t inChild(const std::function<void()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            body();
            ::_exit(0);
        } catch (const DravikError&) {
            ::_exit(1);
        } catch (...) {
            ::_exit(2);
        }
    }
    return child;
}

int exitStatus(pid_t child) {
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

struct ReviewStoreSaveTest : testing::Test {
    dravik::test::TempDir folder;
    fs::path file = folder.path() / "joint-review-0123456789ab.json";
    bool mounted = false; // a test mounted over the folder; detached before the folder goes

    void TearDown() override {
        if (mounted)
            ::umount2(folder.path().c_str(), MNT_DETACH);
    }

    // Saving must fail with exactly `sentence` and leave the folder as it was, byte for byte. Only
    // a file at another revision is "changed elsewhere": the window then offers a merge.
    void expectRefused(const ReviewDocument& doc, std::optional<std::int64_t> expected,
                       const std::string& sentence, bool changedElsewhere) {
        const auto content = [&] { return fs::exists(file) ? readText(file) : "(no file)"; };
        const std::string before = content();
        const auto entriesBefore = entries(folder.path());
        bool elsewhere = false;
        EXPECT_EQ(dravik::test::failureOf([&] {
                      try {
                          ReviewStore::save(doc, file, expected);
                      } catch (const ReviewChangedElsewhere&) {
                          elsewhere = true;
                          throw;
                      }
                  }),
                  sentence);
        EXPECT_EQ(elsewhere, changedElsewhere);
        EXPECT_EQ(content(), before);
        EXPECT_EQ(entries(folder.path()), entriesBefore);
    }
};

TEST_F(ReviewStoreSaveTest, ExpectedRevisionDecidesWhetherToWrite) {
    // No file and none expected: the first save of a session.
    ReviewStore::save(savedDocument(3), file, std::nullopt);
    EXPECT_EQ(ReviewStore::load(file), savedDocument(3));
    expectRefused(savedDocument(4), std::nullopt,
                  "The review “joint-review-0123456789ab.json” was created elsewhere (revision 3 "
                  "on disk, none expected); nothing was saved.",
                  true);

    ReviewStore::save(savedDocument(4, 2), file, 3);
    EXPECT_EQ(readText(file), ReviewStore::encode(savedDocument(4, 2))) << "written in pieces";
    EXPECT_EQ(entries(folder.path()), std::vector<std::string>{file.filename().string()});

    // A deleted file is written again, since nothing is overwritten.
    fs::remove(file);
    ReviewStore::save(savedDocument(5), file, 4);
    EXPECT_EQ(ReviewStore::load(file), savedDocument(5));
}

TEST_F(ReviewStoreSaveTest, UnreadableFileOrDocumentIsNeverOverwritten) {
    std::ofstream(file) << R"({"format": "dravik-review", "version": 99})";
    expectRefused(savedDocument(1), 0,
                  "The file “joint-review-0123456789ab.json” on disk is not a review that can be "
                  "read here, so it was not overwritten; nothing was saved.",
                  false);

    fs::remove(file);
    ReviewStore::save(savedDocument(1), file, std::nullopt);
    auto frames = savedDocument(2).frames();
    frames[0].raw[0].joints[7].x = INFINITY;
    const ReviewDocument broken(savedDocument(2).identity(), frames, 2);
    EXPECT_THROW(ReviewStore::save(broken, file, 1), DravikError);
    EXPECT_EQ(ReviewStore::load(file), savedDocument(1));
    EXPECT_EQ(entries(folder.path()), std::vector<std::string>{file.filename().string()});
}

// What this process read or wrote last is remembered; a write by anyone else must still be seen,
// even one in place that keeps the inode and the size.
TEST_F(ReviewStoreSaveTest, SaveAfterAnotherWriterChangedTheFileIsRefused) {
    const std::string first = ReviewStore::encode(savedDocument(1));
    const std::string second = ReviewStore::encode(savedDocument(2));
    ASSERT_EQ(first.size(), second.size());
    dravik::test::writeText(file, first);
    std::this_thread::sleep_for(std::chrono::milliseconds(150)); // older than a clock tick
    ASSERT_EQ(ReviewStore::load(file).revision(), 1);
    std::ofstream(file, std::ios::in | std::ios::out) << second;
    expectRefused(savedDocument(3), 1,
                  "The review “joint-review-0123456789ab.json” was changed elsewhere (revision 2 "
                  "on disk, 1 expected); nothing was saved.",
                  true);
}

// Writers that start together from the same revision: the lock lets exactly one of them in.
TEST_F(ReviewStoreSaveTest, ConcurrentWritersFromOneRevisionLeaveExactlyOneWinner) {
    for (int round = 0; round < 5; ++round) {
        fs::remove(file);
        ReviewStore::save(savedDocument(1), file, std::nullopt);
        int start[2];
        ASSERT_EQ(::pipe(start), 0);
        std::vector<pid_t> writers;
        for (int w = 0; w < 6; ++w) {
            writers.push_back(inChild([&, w] {
                ::close(start[1]);
                char byte;
                (void)!::read(start[0], &byte, 1); // released when the parent closes its end
                ReviewStore::save(savedDocument(2, w + 1), file, 1);
            }));
        }
        ::close(start[0]);
        ::close(start[1]);
        std::vector<int> statuses, winners;
        for (std::size_t w = 0; w < writers.size(); ++w) {
            statuses.push_back(exitStatus(writers[w]));
            if (statuses.back() == 0)
                winners.push_back(int(w));
        }
        ASSERT_EQ(winners.size(), 1u) << "exactly one writer may save over revision 1";
        EXPECT_EQ(std::count(statuses.begin(), statuses.end(), 1), 5) << "the others are refused";
        EXPECT_EQ(ReviewStore::load(file), savedDocument(2, winners[0] + 1));
    }
}

TEST_F(ReviewStoreSaveTest, FullDiskKeepsThePreviousReview) {
    if (::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "cannot mount a small tmpfs here (" << std::strerror(errno)
                     << "); needs root with CAP_SYS_ADMIN";
    mounted = true;
    ReviewStore::save(savedDocument(1), file, std::nullopt);
    expectRefused(savedDocument(2, 40), 1, // about 150 KB on a 64 KB disk
                  "There is not enough disk space to save “joint-review-0123456789ab.json”; "
                  "nothing on disk was changed.",
                  false);
    // Once space is back the same save goes through.
    ReviewStore::save(savedDocument(2, 10), file, 1);
    EXPECT_EQ(ReviewStore::load(file), savedDocument(2, 10));
}

TEST_F(ReviewStoreSaveTest, ReadOnlyFolderIsASentenceAndChangesNothing) {
    ReviewStore::save(savedDocument(1), file, std::nullopt);
    const bool root = ::geteuid() == 0;
    if (!root) {
        fs::permissions(folder.path(), fs::perms(0555));
    } else {
        // Root ignores permission bits: make the folder a read-only bind mount of itself.
        if (::mount(folder.path().c_str(), folder.path().c_str(), nullptr, MS_BIND, nullptr) != 0)
            GTEST_SKIP() << "running as root and cannot bind-mount (" << std::strerror(errno)
                         << ")";
        mounted = true;
        if (::mount(nullptr, folder.path().c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY,
                    nullptr) != 0)
            GTEST_SKIP() << "cannot remount read-only (" << std::strerror(errno) << ")";
    }
    expectRefused(savedDocument(2), 1,
                  std::string("“joint-review-0123456789ab.json” cannot be saved because its folder "
                              "is ") +
                      (root ? "on a read-only disk" : "read-only or not writable for you") +
                      "; nothing on disk was changed.",
                  false);
    if (!root)
        fs::permissions(folder.path(), fs::perms(0700)); // lets the folder be removed
}

} // namespace
