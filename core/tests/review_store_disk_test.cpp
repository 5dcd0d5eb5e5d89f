#include "dravik/error.h"
#include "dravik/store.h"
#include "test_support.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace dravik;
using dravik::test::savedDocument;

namespace {

// A folder that a test may mount over; whatever it mounted is detached before the folder goes.
struct MountedFolderTest : testing::Test {
    dravik::test::TempDir folder;
    fs::path file = folder.path() / "joint-review-0123456789ab.json";
    bool mounted = false;

    void TearDown() override {
        if (mounted)
            ::umount2(folder.path().c_str(), MNT_DETACH);
    }

    // Fails the test with the refusal's sentence unless saving is refused and the review on disk
    // is still `kept`, with nothing else left in the folder.
    std::string refusal(const ReviewDocument& doc, std::int64_t expected,
                        const ReviewDocument& kept) {
        std::string sentence;
        try {
            ReviewStore::save(doc, file, expected);
            ADD_FAILURE() << "the save was not refused";
        } catch (const DravikError& e) {
            sentence = e.message();
        }
        EXPECT_EQ(ReviewStore::load(file), kept);
        EXPECT_EQ(dravik::test::entries(folder.path()),
                  std::vector<std::string>{file.filename().string()});
        return sentence;
    }
};

TEST_F(MountedFolderTest, FullDiskKeepsThePreviousReview) {
    if (::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "cannot mount a small tmpfs here (" << std::strerror(errno)
                     << "); needs root with CAP_SYS_ADMIN";
    mounted = true;
    ReviewStore::save(savedDocument(1), file, std::nullopt);

    const auto big = savedDocument(2, 40); // about 150 KB on a 64 KB disk
    EXPECT_EQ(refusal(big, 1, savedDocument(1)),
              "There is not enough disk space to save “joint-review-0123456789ab.json”; nothing on "
              "disk was changed.");

    // Once space is back the same save goes through.
    ReviewStore::save(savedDocument(2, 10), file, 1);
    EXPECT_EQ(ReviewStore::load(file), savedDocument(2, 10));
}

TEST_F(MountedFolderTest, ReadOnlyFolderIsASentenceAndChangesNothing) {
    ReviewStore::save(savedDocument(1), file, std::nullopt);
    if (::geteuid() != 0) {
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
    const std::string sentence = refusal(savedDocument(2), 1, savedDocument(1));
    if (::geteuid() == 0) {
        EXPECT_EQ(sentence, "“joint-review-0123456789ab.json” cannot be saved because its folder "
                            "is on a read-only disk; nothing on disk was changed.");
    } else {
        EXPECT_EQ(sentence, "“joint-review-0123456789ab.json” cannot be saved because its folder "
                            "is read-only or not writable for you; nothing on disk was changed.");
        fs::permissions(folder.path(), fs::perms(0700)); // lets the folder be removed
    }
}

} // namespace
