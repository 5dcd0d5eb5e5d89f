// usage: fake_pose_worker <mode> [request log]
// good: keypoints of an upright body, the nose on the reddest pixel sent; one person
// crowd: the same with three people; empty: nobody, low scores
// garbage, die, hang, fail: answers nonsense, exits, never answers, reports a failure
// silent: never says it is ready; short: answers with 5 keypoints
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::uint32_t magic = 0x31505344;

bool readAll(void* buffer, std::size_t size) {
    auto* bytes = static_cast<char*>(buffer);
    while (size > 0) {
        ssize_t got = ::read(0, bytes, size);
        if (got <= 0)
            return false;
        bytes += got;
        size -= std::size_t(got);
    }
    return true;
}

void writeAll(const void* buffer, std::size_t size) {
    const auto* bytes = static_cast<const char*>(buffer);
    while (size > 0) {
        ssize_t put = ::write(1, bytes, size);
        if (put <= 0)
            _exit(5);
        bytes += put;
        size -= std::size_t(put);
    }
}

void answer(std::int32_t people, const std::vector<float>& values) {
    std::uint32_t head[2] = {magic, 0};
    std::int32_t counts[2] = {people, std::int32_t(values.size() / 3)};
    writeAll(head, sizeof head);
    writeAll(counts, sizeof counts);
    writeAll(values.data(), values.size() * sizeof(float));
}

// (y, x) of COCO keypoints 1..16 for an upright body.
constexpr float body[16][2] = {{.18f, .47f}, {.18f, .53f}, {.2f, .44f},  {.2f, .56f},
                               {.3f, .4f},   {.3f, .6f},   {.42f, .38f}, {.42f, .62f},
                               {.52f, .37f}, {.52f, .63f}, {.6f, .43f},  {.6f, .57f},
                               {.75f, .43f}, {.75f, .57f}, {.9f, .43f},  {.9f, .57f}};

} // namespace

int main(int argc, char** argv) {
    std::string mode = argc > 1 ? argv[1] : "good";
    FILE* log = argc > 2 ? std::fopen(argv[2], "a") : nullptr;
    if (mode == "silent")
        ::sleep(60);
    answer(0, {});
    for (;;) {
        std::uint32_t header[3];
        if (!readAll(header, sizeof header))
            return 0;
        std::vector<std::uint8_t> rgb(std::size_t(header[2]) * header[2] * 3);
        if (header[0] != magic || !readAll(rgb.data(), rgb.size()))
            return 4;
        if (log) {
            std::fprintf(log, "flags=%u side=%u\n", header[1], header[2]);
            std::fflush(log);
        }
        if (mode == "garbage") {
            const char nonsense[] = "Segmentation fault (core dumped)\n";
            writeAll(nonsense, sizeof nonsense);
            continue;
        }
        if (mode == "die")
            return 3;
        if (mode == "hang")
            ::sleep(60);
        if (mode == "fail") {
            std::uint32_t head[2] = {magic, 1};
            std::string text = "the model broke.";
            std::uint32_t length = std::uint32_t(text.size());
            writeAll(head, sizeof head);
            writeAll(&length, sizeof length);
            writeAll(text.data(), text.size());
            continue;
        }
        int side = int(header[2]);
        int best = 0;
        int bestRedness = -256;
        for (int i = 0; i < side * side; ++i) {
            int redness = int(rgb[std::size_t(i) * 3]) - int(rgb[std::size_t(i) * 3 + 1]);
            if (redness > bestRedness) {
                bestRedness = redness;
                best = i;
            }
        }
        float score = mode == "empty" ? 0.1f : 0.9f;
        std::vector<float> values = {(float(best / side) + 0.5f) / float(side),
                                     (float(best % side) + 0.5f) / float(side), score};
        for (const auto& point : body)
            values.insert(values.end(),
                          {point[0], point[1], score - 0.001f * float(&point - body)});
        if (mode == "short")
            values.resize(15);
        std::int32_t people = mode == "crowd" ? 3 : mode == "empty" ? 0 : 1;
        answer(header[1] & 1 ? people : -1, values);
    }
}
