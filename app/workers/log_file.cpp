#include "log_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tessary {

LogFile::LogFile(const std::filesystem::path& file) {
    fd_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ < 0)
        error_ = errno;
}

LogFile::~LogFile() {
    if (fd_ >= 0)
        ::close(fd_); // nothing useful to do about a failed close of a log
}

} // namespace tessary
