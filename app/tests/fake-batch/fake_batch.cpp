// SPDX-License-Identifier: Apache-2.0
// A stand-in for dravik-batch in tests: it answers "redetect" and "feasibility" the way the
// environment variable FAKE_BATCH_MODE asks, so every outcome the app must survive is at hand.
//
//   result      write a valid answer, exit 0 (the default)
//   unusable    redetect: an answer whose two passes both found no single rider, exit 0
//   attention   write a valid answer, exit 2
//   no-result   exit 0 without writing anything
//   garbage     write a truncated JSON answer, exit 0
//   fail        a sentence on stderr, exit 1
//   crash       die by SIGABRT
//   sleep       sleep FAKE_BATCH_SLEEP_MS (default 30000), then answer as "result"
//   ignore-term ignore SIGTERM and sleep 30 s; with FAKE_BATCH_PID_FILE, start a grandchild
//               that does the same after writing "<pid> <group>" there
//   flood       a MiB each on stdout and stderr, then answer as "result"
//
// FAKE_BATCH_FAIL_MATCH: "feasibility" of a manifest whose path holds this text fails as "fail".
// FAKE_BATCH_PHOTO_MS: "feasibility" pauses this long on each photo, after its progress line.
// FAKE_BATCH_ARGS_FILE: every run appends its arguments there, one line, tab-separated.

#include "dravik/atomic_file.h"
#include "dravik/detection.h"
#include "dravik/joints.h"
#include "dravik/manifest.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

std::string environment(const char* name, const std::string& fallback = {}) {
    const char* value = std::getenv(name);
    return value ? value : fallback;
}

void sleepMilliseconds(long milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// One rider with every joint spread over the crop.
dravik::DravikResult riderIn(const dravik::PixelRect& crop) {
    dravik::DravikResult result{"2D", "needsReview", 1, {}};
    const auto& names = dravik::InspectionRenderer::jointNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const double t = (static_cast<double>(i) + 0.5) / static_cast<double>(names.size());
        result.joints.push_back(
            {std::string(names[i]), crop.x + crop.width * t, crop.y + crop.height * (1 - t), 0.8});
    }
    return result;
}

void writeRetry(const std::string& requestFile, const std::string& resultFile, bool usable) {
    const dravik::RetryRequest request = dravik::RetryRequest::load(requestFile);
    dravik::DetectionRetry retry;
    if (usable) {
        retry.primary = riderIn(request.crop);
    } else {
        retry.primary = dravik::DravikResult{"2D", "noRider", 0, {}};
        retry.refined = riderIn(request.crop);
        retry.refined->status = "severalPeople";
        retry.refined->count = 2;
    }
    dravik::writeFileAtomically(resultFile, retry.encode());
}

void writeResults(const std::string& manifestFile, const std::string& outputFile) {
    const dravik::SessionManifest manifest = dravik::SessionManifest::load(manifestFile);
    dravik::ResultsFile results{"Fake detector", "1", {}};
    std::size_t total = 0;
    for (const dravik::PairInput& pair : manifest.pairs)
        total += pair.riders.size();
    std::size_t current = 0;
    const long pause = std::stol(environment("FAKE_BATCH_PHOTO_MS", "0"));
    for (const dravik::PairInput& pair : manifest.pairs)
        for (const dravik::RiderInput& rider : pair.riders) {
            std::cout << "Analysing photo " << ++current << " of " << total << ": " << rider.file
                      << std::endl;
            sleepMilliseconds(pause);
            results.riders.push_back({pair.id, rider.id, rider.sourceHash, {riderIn(rider.panel)}});
        }
    dravik::writeFileAtomically(outputFile, results.encode());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4)
        return 64;
    const std::string command = argv[1];
    const std::string input = argv[2];
    const std::string output = argv[3];
    const std::string mode = environment("FAKE_BATCH_MODE", "result");
    if (const std::string argsFile = environment("FAKE_BATCH_ARGS_FILE"); !argsFile.empty())
        std::ofstream(argsFile, std::ios::app)
            << command << '\t' << input << '\t' << output << '\n';
    std::cout << "fake dravik-batch " << command << " in mode " << mode << std::endl;

    try {
        const std::string failMatch = environment("FAKE_BATCH_FAIL_MATCH");
        if (mode == "fail" || (command == "feasibility" && !failMatch.empty() &&
                               input.find(failMatch) != std::string::npos)) {
            std::cerr << "The photo could not be read." << std::endl;
            return 1;
        }
        if (mode == "crash")
            std::abort();
        if (mode == "no-result")
            return 0;
        if (mode == "garbage") {
            std::ofstream(output) << "{\"format\": \"dravik-detection-retry\", \"vers";
            return 0;
        }
        if (mode == "ignore-term") {
            std::signal(SIGTERM, SIG_IGN);
            if (const std::string pidFile = environment("FAKE_BATCH_PID_FILE");
                !pidFile.empty() && ::fork() == 0)
                std::ofstream(pidFile) << ::getpid() << ' ' << ::getpgrp() << std::endl;
            sleepMilliseconds(30000);
            return 0;
        }
        if (mode == "sleep")
            sleepMilliseconds(std::stol(environment("FAKE_BATCH_SLEEP_MS", "30000")));
        if (mode == "flood") {
            const std::string line(1023, 'o');
            for (int i = 0; i < 1024; ++i) {
                std::cout << line << '\n';
                std::cerr << line << '\n';
            }
            std::cout << "end of stdout" << std::endl;
            std::cerr << "end of stderr" << std::endl;
        }
        if (command == "redetect")
            writeRetry(input, output, mode != "unusable");
        else
            writeResults(input, output);
        if (mode == "attention") {
            std::cerr << "Some photos need attention." << std::endl;
            return 2;
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << std::endl;
        return 1;
    }
}
