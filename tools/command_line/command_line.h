// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <getopt.h>
#include <optional>
#include <string>
#include <vector>

namespace tessary {

// What every tool's command line shares: -o FILE, --help, --version and the usage errors, which
// end with the usage and status 64 (EX_USAGE).
class CommandLine {
  public:
    static constexpr int usageStatus = 64;

    CommandLine(std::string program, const char* usage, const char* help)
        : program_(std::move(program)), usage_(usage), help_(help) {}

    // Reads the options. The tool's own are in `extra` (their `val` 256 and up), each handed to
    // `take` with its value, if any. Returns the status to leave with after help, the version or a
    // usage error; none to go on, with the operands from `optind`.
    std::optional<int> parse(int argc, char** argv, const std::vector<option>& extra,
                             const std::function<void(int option, const char* value)>& take);
    // Says what is wrong and how to call the tool; returns the usage status.
    int usageError(const std::string& problem) const;
    const std::string& output() const { return output_; }

  private:
    std::string program_;
    const char* usage_;
    const char* help_;
    std::string output_;
};

} // namespace tessary
