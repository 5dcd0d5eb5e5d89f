// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tessary {

// How long a batch program may run, how often it is looked at, how long it gets to stop after
// the polite request before it is killed, and how much of its output a run's log keeps.
struct ChildLimits {
    std::chrono::milliseconds timeout;
    std::chrono::milliseconds grace;
    std::chrono::milliseconds poll{100};
    std::uint64_t logBytes = 16u << 20;
};

struct ChildExit {
    bool timedOut = false;
    bool crashed = false; // ended by a signal
    int status = 0;       // exit status when it exited
};

// While stopping, a running program is stopped as at its time-out and none is started. The
// application stops them when it quits, so that quitting does not wait for a batch program.
void setChildrenStopping(bool stopping);

// Runs `program` in a process group of its own and blocks until it ends or the time-out stops it.
// Its output and errors come through a pipe that the calling thread drains into `logFd`, so the
// program never waits on a full pipe; past `limits.logBytes` the rest is dropped, which one line
// at the end of the log says. At the time-out the whole group, whatever the program started,
// gets SIGTERM and after the grace SIGKILL. Throws a DravikError naming the program when it
// cannot be started, or when programs are stopping.
// `onLine`, when given, sees each line of the output as it comes, on the calling thread.
ChildExit runChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   int logFd, const ChildLimits& limits,
                   const std::function<void(std::string_view line)>& onLine = {});

} // namespace tessary
