#pragma once

#include <unistd.h>

namespace dravik {

// Closes the descriptor on every path out of a reader.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    int get() const { return fd_; }

  private:
    int fd_;
};

} // namespace dravik
