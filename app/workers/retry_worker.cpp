#include "retry_worker.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "log_file.h"

#include <cstring>
#include <system_error>

namespace tessary::RetryWorker {

namespace fs = std::filesystem;

ChildLimits defaultLimits() {
    return {std::chrono::seconds(60), std::chrono::milliseconds(500)};
}

dravik::DetectionRetry run(const dravik::RetryRequest& request, const fs::path& helper,
                           const fs::path& directory, const ChildLimits& limits) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (error)
        throw dravik::DravikError("The retry folder \u201c" + directory.filename().string() +
                                  "\u201d could not be created: " + error.message() + ".");
    const fs::path requestFile = directory / "request.json";
    const fs::path resultFile = directory / "result.json";
    dravik::writeFileAtomically(requestFile, request.encode());

    const LogFile log(directory / "process.log");
    if (!log.isOpen())
        throw dravik::DravikError("\u201cprocess.log\u201d could not be created: " +
                                  std::string(std::strerror(log.error())) + ".");
    const ChildExit exit = runChild(helper, {"redetect", requestFile.string(), resultFile.string()},
                                    log.descriptor(), limits);
    if (exit.timedOut)
        throw dravik::DravikError("Detection timed out. Your corrections are preserved.");
    if (exit.crashed || exit.status != 0)
        throw dravik::DravikError(
            "Detection failed. Your corrections are preserved; retry diagnostics are saved "
            "locally.");
    return dravik::DetectionRetry::load(resultFile);
}

} // namespace tessary::RetryWorker
