// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "exporting/report_source.h"

#include <QByteArray>
#include <QDate>
#include <QPageSize>
#include <QPointF>
#include <QRectF>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tessary {

// Letter where the reader's locale measures in inches, A4 elsewhere.
QPageSize localePageSize();

struct ReportOptions {
    QPageSize pageSize = localePageSize();
    QDate date = QDate::currentDate();
};

// Where a photo was printed, so that what was drawn over it can be found on the page.
struct PrintedPhotoPlace {
    std::string frameID;
    QRectF slot;              // on the page, in points
    dravik::PixelRect region; // the source pixels shown in it

    QPointF pagePoint(const dravik::Point2& source) const;
};

struct RenderedReport {
    QByteArray pdf;
    QSizeF paper;                                       // in points
    std::vector<std::vector<PrintedPhotoPlace>> photos; // by page

    std::size_t pages() const { return photos.size(); }
};

// The coaching report of `subjects` as a PDF: one page for each (more only when its feedback
// needs them), with vector text and photos at no more than print resolution.
RenderedReport renderCoachingReport(const ReportSession& session,
                                    const std::vector<ReportSubject>& subjects,
                                    const ReportOptions& options = {});

// Renders the report and writes it whole and durably; refuses, before anything is read, a file of
// the session as `output`. Gives the page count.
std::size_t writeCoachingReport(const ReportSession& session,
                                const std::vector<ReportSubject>& subjects,
                                const std::filesystem::path& output,
                                const ReportOptions& options = {});

} // namespace tessary
