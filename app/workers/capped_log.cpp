// SPDX-License-Identifier: Apache-2.0
#include "capped_log.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace tessary {

namespace {

bool writeAll(int fd, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(fd, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

bool CappedLog::take(int pipeFd, std::chrono::milliseconds wait) {
    pollfd ready{pipeFd, POLLIN, 0};
    const int waitMs = static_cast<int>(std::max<std::chrono::milliseconds::rep>(wait.count(), 0));
    if (::poll(&ready, 1, waitMs) <= 0)
        return true; // nothing yet, or a signal: look again later
    // Bounded, so that a writer faster than this loop cannot keep the caller from its deadline.
    char buffer[64 * 1024];
    for (int round = 0; round < 64; ++round) {
        const ssize_t got = ::read(pipeFd, buffer, sizeof buffer);
        if (got == 0)
            return false;
        if (got < 0)
            return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
        keep(buffer, static_cast<std::size_t>(got));
        listen(buffer, static_cast<std::size_t>(got));
    }
    return true;
}

void CappedLog::listen(const char* bytes, std::size_t count) {
    constexpr std::size_t longestLine = 4096;
    if (!listener_)
        return;
    for (const char* end = bytes + count; bytes != end; ++bytes) {
        if (*bytes != '\n') {
            if (partialLine_.size() < longestLine)
                partialLine_ += *bytes;
            continue;
        }
        listener_(partialLine_);
        partialLine_.clear();
    }
}

void CappedLog::keep(const char* bytes, std::size_t count) {
    if (dropped_ || failed_)
        return;
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(count, cap_ - kept_));
    failed_ = !writeAll(logFd_, bytes, room);
    kept_ += room;
    if (room == count || failed_)
        return;
    dropped_ = true;
    const std::string limit = cap_ % (1u << 20) == 0 ? std::to_string(cap_ >> 20) + " MiB"
                                                     : std::to_string(cap_) + " bytes";
    const std::string notice =
        "\n[Tessary dropped the rest of this output: a run's log keeps at most " + limit + ".]\n";
    writeAll(logFd_, notice.data(), notice.size());
}

} // namespace tessary
