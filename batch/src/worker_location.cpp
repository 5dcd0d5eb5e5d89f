// SPDX-License-Identifier: Apache-2.0
#include "worker_location.h"

#include "dravik/error.h"
#include "node_runtime.h"

#include <array>

namespace dravik::batch {

namespace fs = std::filesystem;

fs::path programFolder() {
    std::error_code error;
    fs::path self = fs::read_symlink("/proc/self/exe", error);
    if (error)
        throw DravikError(
            "dravik-batch cannot find its own folder through \u201c/proc/self/exe\u201d.");
    return self.parent_path();
}

WorkerSetup installedWorker(const fs::path& programFolder) {
    fs::path script = programFolder / "pose-worker" / "pose-worker.mjs";
    fs::path models =
        (programFolder / ".." / ".." / "share" / "tessary" / "models").lexically_normal();
    if (!fs::is_regular_file(script) || !fs::is_directory(script.parent_path() / "node_modules"))
        throw DravikError(
            "The pose worker \u201cpose-worker.mjs\u201d or its Node packages are missing "
            "beside dravik-batch; run tools/bootstrap.sh to install them.");
    constexpr std::array files = {"movenet-thunder.json",   "movenet-thunder.bin",
                                  "movenet-multipose.json", "movenet-multipose.bin",
                                  "nanodet.json",           "nanodet.bin"};
    for (const char* file : files)
        if (!fs::is_regular_file(models / file))
            throw DravikError("The pose model \u201c" + std::string(file) +
                              "\u201d is missing from " + models.string() +
                              "; run tools/bootstrap.sh to install the models.");
    return {script.filename().string(),
            {checkedNode(configuredNode()).string(), script.string(), models.string()},
            std::chrono::milliseconds(30000)};
}

} // namespace dravik::batch
