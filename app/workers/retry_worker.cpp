// SPDX-License-Identifier: Apache-2.0
#include "retry_worker.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "dravik/file_io.h"

namespace tessary::RetryWorker {

namespace fs = std::filesystem;

ChildLimits defaultLimits() {
    return {std::chrono::seconds(60), std::chrono::milliseconds(500)};
}

dravik::DetectionRetry run(const dravik::RetryRequest& request, const fs::path& helper,
                           const fs::path& directory, const ChildLimits& limits) {
    // Made under the session folder's own descriptor, never through a link: a session from
    // someone else may hold a "detection-retries" that leads anywhere.
    const fs::path retries = directory.parent_path();
    const dravik::Folder folder = dravik::Folder::open(retries.parent_path())
                                      .subfolder(retries.filename().string())
                                      .subfolder(directory.filename().string());
    dravik::writeFileAtomically(folder, "request.json", request.encode());
    const dravik::FileDescriptor log =
        dravik::openOwnFile(folder, "process.log", dravik::OwnFile::empty);
    const fs::path requestFile = directory / "request.json";
    const fs::path resultFile = directory / "result.json";
    const ChildExit exit = runChild(helper, {"redetect", requestFile.string(), resultFile.string()},
                                    log.get(), limits);
    if (exit.timedOut)
        throw dravik::DravikError("Detection timed out. Your corrections are preserved.");
    if (exit.crashed || exit.status != 0)
        throw dravik::DravikError(
            "Detection failed. Your corrections are preserved; retry diagnostics are saved "
            "locally.");
    return dravik::DetectionRetry::load(resultFile);
}

} // namespace tessary::RetryWorker
