// SPDX-License-Identifier: Apache-2.0
#include "text_flow.h"

#include "report_style.h"

namespace tessary {

namespace {

bool isHeading(const ReportParagraph& paragraph) {
    return paragraph.style == ReportParagraph::Style::heading ||
           paragraph.style == ReportParagraph::Style::subheading;
}

class Columns {
  public:
    Columns(const QRectF& first, const QRectF& continuation)
        : area_(first), continuation_(continuation), pages_(1) {}

    double width() const { return (area_.width() - report_style::columnGap) / 2; }
    bool atTop() const { return y_ == area_.top(); }
    // Nothing is gained by moving on from the top of a column of a page without photos.
    bool freshest() const { return atTop() && onContinuation_; }
    // Whether `height` more, after `space`, still fits in the current column.
    bool fits(double space, double height) const {
        return (atTop() ? y_ : y_ + space) + height <= area_.bottom();
    }
    void next() {
        if (column_ == 0) {
            column_ = 1;
        } else {
            column_ = 0;
            area_ = continuation_;
            onContinuation_ = true;
            pages_.emplace_back();
        }
        y_ = area_.top();
    }
    void place(const ReportParagraph& paragraph, double space, double height) {
        if (!atTop())
            y_ += space;
        const double x = area_.left() + column_ * (width() + report_style::columnGap);
        pages_.back().push_back({paragraph, QRectF(x, y_, width(), height)});
        y_ += height;
    }
    std::vector<std::vector<PlacedParagraph>> take() { return std::move(pages_); }

  private:
    QRectF area_;
    QRectF continuation_;
    int column_ = 0;
    bool onContinuation_ = false;
    double y_ = area_.top();
    std::vector<std::vector<PlacedParagraph>> pages_;
};

} // namespace

std::vector<std::vector<PlacedParagraph>>
flowParagraphs(const std::vector<ReportParagraph>& paragraphs, const QRectF& first,
               const QRectF& continuation, const ParagraphMeasure& measure) {
    Columns columns(first, continuation);
    for (std::size_t i = 0; i < paragraphs.size(); ++i) {
        const ReportParagraph& paragraph = paragraphs[i];
        const double space = report_style::spaceBefore(paragraph.style);
        const double height = measure(paragraph, columns.width());
        // A heading moves on with the paragraph it introduces.
        double needed = height;
        if (isHeading(paragraph) && i + 1 < paragraphs.size())
            needed += report_style::spaceBefore(paragraphs[i + 1].style) +
                      measure(paragraphs[i + 1], columns.width());
        while (!columns.fits(space, needed) && !columns.freshest())
            columns.next();
        columns.place(paragraph, space, height);
    }
    return columns.take();
}

} // namespace tessary
