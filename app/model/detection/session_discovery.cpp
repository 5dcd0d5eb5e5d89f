// SPDX-License-Identifier: Apache-2.0
#include "detection/session_discovery.h"

#include "dravik/discovery.h"
#include "gui_thread.h"
#include "reviewer_model.h"
#include "session_analysis_worker.h"

#include <QPointer>
#include <algorithm>

namespace tessary {

namespace fs = std::filesystem;

namespace {

std::string folderName(const fs::path& folder) {
    return folder.has_filename() ? folder.filename().string()
                                 : folder.parent_path().filename().string();
}

} // namespace

std::string discoverySummary(const dravik::SessionDiscoveryReport& report) {
    const auto analysed = std::count_if(
        report.sessions.begin(), report.sessions.end(),
        [](const dravik::DiscoveredSession& session) { return session.newlyAnalyzed; });
    std::string text = std::to_string(report.sessions.size()) + " sessions ready \u00b7 " +
                       std::to_string(analysed) + " newly analyzed";
    if (!report.failures.empty())
        text += " \u00b7 Some folders need attention";
    return text;
}

std::vector<ReviewPreset> mergedPresets(std::vector<ReviewPreset> presets,
                                        const std::vector<dravik::DiscoveredSession>& sessions) {
    for (const dravik::DiscoveredSession& session : sessions) {
        ReviewPreset preset{session.title, session.manifest.string(), session.results.string()};
        auto same = std::find_if(presets.begin(), presets.end(),
                                 [&](const ReviewPreset& p) { return p.id() == preset.id(); });
        if (same != presets.end())
            *same = std::move(preset);
        else
            presets.push_back(std::move(preset));
    }
    return presets;
}

std::vector<std::string> failureLines(const dravik::SessionDiscoveryReport& report) {
    std::vector<std::string> lines;
    for (const dravik::SessionDiscoveryFailure& failure : report.failures)
        lines.push_back(folderName(failure.folder) + ": " + failure.message);
    return lines;
}

void ReviewerModel::discoverSessions(std::optional<fs::path> dataDirectory, AnalyzeFolder analyze) {
    SignalHold hold(*this);
    if (isDiscovering_)
        return;
    if (!dataDirectory)
        dataDirectory = bundle_.dataDirectory();
    if (!dataDirectory) {
        assign(discoveryStatus_, "Automatic discovery needs a configured data folder.",
               discoveryChange);
        return;
    }
    assign(isDiscovering_, true, discoveryChange);
    assign(discoveryFailures_, {}, discoveryChange);
    assign(unusablePhotos_, {}, discoveryChange);
    assign(discoveryStatus_, "Checking photo folders\u2026", discoveryChange);

    const auto known = knownResults();
    if (!analyze)
        analyze = batchAnalysis();

    // A model closed meanwhile simply misses the answer.
    QPointer<ReviewerModel> model(this);
    inBackground([model, data = *dataDirectory, known, analyze] {
        const auto progress = [model](const std::string& name) {
            onGuiThread([model, name] {
                // A late progress call must not overwrite the summary.
                if (!model || !model->isDiscovering_)
                    return;
                SignalHold progressed(*model);
                model->assign(model->discoveryStatus_, "Checking / analyzing " + name + "\u2026",
                              discoveryChange);
            });
        };
        dravik::SessionDiscoveryReport report = scanFolders(data, known, progress, analyze);
        onGuiThread([model, report = std::move(report)] {
            if (model)
                model->finishDiscovery(report, std::nullopt);
        });
    });
}

std::map<fs::path, fs::path> ReviewerModel::knownResults() const {
    std::map<fs::path, fs::path> known;
    for (const ReviewPreset& preset : presets_)
        known.emplace(preset.manifest, preset.results); // the first preset wins
    return known;
}

ReviewerModel::AnalyzeFolder
ReviewerModel::batchAnalysis(std::function<void(int, int)> progress) const {
    return [helper = bundle_.batchProgram(),
            limits = ChildLimits{batchLimits_.analysisTimeout, batchLimits_.analysisGrace,
                                 batchLimits_.poll},
            progress](const fs::path& manifest, const fs::path& output) {
        SessionAnalysisWorker::Progress told;
        if (progress)
            told = [&progress](SessionAnalysisWorker::PhotoCount count) {
                progress(count.current, count.total);
            };
        SessionAnalysisWorker::run(manifest, output, helper, limits, told);
    };
}

void ReviewerModel::finishDiscovery(const dravik::SessionDiscoveryReport& report,
                                    const std::optional<fs::path>& openFolder) {
    SignalHold answered(*this);
    assign(presets_, mergedPresets(presets_, report.sessions), presetsChange);
    assign(discoveryFailures_, failureLines(report), discoveryChange);
    assign(discoveryStatus_, discoverySummary(report), discoveryChange);
    assign(isDiscovering_, false, discoveryChange);
    if (isDetecting_)
        return;
    if (openFolder) {
        std::error_code error;
        for (const dravik::DiscoveredSession& session : report.sessions)
            if (fs::equivalent(session.manifest.parent_path(), *openFolder, error)) {
                openPreset({session.title, session.manifest.string(), session.results.string()});
                return;
            }
    } else if (!document() && !presets_.empty()) {
        const ReviewPreset first = presets_.front();
        openPreset(first);
    }
}

dravik::SessionDiscoveryReport scanFolders(const fs::path& data,
                                           const std::map<fs::path, fs::path>& known,
                                           const dravik::SessionDiscovery::Progress& progress,
                                           const dravik::SessionDiscovery::Analyze& analyze) {
    try {
        return dravik::SessionDiscovery::run(data, known, progress, analyze);
    } catch (const std::exception& failure) {
        // Folders report their own failures; this is the scan itself giving out.
        dravik::SessionDiscoveryReport report;
        report.failures.push_back({data, failure.what()});
        return report;
    }
}

void ReviewerModel::discoverSessionsOnLaunch() {
    if (discoveryStarted_)
        return;
    discoveryStarted_ = true;
    discoverSessions();
}

} // namespace tessary
