#include "batch_run.h"
#include "dravik/atomic_file.h"
#include "dravik/detection.h"
#include "photo_check.h"
#include "pose_detector.h"

namespace dravik::batch {

int redetect(const std::filesystem::path& request, const std::filesystem::path& result,
             const WorkerSetup& setup) {
    RetryRequest asked = RetryRequest::load(request);
    ImageInput photo = loadCheckedPhoto(asked.source, asked.sourceHash);
    PoseWorker worker(setup);
    PoseDetector detector(worker);
    auto passes = detector.detectTwice(photo, asked.crop, photoLabel(asked.source));
    DetectionRetry answer{passes.primary, passes.refined};
    writeFileAtomically(result, answer.encode());
    return success;
}

} // namespace dravik::batch
