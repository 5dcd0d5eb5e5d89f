// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pose_worker_setup.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace dravik::batch {

// One Node process running some of the models, spoken to over two pipes. Its stderr is ours, so
// its diagnostics land in the caller's log. Every failure stops it and is a WorkerError sentence
// naming the worker.
class ModelProcess {
  public:
    static constexpr std::uint32_t magic = 0x31505344;

    // Starts the process with `role` added to the setup's command; the first request waits for
    // its ready answer, so that it loads while the caller does other work, and refuses a Node.js
    // too old for the worker.
    ModelProcess(const WorkerSetup& setup, const std::string& role);
    ~ModelProcess();
    ModelProcess(const ModelProcess&) = delete;
    ModelProcess& operator=(const ModelProcess&) = delete;

    // Sends one side × side RGB square to `model` and reads the answer: at most `maxRows` rows of
    // `columns` numbers.
    std::vector<float> run(std::uint32_t model, int side, const std::vector<std::uint8_t>& rgb,
                           std::size_t columns, std::size_t maxRows);

    // The two halves of run(), so that two processes can work side by side.
    void send(std::uint32_t model, int side, const std::vector<std::uint8_t>& rgb);
    std::vector<float> receive(std::size_t columns, std::size_t maxRows);

    [[noreturn]] void failed(const std::string& what);
    // Ends its input, which asks it to leave; stop() then waits for it (half a second at most).
    void leave();
    void stop();

  private:
    void awaitReady();
    std::string readReady();
    std::uint32_t readHead();
    // A length, then that many bytes of text; a length over `limit` fails with `tooLong`.
    std::string readText(std::uint32_t limit, const std::string& tooLong);
    void readExactly(void* buffer, std::size_t size);
    void writeAll(const void* buffer, std::size_t size);
    [[noreturn]] void timedOut();

    std::string name_;
    std::filesystem::path node_;
    std::chrono::milliseconds timeout_;
    std::chrono::steady_clock::time_point deadline_;
    std::chrono::steady_clock::time_point readyBy_;
    bool ready_ = false;
    pid_t pid_ = -1;
    int toWorker_ = -1;
    int fromWorker_ = -1;
};

} // namespace dravik::batch
