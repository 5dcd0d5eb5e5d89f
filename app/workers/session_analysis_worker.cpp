// SPDX-License-Identifier: Apache-2.0
#include "session_analysis_worker.h"

#include "dravik/error.h"
#include "dravik/file_io.h"

#include <charconv>

namespace tessary::SessionAnalysisWorker {

namespace fs = std::filesystem;

ChildLimits defaultLimits() {
    return {std::chrono::seconds(900), std::chrono::milliseconds(300)};
}

std::optional<PhotoCount> photoProgress(std::string_view line) {
    constexpr std::string_view lead = "Analysing photo ";
    constexpr std::string_view of = " of ";
    if (!line.starts_with(lead))
        return std::nullopt;
    line.remove_prefix(lead.size());
    PhotoCount count;
    auto [afterCurrent, currentError] =
        std::from_chars(line.data(), line.data() + line.size(), count.current);
    const std::string_view rest(afterCurrent,
                                static_cast<std::size_t>(line.data() + line.size() - afterCurrent));
    if (currentError != std::errc() || !rest.starts_with(of))
        return std::nullopt;
    auto [afterTotal, totalError] =
        std::from_chars(rest.data() + of.size(), rest.data() + rest.size(), count.total);
    (void)afterTotal;
    if (totalError != std::errc() || count.current < 1 || count.current > count.total)
        return std::nullopt;
    return count;
}

void run(const fs::path& manifest, const fs::path& output, const fs::path& helper,
         const ChildLimits& limits, const Progress& progress) {
    const fs::path logPath = output.string() + ".log";
    const std::string logName = logPath.filename().string();
    dravik::FileDescriptor log;
    try {
        // A log planted as a link, a pipe or a hard link of another file is refused unwritten.
        log = dravik::openOwnFile(logPath, dravik::OwnFile::empty);
    } catch (const dravik::DravikError&) {
        throw dravik::DravikError("Cannot create the folder analysis log.");
    }
    std::function<void(std::string_view)> onLine;
    if (progress)
        onLine = [&progress](std::string_view line) {
            if (auto count = photoProgress(line))
                progress(*count);
        };
    const ChildExit exit = runChild(helper, {"feasibility", manifest.string(), output.string()},
                                    log.get(), limits, onLine);
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
