#include "batch_fixtures.h"

#include "dravik/image.h"
#include "photo_fixtures.h"

#include <fstream>
#include <random>
#include <sstream>

namespace batch_fixtures {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::random_device random;
    path_ = fs::temp_directory_path() / ("batch-test-" + std::to_string(random()));
    fs::create_directories(path_);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string writeDotPhoto(const fs::path& file, int width, int height, int dotX, int dotY) {
    auto picture = photo_fixtures::Picture::filled(width, height, [&](int x, int y) {
        bool dot = std::abs(x - dotX) <= 2 && std::abs(y - dotY) <= 2;
        return dot ? photo_fixtures::Rgb{255, 0, 0} : photo_fixtures::Rgb{120, 120, 120};
    });
    auto bytes = photo_fixtures::encodeJpeg(picture);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return dravik::ImageInput::load(file).sourceHash();
}

dravik::batch::WorkerSetup fakeWorker(const std::string& mode, const fs::path& log, int timeoutMs) {
    dravik::batch::WorkerSetup setup{
        "fake_pose_worker", {FAKE_POSE_WORKER, mode}, std::chrono::milliseconds(timeoutMs)};
    if (!log.empty())
        setup.command.push_back(log.string());
    return setup;
}

std::string readText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace batch_fixtures
