#pragma once

#include <chrono>
#include <cstdint>

namespace tessary {

// Copies a child's output from a pipe into its log, up to a number of bytes per run. What comes
// after is still read, so that the child never waits on a full pipe, but dropped; one line at the
// end of what was kept says so.
class CappedLog {
  public:
    CappedLog(int logFd, std::uint64_t capBytes) : logFd_(logFd), cap_(capBytes) {}

    // Waits up to `wait` for output on `pipeFd` (non-blocking) and takes all there is. Returns
    // false once every writer has closed the pipe; the caller must then stop waiting on it.
    bool take(int pipeFd, std::chrono::milliseconds wait);

    std::uint64_t kept() const { return kept_; }
    bool dropped() const { return dropped_; }

  private:
    void keep(const char* bytes, std::size_t count);

    int logFd_;
    std::uint64_t cap_;
    std::uint64_t kept_ = 0;
    bool dropped_ = false;
    bool failed_ = false; // a log that cannot be written (full disk) is given up, not retried
};

} // namespace tessary
