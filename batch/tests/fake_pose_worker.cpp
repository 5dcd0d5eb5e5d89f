// SPDX-License-Identifier: Apache-2.0
// usage: fake_pose_worker <mode>
// good: an upright body with the nose on the reddest pixel sent, seen as one person by the people
// model and as nothing by the object model; empty: nobody, low scores; short: 5 keypoints; wild:
// keypoints far outside the square; garbage, die, hang, fail: answers nonsense, exits, never
// answers, reports a failure; silent: never says it is ready; old: says it runs on Node.js 16.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::uint32_t magic = 0x31505344;

void put(const void* data, std::size_t size) {
    if (std::fwrite(data, 1, size, stdout) != size)
        _exit(5);
}

void answer(std::uint32_t columns, const std::vector<float>& values) {
    const std::uint32_t head[4] = {magic, 0, columns ? std::uint32_t(values.size() / columns) : 0,
                                   columns};
    put(head, sizeof head);
    put(values.data(), values.size() * sizeof(float));
}

// (y, x) of COCO keypoints 1..16 for an upright body.
constexpr float body[16][2] = {{.18f, .47f}, {.18f, .53f}, {.2f, .44f},  {.2f, .56f},
                               {.3f, .4f},   {.3f, .6f},   {.42f, .38f}, {.42f, .62f},
                               {.52f, .37f}, {.52f, .63f}, {.6f, .43f},  {.6f, .57f},
                               {.75f, .43f}, {.75f, .57f}, {.9f, .43f},  {.9f, .57f}};

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "good";
    if (mode == "silent")
        ::sleep(60);
    // Ready: no rows, then the version of the Node.js it runs on.
    const std::string version = mode == "old" ? "v16.20.2" : "v20.11.1";
    const std::uint32_t ready[4] = {magic, 0, 0, std::uint32_t(version.size())};
    put(ready, sizeof ready);
    put(version.data(), version.size());
    for (std::fflush(stdout);; std::fflush(stdout)) {
        std::uint32_t header[3];
        if (std::fread(header, sizeof header, 1, stdin) != 1)
            return 0;
        const int side = int(header[2]);
        std::vector<std::uint8_t> rgb(std::size_t(side) * side * 3);
        if (header[0] != magic || std::fread(rgb.data(), rgb.size(), 1, stdin) != 1)
            return 4;
        if (mode == "die")
            return 3;
        if (mode == "hang")
            ::sleep(60);
        if (mode == "garbage" || mode == "fail") {
            const std::uint32_t failure[3] = {mode == "fail" ? magic : 0x5f676553u, 1, 16};
            put(failure, sizeof failure);
            put("the model broke.", 16);
            continue;
        }
        int best = 0;
        for (int i = 1; i < side * side; ++i)
            if (rgb[std::size_t(i) * 3] - rgb[std::size_t(i) * 3 + 1] >
                rgb[std::size_t(best) * 3] - rgb[std::size_t(best) * 3 + 1])
                best = i;
        const float score = mode == "empty" ? 0.1f : 0.9f;
        const float noseY = (float(best / side) + 0.5f) / float(side);
        const float noseX = (float(best % side) + 0.5f) / float(side);
        std::vector<float> values = {noseY, noseX, score};
        for (const auto& point : body)
            values.insert(values.end(),
                          {point[0], point[1], score - 0.001f * float(&point - body)});
        if (mode == "short")
            values.resize(15);
        if (mode == "wild")
            values[1] = 7;
        if (header[1] == 3) {
            answer(6, {}); // no objects
        } else if (header[1] == 2) {
            if (mode == "empty")
                values.clear();
            else // the box of the keypoints, then the person's score
                values.insert(values.end(), {std::min(noseY, 0.18f), std::min(noseX, 0.37f),
                                             std::max(noseY, 0.9f), std::max(noseX, 0.63f), score});
            answer(56, values);
        } else {
            answer(3, values);
        }
    }
}
