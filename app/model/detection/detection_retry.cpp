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

std::vector<const dravik::DravikResult*> usableResults(const dravik::DetectionRetry& retry) {
    std::vector<const dravik::DravikResult*> usable;
    for (const auto& result : {&retry.primary, &retry.refined})
        if (*result && (*result)->usable())
            usable.push_back(&**result);
    return usable;
}

void ReviewerModel::retryDetection(bool fullPhoto) {
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
