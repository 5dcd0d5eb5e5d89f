#pragma once

#include "dravik/error.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

namespace dravik::batch {

// The worker failed: unlike a bad photo, nothing more can be detected in this run.
class WorkerError : public DravikError {
  public:
    using DravikError::DravikError;
};

// Where the pose worker comes from and how long each of its answers may take.
struct WorkerSetup {
    std::string name;                 // the file messages name, e.g. the script
    std::vector<std::string> command; // program first
    std::chrono::milliseconds timeout{30000};
};

// What the worker found in one square: 17 COCO keypoints as fractions of the square.
struct WorkerAnswer {
    struct Keypoint {
        float y = 0;
        float x = 0;
        float score = 0;
    };
    int people = -1; // -1 when not asked for
    std::vector<Keypoint> keypoints;
};

// The long-lived pose model process of one batch run, spoken to over two pipes. Its stderr is
// ours, so its diagnostics land in the caller's log. Every failure is a DravikError sentence.
class PoseWorker {
  public:
    static constexpr int side = 256;
    static constexpr std::uint32_t magic = 0x31505344;
    static constexpr std::size_t keypointCount = 17;

    // Starts the worker and waits for its "loaded" answer.
    explicit PoseWorker(const WorkerSetup& setup);
    ~PoseWorker();
    PoseWorker(const PoseWorker&) = delete;
    PoseWorker& operator=(const PoseWorker&) = delete;

    // `rgb` is side × side × 3 bytes.
    WorkerAnswer detect(const std::vector<std::uint8_t>& rgb, bool countPeople);

  private:
    WorkerAnswer readAnswer(std::size_t expectedKeypoints);
    void readExactly(void* buffer, std::size_t size);
    void writeAll(const void* buffer, std::size_t size);
    [[noreturn]] void failed(const std::string& what);
    [[noreturn]] void timedOut();
    void stop();

    std::string name_;
    std::chrono::milliseconds timeout_;
    std::chrono::steady_clock::time_point deadline_;
    pid_t pid_ = -1;
    int toWorker_ = -1;
    int fromWorker_ = -1;
};

} // namespace dravik::batch
