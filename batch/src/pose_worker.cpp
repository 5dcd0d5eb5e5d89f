// SPDX-License-Identifier: Apache-2.0
#include "pose_worker.h"

#include <string>

namespace dravik::batch {

namespace {

enum Model : std::uint32_t { poseModel = 1, peopleModel = 2, objectModel = 3 };

// 17 rows of (y, x, score).
SquarePose posed(const float* rows) {
    SquarePose pose;
    for (SquarePoint& point : pose) {
        point = {rows[0], rows[1], rows[2]};
        rows += 3;
    }
    return pose;
}

} // namespace

// The object detector's process loads and runs about as long as the two pose models' does.
PoseWorker::PoseWorker(const WorkerSetup& setup)
    : objects_(setup, "objects"), poses_(setup, "poses") {}

// Both are asked to leave before either is waited for, so that they end side by side.
PoseWorker::~PoseWorker() {
    objects_.leave();
    poses_.leave();
}

void PoseWorker::failed(const std::string& what) {
    poses_.stop();
    objects_.failed(what);
}

SquarePose PoseWorker::pose(const std::vector<std::uint8_t>& rgb) {
    const std::size_t joints = std::tuple_size_v<SquarePose>;
    std::vector<float> values = poses_.run(poseModel, poseSide, rgb, 3, joints);
    if (values.size() != joints * 3)
        failed("answered with " + std::to_string(values.size() / 3) + " keypoints instead of " +
               std::to_string(joints) + ".");
    SquarePose pose = posed(values.data());
    for (const SquarePoint& point : pose)
        checkPoint(point);
    return pose;
}

std::vector<SquarePerson> PoseWorker::people(const std::vector<std::uint8_t>& rgb) {
    sendPeople(rgb);
    return receivePeople();
}

void PoseWorker::sendPeople(const std::vector<std::uint8_t>& rgb) {
    poses_.send(peopleModel, peopleSide, rgb);
}

void PoseWorker::sendObjects(const std::vector<std::uint8_t>& rgb) {
    objects_.send(objectModel, objectSide, rgb);
}

std::vector<SquarePerson> PoseWorker::receivePeople() {
    constexpr std::size_t columns = 56; // 17 keypoints, a box and a score
    std::vector<float> values = poses_.receive(columns, 6);
    std::vector<SquarePerson> found(values.size() / columns);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const float* row = values.data() + i * columns;
        found[i].keypoints = posed(row);
        found[i].box = {row[51], row[52], row[53], row[54]};
        found[i].score = row[55];
        for (const SquarePoint& point : found[i].keypoints)
            checkPoint(point);
        checkBox(found[i].box);
        checkPoint({0, 0, found[i].score});
    }
    return found;
}

std::vector<SquareObject> PoseWorker::receiveObjects() {
    constexpr std::size_t columns = 6; // a box, a score and a class
    // One row per cell of the detector's three grids and class asked for, at most.
    constexpr std::size_t maxRows = (52 * 52 + 26 * 26 + 13 * 13) * 3;
    std::vector<float> values = objects_.receive(columns, maxRows);
    std::vector<SquareObject> found(values.size() / columns);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const float* row = values.data() + i * columns;
        found[i].box = {row[0], row[1], row[2], row[3]};
        found[i].score = row[4];
        checkBox(found[i].box);
        checkPoint({0, 0, found[i].score});
        if (!(row[5] >= 0 && row[5] < 80))
            failed("answered with an object of no known kind.");
        found[i].cocoClass = int(row[5]);
    }
    return found;
}

// Fractions a little outside the square are fine: a joint may lie just past its edge.
void PoseWorker::checkPoint(const SquarePoint& p) {
    if (!(p.x >= -1 && p.x <= 2 && p.y >= -1 && p.y <= 2 && p.score >= 0 && p.score <= 1))
        failed("answered with points outside the picture it was given.");
}

void PoseWorker::checkBox(const SquareBox& box) {
    checkPoint({box.top, box.left, 0});
    checkPoint({box.bottom, box.right, 0});
    if (!(box.top <= box.bottom && box.left <= box.right))
        failed("answered with a box turned inside out.");
}

} // namespace dravik::batch
