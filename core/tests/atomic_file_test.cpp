// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "io/atomic_file.h"
#include "store/file_lock.h"
#include "test_support.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using namespace dravik;

namespace {

struct AtomicFileTest : testing::Test {
    dravik::test::TempDir temporary;
    const fs::path& folder = temporary.path();

    static std::string read(const fs::path& path) { return dravik::test::readText(path); }
    std::vector<std::string> names() const { return dravik::test::entries(folder); }
};

TEST_F(AtomicFileTest, ReplacesContentKeepsModeAndLeavesOnlyTheFile) {
    const auto file = folder / "request.json";
    const std::string big(3'000'000, 'x');
    const mode_t oldMask = ::umask(027);
    writeFileAtomically(file, big);
    ::umask(oldMask);
    EXPECT_EQ(read(file), big);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640)) << "a new file follows the umask";

    fs::permissions(file, fs::perms(0604));
    // In pieces, more than one writev takes (IOV_MAX), empty ones among them.
    std::vector<std::string> parts;
    std::string whole;
    for (int i = 0; i < 2500; ++i)
        whole += parts.emplace_back(i % 7 == 0 ? "" : std::to_string(i) + ",");
    const std::vector<std::string_view> pieces(parts.begin(), parts.end());
    writeFileAtomically(file, pieces);
    EXPECT_EQ(read(file), whole);
    writeFileAtomically(file, "{}");
    EXPECT_EQ(read(file), "{}");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604));
    EXPECT_EQ(names(), std::vector<std::string>{"request.json"});
    EXPECT_EQ(
        dravik::test::failureOf([&] { writeFileAtomically(folder / "gone/result.json", "1"); }),
        "\u201cresult.json\u201d cannot be saved because its folder does not exist.");
}

// A file size limit makes write() stop short and then fail: the cut-off content must never
// replace the file.
TEST_F(AtomicFileTest, ShortWriteNeverReplacesTheFile) {
    const auto file = folder / "joint-review-abc.json";
    writeFileAtomically(file, "previous");
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit limited = old;
    limited.rlim_cur = 100'000;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    const std::string sentence =
        dravik::test::failureOf([&] { writeFileAtomically(file, std::string(250'000, 'x')); });
    // Pieces cut off in the middle of one are refused the same way.
    const std::string part(60'000, 'y');
    const std::vector<std::string_view> pieces(5, part);
    const std::string inPieces =
        dravik::test::failureOf([&] { writeFileAtomically(file, pieces); });
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(sentence, "\u201cjoint-review-abc.json\u201d could not be saved (File too large); "
                        "nothing on disk was changed.");
    EXPECT_EQ(inPieces, sentence);
    EXPECT_EQ(read(file), "previous");
    EXPECT_EQ(names(), std::vector<std::string>{"joint-review-abc.json"});
}

TEST_F(AtomicFileTest, StaleTemporaryRemovalTouchesOnlyOurPrefix) {
    const auto file = folder / "joint-review-abc.json";
    std::ofstream(folder / ".joint-review-abc.json.tmp-Qx81zz") << "torn";
    std::ofstream(folder / ".joint-review-abcd.json.tmp-Qx81zz") << "another file's";
    std::ofstream(folder / "joint-review-abc.json") << "kept";
    removeStaleTemporaries(file);
    EXPECT_EQ(names(), (std::vector<std::string>{".joint-review-abcd.json.tmp-Qx81zz",
                                                 "joint-review-abc.json"}));
}

TEST_F(AtomicFileTest, LockExcludesOtherProcessesUntilReleased) {
    const auto file = folder / "joint-review-abc.json";
    int held[2];
    int release[2];
    ASSERT_EQ(::pipe(held), 0);
    ASSERT_EQ(::pipe(release), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FileLock lock(file);
        char byte = 1;
        (void)!::write(held[1], &byte, 1);
        (void)!::read(release[0], &byte, 1);
        ::usleep(200'000); // still held while the parent starts waiting
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(held[0], &byte, 1), 1);
    EXPECT_EQ(
        dravik::test::failureOf([&] { FileLock refused(file, std::chrono::milliseconds(50)); }),
        "\u201cjoint-review-abc.json\u201d is being saved by another program, so nothing "
        "was saved; try again in a moment.");
    ASSERT_EQ(::write(release[1], &byte, 1), 1);
    const auto start = std::chrono::steady_clock::now();
    { FileLock waited(file, std::chrono::seconds(10)); }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    int status = 0;
    ::waitpid(child, &status, 0);
    for (int fd : {held[0], held[1], release[0], release[1]})
        ::close(fd);
    EXPECT_TRUE(fs::exists(FileLock::lockPath(file)));
}

} // namespace
