// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model_process.h"
#include "pose_worker_setup.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

namespace dravik::batch {

// A point the worker found, as fractions of the square it was sent (y down), and its score.
struct SquarePoint {
    float y = 0;
    float x = 0;
    float score = 0;
};

// The 17 COCO keypoints of the single-person model.
using SquarePose = std::array<SquarePoint, 17>;

// A box as fractions of the square.
struct SquareBox {
    float top = 0;
    float left = 0;
    float bottom = 0;
    float right = 0;
};

// One person of the multi-person model.
struct SquarePerson {
    SquarePose keypoints;
    SquareBox box;
    float score = 0;
};

// One object of the object detector: a COCO class and its box. Boxes of one object overlap.
struct SquareObject {
    SquareBox box;
    float score = 0;
    int cocoClass = 0;
};

// The models of one batch run, in two long-lived processes: the object detector in one, the
// multi-person and single-person models in the other, so that the two finders look at a photo side
// by side. Every failure is a WorkerError sentence naming the worker.
class PoseWorker {
  public:
    static constexpr int poseSide = 256;
    static constexpr int peopleSide = 256;
    static constexpr int objectSide = 416;

    explicit PoseWorker(const WorkerSetup& setup);
    ~PoseWorker();
    PoseWorker(const PoseWorker&) = delete;
    PoseWorker& operator=(const PoseWorker&) = delete;

    // Each takes a square of its side × side × 3 RGB bytes.
    SquarePose pose(const std::vector<std::uint8_t>& rgb);
    std::vector<SquarePerson> people(const std::vector<std::uint8_t>& rgb);

    // The finders in two halves each: the object detector and the multi-person model run in
    // different processes, so both can look at once, and the caller can make its next square
    // while they do.
    void sendObjects(const std::vector<std::uint8_t>& rgb);
    std::vector<SquareObject> receiveObjects();
    void sendPeople(const std::vector<std::uint8_t>& rgb);
    std::vector<SquarePerson> receivePeople();

  private:
    void checkPoint(const SquarePoint& point);
    void checkBox(const SquareBox& box);
    [[noreturn]] void failed(const std::string& what);

    ModelProcess objects_;
    ModelProcess poses_;
};

} // namespace dravik::batch
