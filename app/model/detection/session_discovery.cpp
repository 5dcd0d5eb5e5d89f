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
    assign(discoveryStatus_, "Checking photo folders\u2026", discoveryChange);

    std::map<fs::path, fs::path> knownResults;
    for (const ReviewPreset& preset : presets_)
        knownResults.emplace(preset.manifest, preset.results); // the first preset wins
    if (!analyze)
        analyze = [helper = bundle_.batchProgram(),
                   limits = ChildLimits{batchLimits_.analysisTimeout, batchLimits_.analysisGrace,
                                        batchLimits_.poll}](const fs::path& manifest,
                                                            const fs::path& output) {
            SessionAnalysisWorker::run(manifest, output, helper, limits);
        };

    // A model closed meanwhile simply misses the answer.
    QPointer<ReviewerModel> model(this);
    inBackground([model, data = *dataDirectory, knownResults, analyze] {
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
        dravik::SessionDiscoveryReport report;
        try {
            report = dravik::SessionDiscovery::run(data, knownResults, progress, analyze);
        } catch (const std::exception& failure) {
            // Folders report their own failures; this is the scan itself giving out.
            report.failures.push_back({data, failure.what()});
        }
        onGuiThread([model, report = std::move(report)] {
            if (!model)
                return;
            SignalHold answered(*model);
            model->assign(model->presets_, mergedPresets(model->presets_, report.sessions),
                          presetsChange);
            model->assign(model->discoveryFailures_, failureLines(report), discoveryChange);
            model->assign(model->discoveryStatus_, discoverySummary(report), discoveryChange);
            model->assign(model->isDiscovering_, false, discoveryChange);
            if (!model->document() && !model->isDetecting_ && !model->presets_.empty()) {
                const ReviewPreset first = model->presets_.front();
                model->openPreset(first);
            }
        });
    });
}

void ReviewerModel::discoverSessionsOnLaunch() {
    if (discoveryStarted_)
        return;
    discoveryStarted_ = true;
    discoverSessions();
}

} // namespace tessary
