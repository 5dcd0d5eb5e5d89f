// SPDX-License-Identifier: Apache-2.0
#include "pair/frame_pane.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "framed_photo_canvas.h"
#include "photo_scroll_view.h"
#include "reviewer_model.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

// The slider works in hundredths of a zoom step.
constexpr int sliderScale = 100;
constexpr double minZoom = 1.0;
constexpr double maxZoom = 4.0;
const char* const kinds[] = {"3D", "2D"};

} // namespace

FramePane::FramePane(ReviewerModel& model, std::string frameID, QWidget* parent)
    : QWidget(parent), model_(model), frameID_(std::move(frameID)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    header_ = new QPushButton(this);
    header_->setFlat(true);
    QFont bold = header_->font();
    bold.setBold(true);
    header_->setFont(bold);
    layout->addWidget(header_, 0, Qt::AlignLeft);
    connect(header_, &QPushButton::clicked, this, [this] { model_.activate(frameID_); });

    // One line where the pane is wide enough, else two: two panes must fit beside an inspector
    // at the smallest window.
    options_ = new QWidget(this);
    auto* options = new QGridLayout(options_);
    options->setContentsMargins(0, 0, 0, 0);
    options->setVerticalSpacing(2);
    options->addWidget(new QLabel(u"Detection"_s, options_), 0, 0);
    kind_ = new QComboBox(options_);
    kind_->setAccessibleName(u"Detection"_s);
    kind_->addItems({u"3D projection"_s, u"2D detection"_s});
    options->addWidget(kind_, 0, 1);
    showRaw_ = new QCheckBox(u"Show original points"_s, options_);
    options->addWidget(showRaw_, 1, 0, 1, 2);
    options->setColumnStretch(3, 1);
    options_->setMinimumWidth(options->minimumSize().width());
    options_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->addWidget(options_);
    connect(kind_, &QComboBox::activated, this, [this](int index) {
        Presentation settings = model_.settings(frameID_);
        settings.kind = kinds[index];
        model_.setSettings(frameID_, settings);
    });
    connect(showRaw_, &QCheckBox::toggled, this, [this](bool on) {
        Presentation settings = model_.settings(frameID_);
        settings.showRaw = on;
        model_.setSettings(frameID_, settings);
    });

    outline_ = new QFrame(this);
    outline_->setObjectName(u"photoOutline"_s);
    auto* outlined = new QVBoxLayout(outline_);
    outlined->setContentsMargins(2, 2, 2, 2);
    canvas_ = new FramedPhotoCanvas(model_, frameID_, outline_);
    outlined->addWidget(canvas_);
    layout->addWidget(outline_, 1);

    caption_ = secondaryLabel({}, this);
    layout->addWidget(caption_);

    auto* framing = new QHBoxLayout;
    fit_ = new QPushButton(u"Fit rider"_s, this);
    full_ = new QPushButton(u"Full photo"_s, this);
    zoom_ = new QSlider(Qt::Horizontal, this);
    zoom_->setAccessibleName(u"Photo zoom"_s);
    zoom_->setToolTip(u"Photo zoom"_s);
    zoom_->setRange(static_cast<int>(minZoom * sliderScale),
                    static_cast<int>(maxZoom * sliderScale));
    zoomLabel_ = new QLabel(this);
    zoomLabel_->setMinimumWidth(zoomLabel_->fontMetrics().horizontalAdvance(u"4.0×"_s) + 4);
    framing->addWidget(fit_);
    framing->addWidget(full_);
    framing->addWidget(zoom_, 1);
    framing->addWidget(zoomLabel_);
    layout->addLayout(framing);

    connect(fit_, &QPushButton::clicked, this, [this] {
        Presentation settings = model_.settings(frameID_);
        settings.autoFrame = true;
        settings.framingRequest += 1;
        model_.setSettings(frameID_, settings);
    });
    connect(full_, &QPushButton::clicked, this, [this] {
        Presentation settings = model_.settings(frameID_);
        settings.autoFrame = false;
        settings.zoom = 1.0;
        settings.framingRequest += 1;
        model_.setSettings(frameID_, settings);
    });
    connect(zoom_, &QSlider::valueChanged, this, [this](int value) {
        const double zoom = static_cast<double>(value) / sliderScale;
        zoomLabel_->setText(zoomText(zoom));
        Presentation settings = model_.settings(frameID_);
        settings.zoom = zoom;
        settings.autoFrame = false;
        model_.setSettings(frameID_, settings);
    });
    connect(canvas_, &FramedPhotoCanvas::zoomChanged, this, &FramePane::showZoom);

    for (auto signal : {&ReviewerModel::sessionChanged, &ReviewerModel::snapshotChanged,
                        &ReviewerModel::navigationChanged, &ReviewerModel::presentationChanged})
        connect(&model_, signal, this, &FramePane::refresh);
    refresh();
    showZoom(canvas_->displayedZoom());
}

void FramePane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    auto* options = static_cast<QGridLayout*>(options_->layout());
    int row = 0, column = 0, rows = 0, columns = 0;
    options->getItemPosition(options->indexOf(showRaw_), &row, &column, &rows, &columns);
    const int oneLine = options->itemAtPosition(0, 0)->sizeHint().width() +
                        kind_->sizeHint().width() + showRaw_->sizeHint().width() +
                        2 * options->horizontalSpacing();
    const bool wide = event->size().width() >= oneLine;
    if (wide == (row == 0))
        return;
    options->removeWidget(showRaw_);
    if (wide)
        options->addWidget(showRaw_, 0, 2);
    else
        options->addWidget(showRaw_, 1, 0, 1, 2);
}

double FramePane::displayedZoom() const {
    return canvas_->displayedZoom();
}

void FramePane::zoomStep(int direction) {
    PhotoScrollView* view = canvas_->scrollView();
    if (!view)
        return;
    const double factor = direction > 0 ? PhotoScrollView::zoomStep : 1 / PhotoScrollView::zoomStep;
    view->zoomAround(QRectF(view->viewport()->rect()).center(), displayedZoom() * factor);
}

void FramePane::showWholePhoto() {
    full_->click();
}

void FramePane::showZoom(double zoom) {
    const QSignalBlocker block(zoom_);
    zoom_->setValue(static_cast<int>(std::lround(zoom * sliderScale)));
    zoomLabel_->setText(zoomText(zoom));
}

void FramePane::refresh() {
    const dravik::ReviewFrame* frame = model_.frame(frameID_);
    const bool active = model_.activeFrameID() == frameID_;
    const QString name = frame ? QString::fromStdString(frame->riderDisplayName) : QString();
    header_->setText(active ? name + u" · active"_s : name);

    const Presentation settings = model_.settings(frameID_);
    {
        const QSignalBlocker block(kind_);
        kind_->setCurrentIndex(settings.kind == "2D" ? 1 : 0);
    }
    {
        const QSignalBlocker block(showRaw_);
        showRaw_->setChecked(settings.showRaw);
    }
    // Restyling repolishes the whole canvas below, so only a change of activity does it.
    if (outline_->property("active") != QVariant(active)) {
        outline_->setProperty("active", active);
        outline_->setStyleSheet(active
                                    ? u"#photoOutline { border: 2px solid palette(highlight); }"_s
                                    : u"#photoOutline { border: 2px solid transparent; }"_s);
    }
    // Image sizes are whole pixels already, so the caption needs no rounding.
    caption_->setText(frame ? u"Independent photo view · "_s +
                                  QString::number(frame->imageSize.width) + u" × "_s +
                                  QString::number(frame->imageSize.height) + u" px"_s
                            : QString());
    fit_->setEnabled(model_.framingRegions().contains(frameID_));
}

} // namespace tessary
