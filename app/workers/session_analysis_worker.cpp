#include "session_analysis_worker.h"

#include "dravik/error.h"
#include "dravik/file_io.h"

namespace tessary::SessionAnalysisWorker {

namespace fs = std::filesystem;

ChildLimits defaultLimits() {
    return {std::chrono::seconds(900), std::chrono::milliseconds(300)};
}

void run(const fs::path& manifest, const fs::path& output, const fs::path& helper,
         const ChildLimits& limits) {
    const fs::path logPath = output.string() + ".log";
    const std::string logName = logPath.filename().string();
    dravik::FileDescriptor log;
    try {
        // A log planted as a link, a pipe or a hard link of another file is refused unwritten.
        log = dravik::openOwnFile(logPath, dravik::OwnFile::empty);
    } catch (const dravik::DravikError&) {
        throw dravik::DravikError("Cannot create the folder analysis log.");
    }
    const ChildExit exit =
        runChild(helper, {"feasibility", manifest.string(), output.string()}, log.get(), limits);
    if (exit.timedOut)
        throw dravik::DravikError(
            "Folder analysis timed out. Originals and saved reviews are unchanged. See " + logName +
            ".");
    // 2 is a finished analysis with photos that need attention, not a failure.
    if (exit.crashed || (exit.status != 0 && exit.status != 2))
        throw dravik::DravikError("Folder analysis failed. See " + logName +
                                  ". Relaunch or rescan to retry.");
}

} // namespace tessary::SessionAnalysisWorker
