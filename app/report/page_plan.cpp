// SPDX-License-Identifier: Apache-2.0
#include "page_plan.h"

#include "dravik/image.h"
#include "report_style.h"
#include "rider_labels.h"

#include <algorithm>

namespace tessary {

namespace {

using report_style::margin;

// The placed of `count` photos side by side, each as wide as it may be within `area` and the
// height allowed, with its region's proportions.
std::vector<QRectF> photoSlots(const std::vector<dravik::PixelRect>& regions, const QRectF& area,
                               double maxHeight) {
    const double count = static_cast<double>(regions.size());
    const double cell = (area.width() - (count - 1) * report_style::photoGap) / count;
    std::vector<QRectF> placed;
    for (std::size_t i = 0; i < regions.size(); ++i) {
        const double aspect = regions[i].height / regions[i].width;
        double width = cell;
        double height = width * aspect;
        if (height > maxHeight) {
            height = maxHeight;
            width = height / aspect;
        }
        const double left = area.left() + static_cast<double>(i) * (cell + report_style::photoGap);
        placed.emplace_back(left + (cell - width) / 2, area.top(), width, height);
    }
    return placed;
}

} // namespace

std::vector<PlannedPage> planPages(const ReportSession& session, const ReportSubject& subject,
                                   const QRectF& page, const ParagraphMeasure& measure) {
    auto content = std::make_shared<const ReportPage>(reportPage(session, subject));
    const dravik::ReviewDocument& document = *session.document;

    // Only this page's photos are read and checked against their content hashes.
    std::vector<dravik::ReviewFrame> frames;
    std::vector<dravik::PixelRect> regions;
    for (const std::string& id : content->frameIDs) {
        const dravik::ReviewFrame& frame = *document.frame(id);
        frames.push_back(frame);
        const auto framing = content->framing.find(id);
        regions.push_back(framing == content->framing.end() ? frame.panel : framing->second);
    }
    const std::vector<dravik::VerifiedPhoto> verified = dravik::verifyFramePhotos(
        dravik::ReviewDocument(document.identity(), frames), session.manifest);

    const QRectF area(margin, margin + titleBlockHeight, page.width() - 2 * margin, 0);
    const std::vector<QRectF> placed = photoSlots(regions, area, frames.size() > 1 ? 205.0 : 280.0);
    std::string riders;
    for (const dravik::ReviewFrame& frame : frames)
        riders +=
            (riders.empty() ? "" : " \u00b7 ") +
            std::string(frame.role == "subject" ? RiderLabels::rider : RiderLabels::reference) +
            ": " + frame.riderDisplayName;
    PlannedPage first{content, riders, false, {}, {}};
    double photosBottom = area.top();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const dravik::ReviewFrame* frame = document.frame(content->frameIDs[i]);
        first.photos.push_back({frame,
                                printedPhoto(*frame, verified[i], regions[i], placed[i].size()),
                                regions[i], placed[i]});
        photosBottom = std::max(photosBottom, placed[i].bottom());
    }

    const double textBottom = page.height() - margin - report_style::footerHeight;
    const QRectF firstText(margin, photosBottom + captionHeight + 8, area.width(),
                           textBottom - photosBottom - captionHeight - 8);
    const QRectF furtherText(margin, margin + continuedTitleHeight, area.width(),
                             textBottom - margin - continuedTitleHeight);
    auto flowed =
        flowParagraphs(feedbackParagraphs(*content, document), firstText, furtherText, measure);

    std::vector<PlannedPage> pages;
    for (std::size_t i = 0; i < flowed.size(); ++i) {
        PlannedPage planned =
            i == 0 ? std::move(first) : PlannedPage{content, riders, true, {}, {}};
        planned.paragraphs = std::move(flowed[i]);
        pages.push_back(std::move(planned));
    }
    return pages;
}

} // namespace tessary
