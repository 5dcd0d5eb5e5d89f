// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "report_paragraphs.h"

#include <QRectF>
#include <functional>
#include <vector>

namespace tessary {

struct PlacedParagraph {
    ReportParagraph paragraph;
    QRectF rect; // on the page, in points
};

// The height a paragraph takes when set `width` points wide.
using ParagraphMeasure = std::function<double(const ReportParagraph&, double width)>;

// Sets paragraphs in two columns: first in `first` (what the photos leave of a page), then in
// `continuation` on as many further pages as they need. A heading never ends a column. Gives the
// paragraphs of each page.
std::vector<std::vector<PlacedParagraph>>
flowParagraphs(const std::vector<ReportParagraph>& paragraphs, const QRectF& first,
               const QRectF& continuation, const ParagraphMeasure& measure);

} // namespace tessary
