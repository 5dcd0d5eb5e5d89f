#pragma once

#include <filesystem>

namespace tessary {

// A batch program's log: created empty (or truncated) and open for writing until destroyed.
// The descriptor is close-on-exec; a child gets it only as its duplicated output.
class LogFile {
  public:
    explicit LogFile(const std::filesystem::path& file);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    int descriptor() const { return fd_; }
    int error() const { return error_; } // errno of a failed creation

  private:
    int fd_ = -1;
    int error_ = 0;
};

} // namespace tessary
