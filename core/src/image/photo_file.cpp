#include "image/photo_file.h"

#include "dravik/error.h"
#include "image/photo_text.h"
#include "io/file_descriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace dravik {

namespace {

constexpr std::uint64_t maxPhotoBytes = 256ull << 20;

[[noreturn]] void failRead(const std::filesystem::path& file, int error) {
    throw DravikError(quotedFileName(file) + " cannot be read (" + std::strerror(error) + ").");
}

} // namespace

std::shared_ptr<const std::vector<std::uint8_t>> readPhotoFile(const std::filesystem::path& file) {
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0)
        failRead(file, errno);
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0)
        failRead(file, errno);
    if (!S_ISREG(status.st_mode))
        throw DravikError(quotedFileName(file) + " is not a regular file.");
    if (static_cast<std::uint64_t>(status.st_size) > maxPhotoBytes)
        throw DravikError(quotedFileName(file) +
                          " is larger than 256 MiB, which is more than a photo can be.");
    auto bytes =
        std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < bytes->size()) {
        const ssize_t got = ::read(fd.get(), bytes->data() + done, bytes->size() - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            failRead(file, errno);
        if (got == 0)
            break; // the file shrank while being read
        done += static_cast<std::size_t>(got);
    }
    bytes->resize(done);
    return bytes;
}

} // namespace dravik
