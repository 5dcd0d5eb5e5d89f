// SPDX-License-Identifier: Apache-2.0
#include "detection/detection_retry.h"

#include "dravik/error.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "environment/fresh_uuid.h"
#include "gui_thread.h"
#include "retry_worker.h"
#include "reviewer_model.h"

#include <QPointer>
#include <algorithm>
#include <variant>

namespace tessary {

namespace fs = std::filesystem;

namespace {

const std::string retryFailed = "Retry failed \u00b7 existing joints preserved";

} // namespace

std::optional<dravik::RetryRequest> retryRequestFor(const dravik::ReviewFrame& frame,
                                                    const fs::path& manifestFile, bool fullPhoto) {
    const dravik::SessionManifest manifest = dravik::SessionManifest::load(manifestFile);
    auto pair = std::find_if(manifest.pairs.begin(), manifest.pairs.end(),
                             [&](const dravik::PairInput& p) { return p.id == frame.pairID; });
    if (pair == manifest.pairs.end())
        return std::nullopt;
    auto rider = std::find_if(pair->riders.begin(), pair->riders.end(),
                              [&](const dravik::RiderInput& r) { return r.id == frame.riderID; });
    if (rider == pair->riders.end())
        return std::nullopt;
    return dravik::RetryRequest{dravik::ReviewStore::assetURL(rider->file, manifestFile).string(),
                                rider->sourceHash, fullPhoto ? rider->panel : rider->crop};
}

RiderCandidates riderCandidates(const dravik::ReviewFrame& frame) {
    // A retry the reviewer accepted saw the photo last; else the analysis did.
    const dravik::DravikResult* newest = nullptr;
    for (const dravik::DravikResult& result : frame.raw)
        if (!result.candidates.empty())
            newest = &result;
    for (const dravik::DetectionRetry& retry : frame.retries)
        for (const auto* result : {&retry.primary, &retry.refined})
            if (*result && !(*result)->candidates.empty())
                newest = &**result;
    RiderCandidates found;
    if (!newest)
        return found;
    found.seen = newest->candidates;
    found.rider = newest->rider;
    for (std::size_t i = 0; i < found.seen.size(); ++i)
        if (found.seen[i].isPerson())
            found.people.push_back(i);
    return found;
}

dravik::PixelRect riderArea(const std::vector<dravik::Candidate>& seen, std::size_t person,
                            const dravik::PixelRect& panel) {
    dravik::PixelRect box = seen.at(person).box;
    if (const auto riding = seen[person].riding; riding && *riding < seen.size()) {
        const dravik::PixelRect& vehicle = seen[*riding].box;
        const double left = std::min(box.x, vehicle.x);
        const double top = std::min(box.y, vehicle.y);
        const double right = std::max(box.x + box.width, vehicle.x + vehicle.width);
        const double bottom = std::max(box.y + box.height, vehicle.y + vehicle.height);
        box = {left, top, right - left, bottom - top};
    }
    const double left = std::max(panel.x, box.x - box.width * 0.15);
    const double top = std::max(panel.y, box.y - box.height * 0.15);
    const double right = std::min(panel.x + panel.width, box.x + box.width * 1.15);
    const double bottom = std::min(panel.y + panel.height, box.y + box.height * 1.15);
    return {left, top, std::max(0.0, right - left), std::max(0.0, bottom - top)};
}

std::vector<const dravik::DravikResult*> usableResults(const dravik::DetectionRetry& retry) {
    std::vector<const dravik::DravikResult*> usable;
    for (const auto& result : {&retry.primary, &retry.refined})
        if (*result && (*result)->usable())
            usable.push_back(&**result);
    return usable;
}

void ReviewerModel::retryDetection(bool fullPhoto) {
    startRetry(fullPhoto, std::nullopt);
}

void ReviewerModel::retryDetectionOn(const dravik::PixelRect& area) {
    if (area.width > 0 && area.height > 0)
        startRetry(false, area);
}

void ReviewerModel::startRetry(bool fullPhoto, const std::optional<dravik::PixelRect>& area) {
    SignalHold hold(*this);
    if (isDetecting_)
        return;
    if (!frame() || !session_.manifestURL || !session_.reviewURL)
        return;
    if (!save())
        return;
    const dravik::ReviewFrame& current = *frame();

    std::optional<dravik::RetryRequest> request;
    try {
        request = retryRequestFor(current, *session_.manifestURL, fullPhoto);
    } catch (const std::exception& failure) {
        setError(failure.what());
        return;
    }
    if (!request)
        return;
    if (area)
        request->crop = *area;
    // A wheel axis drawn or proposed on the frame tells the detector the rider's lean.
    const std::optional<dravik::LeanAnnotation> lean = this->lean(current.id);
    if (lean && lean->wheel && !lean->wheelNotObservable)
        request->wheel = dravik::WheelAxis{lean->wheel->a, lean->wheel->b};

    const fs::path helper = bundle_.batchProgram();
    const fs::path directory =
        session_.reviewURL->parent_path() / "detection-retries" / freshUuid().upperText();
    const dravik::Uuid session = session_.sessionID;
    const std::string frameID = current.id;
    const ChildLimits limits{batchLimits_.retryTimeout, batchLimits_.retryGrace, batchLimits_.poll};
    assign(isDetecting_, true, detectingChange);
    setMessage("Detecting again\u2026 Your reviewed joints will be preserved.");

    // The model may be gone by the time the answer is back.
    QPointer<ReviewerModel> model(this);
    inBackground([=, request = *request] {
        std::variant<dravik::DetectionRetry, std::string> outcome;
        try {
            outcome = RetryWorker::run(request, helper, directory, limits);
        } catch (const std::exception& failure) {
            outcome = std::string(failure.what());
        }
        onGuiThread([model, outcome = std::move(outcome), frameID, session] {
            if (!model)
                return;
            SignalHold answered(*model);
            try {
                if (const auto* failure = std::get_if<std::string>(&outcome))
                    throw dravik::DravikError(*failure);
                model->acceptRetry(std::get<dravik::DetectionRetry>(outcome), frameID, session);
            } catch (const std::exception& failure) {
                model->setError(failure.what());
                model->setMessage(retryFailed);
            }
            model->assign(model->isDetecting_, false, detectingChange);
        });
    });
}

void ReviewerModel::acceptRetry(const dravik::DetectionRetry& retry, const std::string& frameID,
                                const dravik::Uuid& session) {
    SignalHold hold(*this);
    if (session != session_.sessionID || !document())
        return;
    const std::optional<std::size_t> index = document()->frameIndex(frameID);
    if (!index)
        return;
    // A retry only adds candidate points; it is not an undoable edit.
    const auto outcome = commit(
        [&](dravik::ReviewDocument& document) { document.addRetry(*index, retry); }, std::nullopt);
    if (outcome == CommitOutcome::refused)
        setMessage(retryFailed);
    if (outcome != CommitOutcome::saved)
        return;
    const auto usable = usableResults(retry);
    setMessage(usable.empty() ? "No usable pose found. Existing points preserved \u00b7 "
                                "automatically saved."
                              : "Retry automatically saved \u00b7 new points need review; your "
                                "corrections are preserved.");

    Presentation presentation = settings(frameID);
    if (!usable.empty() &&
        std::none_of(usable.begin(), usable.end(), [&](const dravik::DravikResult* result) {
            return result->kind == presentation.kind;
        })) {
        presentation.kind = usable.front()->kind;
        setSettings(frameID, presentation);
    }
}

} // namespace tessary
