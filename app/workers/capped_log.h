// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tessary {

// Copies a child's output from a pipe into its log, up to a number of bytes per run. What comes
// after is still read, so that the child never waits on a full pipe, but dropped; one line at the
// end of what was kept says so.
class CappedLog {
  public:
    // Sees each whole line of the output, kept or dropped, without its newline.
    using LineListener = std::function<void(std::string_view line)>;

    CappedLog(int logFd, std::uint64_t capBytes, LineListener listener = {})
        : logFd_(logFd), cap_(capBytes), listener_(std::move(listener)) {}

    // Waits up to `wait` for output on `pipeFd` (non-blocking) and takes all there is. Returns
    // false once every writer has closed the pipe; the caller must then stop waiting on it.
    bool take(int pipeFd, std::chrono::milliseconds wait);

    std::uint64_t kept() const { return kept_; }
    bool dropped() const { return dropped_; }

  private:
    void keep(const char* bytes, std::size_t count);
    void listen(const char* bytes, std::size_t count);

    int logFd_;
    std::uint64_t cap_;
    std::uint64_t kept_ = 0;
    bool dropped_ = false;
    bool failed_ = false; // a log that cannot be written (full disk) is given up, not retried
    LineListener listener_;
    std::string partialLine_; // bounded: a line longer than a listener cares for is cut
};

} // namespace tessary
