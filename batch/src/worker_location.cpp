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
    fs::path script = programFolder / "pose-worker" / "pose-worker.cjs";
    fs::path models =
        (programFolder / ".." / ".." / "share" / "tessary" / "models").lexically_normal();
    if (!fs::is_regular_file(script) || !fs::is_directory(script.parent_path() / "node_modules"))
        throw DravikError(
            "The pose worker \u201cpose-worker.cjs\u201d or its Node packages are missing "
            "beside dravik-batch; run tools/bootstrap.sh to install them.");
    constexpr std::array files = {"movenet-thunder.json",   "movenet-thunder.bin",
                                  "movenet-multipose.json", "movenet-multipose.bin",
                                  "nanodet.json",           "nanodet.bin"};
    for (const char* file : files)
        if (!fs::is_regular_file(models / file))
            throw DravikError("The pose model \u201c" + std::string(file) +
                              "\u201d is missing from " + models.string() +
                              "; run tools/bootstrap.sh to install the models.");
    // Its version comes with the worker's ready answer: asking for it first would cost a Node
    // start.
    const fs::path node = presentNode(configuredNode());
    return {script.filename().string(),
            {node.string(), script.string(), models.string()},
            std::chrono::milliseconds(30000),
            node};
}

} // namespace dravik::batch
