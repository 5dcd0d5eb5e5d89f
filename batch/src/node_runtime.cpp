// SPDX-License-Identifier: Apache-2.0
#include "node_runtime.h"

#include "dravik/error.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace dravik::batch {

namespace fs = std::filesystem;

namespace {

constexpr int oldestMajor = 18;

std::string curly(const fs::path& path) {
    return "\u201c" + path.string() + "\u201d";
}

// What `node --version` prints ("v18.20.4"), or nothing when it cannot be run or does not end
// within a few seconds.
std::optional<std::string> versionOutput(const fs::path& node) {
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0)
        return std::nullopt;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = node.string();
    std::string flag = "--version";
    char* argv[] = {program.data(), flag.data(), nullptr};
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, argv[0], &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (error != 0) {
        ::close(out[0]);
        return std::nullopt;
    }
    std::string output;
    char buffer[256];
    pollfd readable{out[0], POLLIN, 0};
    bool ended = false;
    while (!ended) {
        const int ready = ::poll(&readable, 1, 10000);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            break;
        const ssize_t got = ::read(out[0], buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        ended = got <= 0;
        if (got > 0 && output.size() < 4096)
            output.append(buffer, std::size_t(got));
    }
    ::close(out[0]);
    if (!ended)
        ::kill(pid, SIGKILL); // it hangs
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return output;
}

std::optional<int> majorVersion(const std::string& output) {
    if (output.empty() || output[0] != 'v')
        return std::nullopt;
    int major = 0;
    const auto [end, error] =
        std::from_chars(output.data() + 1, output.data() + output.size(), major);
    if (error != std::errc() || end == output.data() + 1 || *end != '.')
        return std::nullopt;
    return major;
}

} // namespace

fs::path configuredNode() {
    return TESSARY_NODE;
}

fs::path presentNode(const fs::path& node) {
    if (::access(node.c_str(), X_OK) != 0)
        throw DravikError("Node.js, which runs the pose worker, is missing at " + curly(node) +
                          "; install Node.js " + std::to_string(oldestMajor) +
                          " or later there (Debian's package nodejs) or rebuild Tessary with "
                          "TESSARY_NODE naming another.");
    return node;
}

void checkNodeVersion(const fs::path& node, const std::optional<std::string>& version) {
    const auto major = version ? majorVersion(*version) : std::nullopt;
    if (!major)
        throw DravikError("Node.js at " + curly(node) +
                          " did not report its version, so it cannot run the pose worker.");
    if (*major < oldestMajor)
        throw DravikError("The pose worker needs Node.js " + std::to_string(oldestMajor) +
                          " or later, but " + curly(node) + " is version " +
                          version->substr(1, version->find_first_of("\r\n") - 1) + ".");
}

fs::path checkedNode(const fs::path& node) {
    checkNodeVersion(presentNode(node), versionOutput(node));
    return node;
}

} // namespace dravik::batch
