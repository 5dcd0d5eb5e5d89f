// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "page_plan.h"

#include <QDate>
#include <cstddef>
#include <string>

class QPainter;

namespace tessary {

// What every page says about where it comes from.
struct PageSource {
    std::string sessionTitle;
    std::int64_t revision = 0;
    std::string reviewFile; // the review's file name
    QDate date;
    std::size_t number = 1;
    std::size_t count = 1;
};

// Paints a planned page, in points: the title block, the photos with the canvas's drawing of the
// skeleton and the lean lines, the feedback and the footer.
void paintPage(QPainter& painter, const PlannedPage& page, const PageSource& source,
               const QSizeF& paper);

// The height `paragraph` takes on `painter`'s device when set `width` points wide.
double paragraphHeight(QPainter& painter, const ReportParagraph& paragraph, double width);

} // namespace tessary
