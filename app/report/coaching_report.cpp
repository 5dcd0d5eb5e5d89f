// SPDX-License-Identifier: Apache-2.0
#include "coaching_report.h"

#include "dravik/atomic_file.h"
#include "dravik/error.h"
#include "dravik/session_files.h"
#include "dravik/store.h"
#include "page_painting.h"
#include "tessary/version.h"

#include <QBuffer>
#include <QLocale>
#include <QPainter>
#include <QPdfWriter>

namespace tessary {

QPageSize localePageSize() {
    return QLocale::system().measurementSystem() == QLocale::ImperialUSSystem
               ? QPageSize(QPageSize::Letter)
               : QPageSize(QPageSize::A4);
}

QPointF PrintedPhotoPlace::pagePoint(const dravik::Point2& source) const {
    const double scale = slot.width() / region.width;
    return slot.topLeft() + QPointF((source.x - region.x) * scale, (source.y - region.y) * scale);
}

RenderedReport renderCoachingReport(const ReportSession& session,
                                    const std::vector<ReportSubject>& subjects,
                                    const ReportOptions& options) {
    if (subjects.empty())
        throw dravik::DravikError("The session has no photos to report on.");
    RenderedReport rendered;
    QBuffer buffer(&rendered.pdf);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPageSize(options.pageSize);
    writer.setPageMargins(QMarginsF(0, 0, 0, 0));
    writer.setTitle(QString::fromStdString(session.title) + " \u00b7 coaching report");
    writer.setCreator(QStringLiteral("Tessary ") + tessary::version);
    rendered.paper = options.pageSize.size(QPageSize::Point);

    QPainter painter(&writer);
    // Everything is laid out and drawn in points.
    painter.scale(writer.resolution() / 72.0, writer.resolution() / 72.0);
    const QRectF paper(QPointF(0, 0), rendered.paper);
    const auto measure = [&painter](const ReportParagraph& paragraph, double width) {
        return paragraphHeight(painter, paragraph, width);
    };
    std::vector<PlannedPage> pages;
    for (const ReportSubject& subject : subjects)
        for (PlannedPage& page : planPages(session, subject, paper, measure))
            pages.push_back(std::move(page));

    PageSource source{session.title,
                      session.document->revision(),
                      dravik::ReviewStore::reviewFileName(*session.document),
                      options.date,
                      0,
                      pages.size()};
    for (const PlannedPage& page : pages) {
        if (source.number++ > 0)
            writer.newPage();
        paintPage(painter, page, source, rendered.paper);
        std::vector<PrintedPhotoPlace> places;
        for (const PlannedPhoto& photo : page.photos)
            places.push_back({photo.frame->id, photo.slot, photo.region});
        rendered.photos.push_back(std::move(places));
    }
    painter.end();
    return rendered;
}

std::size_t writeCoachingReport(const ReportSession& session,
                                const std::vector<ReportSubject>& subjects,
                                const std::filesystem::path& output, const ReportOptions& options) {
    dravik::SessionFiles::refuseAsTarget(output, session.manifest, session.results,
                                         *session.document);
    const RenderedReport rendered = renderCoachingReport(session, subjects, options);
    dravik::writeFileAtomically(
        output,
        std::string_view(rendered.pdf.constData(), static_cast<std::size_t>(rendered.pdf.size())));
    return rendered.pages();
}

} // namespace tessary
