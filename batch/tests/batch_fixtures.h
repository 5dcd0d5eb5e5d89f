#pragma once

#include "batch_run.h"

#include <filesystem>
#include <string>

namespace batch_fixtures {

// A fresh folder, removed with everything in it at the end of the test.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// A grey JPEG with one red pixel block centred on (dotX, dotY); returns its content hash.
std::string writeDotPhoto(const std::filesystem::path& file, int width, int height, int dotX,
                          int dotY);

// The fake worker in `mode`, logging each request's flags to `log` when given.
dravik::batch::WorkerSetup fakeWorker(const std::string& mode,
                                      const std::filesystem::path& log = {}, int timeoutMs = 5000);

std::string readText(const std::filesystem::path& file);

} // namespace batch_fixtures
