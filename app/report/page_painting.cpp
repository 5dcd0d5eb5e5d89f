// SPDX-License-Identifier: Apache-2.0
#include "page_painting.h"

#include "canvas_drawing.h"
#include "report_style.h"
#include "revision_texts.h"
#include "rider_labels.h"
#include "tessary/version.h"

#include <QPainter>

namespace tessary {

namespace {

using report_style::margin;

constexpr int wrapped = Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignTop;

QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

void drawLine(QPainter& painter, const QRectF& box, const QString& text, const QFont& font,
              const QColor& colour, Qt::Alignment alignment = Qt::AlignLeft) {
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(box, static_cast<int>(alignment | Qt::AlignTop | Qt::TextSingleLine), text);
}

// Session, pair and riders, and what traces the page to its review: the date, the saved revision
// and the digest of the evidence the pair's coaching was drawn from.
void paintTitle(QPainter& painter, const PlannedPage& page, const PageSource& source,
                double width) {
    const ReportPage& content = *page.content;
    drawLine(painter, QRectF(margin, margin, width, 20), qText(source.sessionTitle),
             report_style::font(16, true), Qt::black);
    const std::string pair =
        content.title + (page.continued ? " (continued)" : "") + " \u00b7 " + page.riders;
    drawLine(painter, QRectF(margin, margin + 20, width, 14), qText(pair), report_style::font(11),
             Qt::black);
    if (page.continued)
        return;
    std::string trace = source.date.toString(Qt::ISODate).toStdString() + " \u00b7 " +
                        texts::revisionStatus(source.revision, texts::savedLocally);
    if (content.report)
        trace += " \u00b7 Evidence " + content.report->shortDigest();
    drawLine(painter, QRectF(margin, margin + 36, width, 12), qText(trace), report_style::font(8),
             report_style::secondaryText);
}

// The photo, and over it what the canvas draws: the skeleton and the lean lines, at the size they
// have on screen, scaled to the photo's place on paper.
void paintPhoto(QPainter& painter, const PlannedPhoto& photo, const ReportPage& content) {
    const dravik::PixelRect& shows = photo.printed.shows;
    const QImage& image = photo.printed.image;
    const double toImage = image.width() / shows.width;
    const QRectF source((photo.region.x - shows.x) * toImage, (photo.region.y - shows.y) * toImage,
                        photo.region.width * toImage, photo.region.height * toImage);
    painter.drawImage(photo.slot, image, source);

    const dravik::ReviewFrame& frame = *photo.frame;
    const double scale = report_style::overlayWidth / photo.region.width; // view points per pixel
    painter.save();
    painter.setClipRect(photo.slot);
    painter.translate(photo.slot.topLeft());
    painter.scale(photo.slot.width() / report_style::overlayWidth,
                  photo.slot.width() / report_style::overlayWidth);
    painter.translate(-(photo.region.x - frame.panel.x) * scale,
                      -(photo.region.y - frame.panel.y) * scale);
    painter.setRenderHint(QPainter::Antialiasing);
    drawSkeleton(painter, frame, SkeletonScene{}, scale);
    LeanScene lean;
    lean.shown =
        QRectF((photo.region.x - frame.panel.x) * scale, (photo.region.y - frame.panel.y) * scale,
               photo.region.width * scale, photo.region.height * scale);
    if (const dravik::LeanFrameEvidence* shown = content.leanReport.frame(frame.id)) {
        lean.annotation = shown->annotation;
        lean.measurement = shown->measurement;
    }
    drawLean(painter, frame.panel, lean, scale);
    painter.restore();

    painter.setPen(QPen(report_style::secondaryText, 0.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(photo.slot);
    const std::string caption =
        std::string(frame.role == "subject" ? RiderLabels::rider : RiderLabels::reference) +
        " \u00b7 " + frame.riderDisplayName;
    drawLine(painter,
             QRectF(photo.slot.left(), photo.slot.bottom() + 2, photo.slot.width(), captionHeight),
             qText(caption), report_style::font(8), report_style::secondaryText);
}

void paintFooter(QPainter& painter, const PageSource& source, const QSizeF& paper) {
    const QRectF line(margin, paper.height() - margin - 10, paper.width() - 2 * margin, 10);
    const QFont font = report_style::font(7);
    drawLine(painter, line,
             qText("Tessary " + std::string(tessary::version) + " \u00b7 " + source.reviewFile),
             font, report_style::secondaryText);
    drawLine(painter, line,
             qText("Page " + std::to_string(source.number) + " of " + std::to_string(source.count)),
             font, report_style::secondaryText, Qt::AlignRight);
}

} // namespace

double paragraphHeight(QPainter& painter, const ReportParagraph& paragraph, double width) {
    painter.setFont(report_style::paragraphFont(paragraph.style));
    return painter.boundingRect(QRectF(0, 0, width, 1e6), wrapped, qText(paragraph.text)).height();
}

void paintPage(QPainter& painter, const PlannedPage& page, const PageSource& source,
               const QSizeF& paper) {
    paintTitle(painter, page, source, paper.width() - 2 * margin);
    for (const PlannedPhoto& photo : page.photos)
        paintPhoto(painter, photo, *page.content);
    for (const PlacedParagraph& placed : page.paragraphs) {
        painter.setFont(report_style::paragraphFont(placed.paragraph.style));
        painter.setPen(report_style::paragraphColour(placed.paragraph.style));
        painter.drawText(placed.rect, wrapped, qText(placed.paragraph.text));
    }
    paintFooter(painter, source, paper);
}

} // namespace tessary
