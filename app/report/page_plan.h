// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "exporting/report_source.h"
#include "printed_photo.h"
#include "text_flow.h"

#include <QRectF>
#include <memory>
#include <string>
#include <vector>

namespace tessary {

struct PlannedPhoto {
    const dravik::ReviewFrame* frame = nullptr;
    PrintedPhoto printed;
    dravik::PixelRect region; // the source pixels shown: the framing region, else the panel
    QRectF slot;              // where they are shown, in points
};

// One sheet of paper: a subject's first page carries its photos, a further one only text.
struct PlannedPage {
    std::shared_ptr<const ReportPage> content;
    std::string riders; // "Rider: Alex · Reference rider: Sam"
    bool continued = false;
    std::vector<PlannedPhoto> photos;
    std::vector<PlacedParagraph> paragraphs;
};

// The pages of one subject on paper of `page` points, its photos decoded and its text set with
// `measure`.
std::vector<PlannedPage> planPages(const ReportSession& session, const ReportSubject& subject,
                                   const QRectF& page, const ParagraphMeasure& measure);

// Heights of the title block over a subject's first page and over its further pages.
inline constexpr double titleBlockHeight = 54;
inline constexpr double continuedTitleHeight = 34;
inline constexpr double captionHeight = 12;

} // namespace tessary
