// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/store.h"
#include "test_support.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace dravik;

namespace {

// The document the writer saves at each revision: sizes vary from 4 KB to about 240 KB, so that
// kills land in every phase of small and large writes.
ReviewDocument documentAt(std::int64_t revision) {
    return dravik::test::savedDocument(revision, 1 + static_cast<int>(revision * 37 % 64));
}

[[noreturn]] void writeForever(const fs::path& file) {
    try {
        std::optional<std::int64_t> revision;
        if (fs::exists(file))
            revision = ReviewStore::load(file).revision();
        for (;;) {
            const std::int64_t next = revision.value_or(0) + 1;
            ReviewStore::save(documentAt(next), file, revision);
            revision = next;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "writer failed: %s\n", e.what());
    }
    ::_exit(1);
}

TEST(ReviewStoreCrashTest, WriterKilledAtAnyInstantLeavesTheOldOrTheNewReview) {
    dravik::test::TempDir folder;
    const fs::path file = folder.path() / "joint-review-0123456789ab.json";
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delayMicroseconds(0, 150'000);
    SCOPED_TRACE("seed " + std::to_string(seed));

    const auto started = std::chrono::steady_clock::now();
    std::int64_t lastRevision = 0;
    int kills = 0;
    int stranded = 0;
    for (; kills < 200 && std::chrono::steady_clock::now() - started < std::chrono::seconds(30);
         ++kills) {
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0)
            writeForever(file);
        ::usleep(static_cast<useconds_t>(delayMicroseconds(random)));
        ::kill(writer, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped by itself";

        if (fs::exists(file)) {
            ReviewDocument loaded;
            ASSERT_NO_THROW(loaded = ReviewStore::load(file)) << "after kill " << kills;
            ASSERT_EQ(loaded, documentAt(loaded.revision())) << "after kill " << kills;
            ASSERT_GE(loaded.revision(), lastRevision);
            lastRevision = loaded.revision();
        }
        // Each writer clears what the previous one stranded before it writes, so at most the
        // temporary of the writer just killed may be left.
        const auto left = dravik::test::entries(folder.path());
        const auto temporaries =
            std::count_if(left.begin(), left.end(), [](auto& n) { return n.starts_with("."); });
        ASSERT_LE(temporaries, 1) << "after kill " << kills;
        stranded += static_cast<int>(temporaries);
    }
    EXPECT_GE(kills, 100) << "too slow to kill the writer often enough";
    EXPECT_GT(lastRevision, 0) << "no writer ever completed a save";

    ReviewStore::save(documentAt(lastRevision + 1), file,
                      lastRevision == 0 ? std::nullopt : std::optional(lastRevision));
    EXPECT_EQ(dravik::test::entries(folder.path()),
              std::vector<std::string>{file.filename().string()});
    std::printf("%d kills, reached revision %lld, %d kills stranded a temporary\n", kills,
                static_cast<long long>(lastRevision), stranded);
}

} // namespace
