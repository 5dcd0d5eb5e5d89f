#include "store/file_lock.h"

#include "dravik/error.h"
#include "store/io_failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace dravik {

std::filesystem::path FileLock::lockPath(const std::filesystem::path& file) {
    return file.parent_path() / ("." + file.filename().string() + ".lock");
}

FileLock::FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience) {
    const auto path = lockPath(file);
    fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd_ < 0)
        throwWriteFailure(errno, file);
    // flock belongs to the open file description, so two threads of one process exclude each
    // other too, and a killed holder releases it with its descriptors.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (error == EINTR)
            continue;
        if (error != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline) {
            ::close(fd_);
            if (error == EWOULDBLOCK)
                throw DravikError(quotedName(file) + " is being saved by another program, so " +
                                  "nothing was saved; try again in a moment.");
            throwWriteFailure(error, file);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

FileLock::~FileLock() {
    ::close(fd_); // releases the lock
}

} // namespace dravik
