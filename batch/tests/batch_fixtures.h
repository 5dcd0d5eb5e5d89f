// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "batch_run.h"
#include "photo_fixtures.h"
#include "test_support.h"

namespace batch_fixtures {

// A grey JPEG with a red 5 x 5 block centred on (dotX, dotY); returns its content hash.
inline std::string writeDotPhoto(const std::filesystem::path& file, int width, int height, int dotX,
                                 int dotY) {
    auto picture = photo_fixtures::Picture::filled(width, height, [&](int x, int y) {
        bool dot = std::abs(x - dotX) <= 2 && std::abs(y - dotY) <= 2;
        return dot ? photo_fixtures::Rgb{255, 0, 0} : photo_fixtures::Rgb{120, 120, 120};
    });
    auto bytes = photo_fixtures::encodeJpeg(picture);
    dravik::test::writeText(file, bytes);
    return dravik::test::hashOf(bytes);
}

// The fake worker in `mode` (see fake_pose_worker.cpp).
inline dravik::batch::WorkerSetup fakeWorker(const std::string& mode, int timeoutMs = 5000) {
    return {"fake_pose_worker", {FAKE_POSE_WORKER, mode}, std::chrono::milliseconds(timeoutMs), {}};
}

} // namespace batch_fixtures
