// SPDX-License-Identifier: Apache-2.0
#include "model_process.h"

#include "node_runtime.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace dravik::batch {

namespace {

std::string curly(const std::string& text) {
    return "\u201c" + text + "\u201d";
}

void closeIfOpen(int& fd) {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

} // namespace

ModelProcess::ModelProcess(const WorkerSetup& setup, const std::string& role)
    : name_(curly(setup.name)), node_(setup.node), timeout_(setup.timeout) {
    std::vector<std::string> command = setup.command;
    if (command.empty())
        throw WorkerError("The pose worker " + name_ + " has no command to start.");
    command.push_back(role);
    int in[2];
    int out[2];
    if (::pipe2(in, O_CLOEXEC) != 0)
        throw WorkerError("The pose worker " + name_ + " could not be given a pipe.");
    if (::pipe2(out, O_CLOEXEC) != 0) {
        ::close(in[0]);
        ::close(in[1]);
        throw WorkerError("The pose worker " + name_ + " could not be given a pipe.");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::vector<char*> argv;
    for (std::string& part : command)
        argv.push_back(part.data());
    argv.push_back(nullptr);
    int error = ::posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(out[1]);
    toWorker_ = in[1];
    fromWorker_ = out[0];
    if (error != 0) {
        pid_ = -1;
        closeIfOpen(toWorker_);
        closeIfOpen(fromWorker_);
        throw WorkerError("The pose worker " + name_ + " could not be started with " +
                          curly(command.front()) + " (" + std::strerror(error) + ").");
    }
    // Writes never block, so that a hung worker is noticed by the deadline.
    ::fcntl(toWorker_, F_SETFL, ::fcntl(toWorker_, F_GETFL) | O_NONBLOCK);
    // The models load while the caller reads its photo; the first request waits for them.
    readyBy_ = std::chrono::steady_clock::now() + timeout_;
}

ModelProcess::~ModelProcess() {
    stop();
}

void ModelProcess::leave() {
    closeIfOpen(toWorker_);
    closeIfOpen(fromWorker_);
}

void ModelProcess::stop() {
    if (pid_ < 0)
        return;
    leave();
    for (int i = 0; i < 100; ++i) {
        if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

void ModelProcess::failed(const std::string& what) {
    stop();
    throw WorkerError("The pose worker " + name_ + " " + what);
}

void ModelProcess::timedOut() {
    std::ostringstream text;
    text << "did not answer within " << timeout_.count() / 1000.0 << " seconds.";
    failed(text.str());
}

std::vector<float> ModelProcess::run(std::uint32_t model, int side,
                                     const std::vector<std::uint8_t>& rgb, std::size_t columns,
                                     std::size_t maxRows) {
    send(model, side, rgb);
    return receive(columns, maxRows);
}

void ModelProcess::send(std::uint32_t model, int side, const std::vector<std::uint8_t>& rgb) {
    if (pid_ < 0)
        throw WorkerError("The pose worker " + name_ + " is no longer running.");
    if (!ready_) {
        awaitReady();
        ready_ = true;
    }
    std::uint32_t header[3] = {magic, model, std::uint32_t(side)};
    deadline_ = std::chrono::steady_clock::now() + timeout_;
    writeAll(header, sizeof header);
    writeAll(rgb.data(), rgb.size());
}

void ModelProcess::awaitReady() {
    deadline_ = readyBy_;
    std::string version;
    try {
        version = readReady();
    } catch (const WorkerError&) {
        // A Node.js too old or broken to run the worker says more than the worker's failure.
        if (!node_.empty())
            try {
                checkedNode(node_);
            } catch (const DravikError& refusal) {
                throw WorkerError(refusal.what());
            }
        throw;
    }
    if (!node_.empty())
        try {
            checkNodeVersion(node_, version);
        } catch (const DravikError& refusal) {
            stop();
            throw WorkerError(refusal.what());
        }
}

// No rows, then the version of the Node.js running the worker.
std::string ModelProcess::readReady() {
    if (readHead() != 0)
        failed("answered with something that is not a pose answer.");
    return readText(64, "answered with something that is not a pose answer.");
}

std::string ModelProcess::readText(std::uint32_t limit, const std::string& tooLong) {
    std::uint32_t length = 0;
    readExactly(&length, sizeof length);
    if (length > limit)
        failed(tooLong);
    std::string text(length, '\0');
    readExactly(text.data(), length);
    return text;
}

// The magic and a status: a failure becomes a WorkerError with the worker's sentence.
std::uint32_t ModelProcess::readHead() {
    std::uint32_t head[3];
    readExactly(head, 2 * sizeof head[0]);
    if (head[0] != magic)
        failed("answered with something that is not a pose answer.");
    if (head[1] != 0)
        failed("failed: " + readText(4096, "reported a failure with an over-long message."));
    readExactly(&head[2], sizeof head[2]);
    return head[2];
}

std::vector<float> ModelProcess::receive(std::size_t columns, std::size_t maxRows) {
    if (pid_ < 0)
        throw WorkerError("The pose worker " + name_ + " is no longer running.");
    const std::uint32_t rows = readHead();
    std::uint32_t width = 0;
    readExactly(&width, sizeof width);
    if (rows > maxRows || (rows > 0 && width != columns))
        failed("answered with a table of " + std::to_string(rows) + " \u00d7 " +
               std::to_string(width) + " numbers, which is not what was asked for.");
    std::vector<float> values(static_cast<std::size_t>(rows) * columns);
    readExactly(values.data(), values.size() * sizeof(float));
    return values;
}

void ModelProcess::readExactly(void* buffer, std::size_t size) {
    auto* bytes = static_cast<char*>(buffer);
    while (size > 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline_ - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            timedOut();
        pollfd fd{fromWorker_, POLLIN, 0};
        int ready = ::poll(&fd, 1, int(left.count()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0)
            continue;
        ssize_t got = ::read(fromWorker_, bytes, size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            failed("stopped unexpectedly.");
        bytes += got;
        size -= std::size_t(got);
    }
}

void ModelProcess::writeAll(const void* buffer, std::size_t size) {
    const auto* bytes = static_cast<const char*>(buffer);
    while (size > 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline_ - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            timedOut();
        pollfd fd{toWorker_, POLLOUT, 0};
        int ready = ::poll(&fd, 1, int(left.count()));
        if (ready <= 0)
            continue;
        ssize_t put = ::write(toWorker_, bytes, size);
        if (put < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (put <= 0)
            failed("stopped unexpectedly.");
        bytes += put;
        size -= std::size_t(put);
    }
}

} // namespace dravik::batch
