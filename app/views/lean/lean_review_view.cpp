// SPDX-License-Identifier: Apache-2.0
#include "lean/lean_review_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "dravik/lean.h"
#include "reviewer_model.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

QString uncertaintyText(const char* what, const std::optional<dravik::LeanLine>& line) {
    const double value = line ? line->uncertainty : dravik::placedLeanUncertainty;
    return QString::fromUtf8(what) + u": ±"_s + whole(value) + u" px"_s;
}

QToolButton* smallButton(const QString& text, const QString& accessibleName, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setAccessibleName(accessibleName);
    button->setToolTip(accessibleName);
    return button;
}

} // namespace

LeanReviewView::LeanReviewView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    title_ = headingLabel({}, this);
    layout->addWidget(title_);
    layout->addWidget(secondaryLabel(u"Yellow: wheel axis\nCyan: reference / proxy horizon"_s));

    showLean_ = new QCheckBox(u"Show lean overlay"_s, this);
    layout->addWidget(showLean_);
    connect(showLean_, &QCheckBox::toggled, this, [this](bool on) {
        model_.cancelInteraction();
        model_.setShowLean(on);
    });
    layout->addWidget(secondaryLabel(u"Drag either line’s endpoints on the photo. Arrow keys move "
                                     u"the selected endpoint; Shift moves 10 pixels."_s));

    auto* endpointRow = new QHBoxLayout;
    endpointRow->addWidget(new QLabel(u"Endpoint"_s, this));
    endpoint_ = new QComboBox(this);
    endpoint_->setAccessibleName(u"Endpoint"_s);
    for (dravik::LeanHandle handle : dravik::allLeanHandles)
        endpoint_->addItem(qText(dravik::label(handle)));
    endpointRow->addWidget(endpoint_, 1);
    layout->addLayout(endpointRow);
    connect(endpoint_, &QComboBox::activated, this,
            [this](int index) { model_.setSelectedLeanHandle(dravik::allLeanHandles[index]); });

    struct Arrow {
        const char16_t* text;
        const char16_t* name;
        double dx, dy;
    };
    const Arrow arrows[] = {{u"←", u"Move lean endpoint left", -1, 0},
                            {u"↑", u"Move lean endpoint up", 0, -1},
                            {u"↓", u"Move lean endpoint down", 0, 1},
                            {u"→", u"Move lean endpoint right", 1, 0}};
    auto* arrowRow = new QHBoxLayout;
    for (const Arrow& arrow : arrows) {
        QToolButton* button =
            smallButton(QString::fromUtf16(arrow.text), QString::fromUtf16(arrow.name), this);
        connect(button, &QToolButton::clicked, this,
                [this, dx = arrow.dx, dy = arrow.dy] { model_.nudgeLean(dx, dy); });
        arrows_.append(button);
        arrowRow->addWidget(button);
    }
    arrowRow->addStretch();
    layout->addLayout(arrowRow);

    placeWheel_ = new QPushButton(u"Place / replace wheel axis"_s, this);
    layout->addWidget(placeWheel_);
    connect(placeWheel_, &QPushButton::clicked, this, [this] { model_.beginLeanPlacement(false); });
    placementPrompt_ = textLabel({}, this);
    layout->addWidget(placementPrompt_);
    cancelPlacement_ = new QPushButton(u"Cancel placement"_s, this);
    layout->addWidget(cancelPlacement_);
    connect(cancelPlacement_, &QPushButton::clicked, this, [this] { model_.cancelInteraction(); });

    layout->addWidget(divider(this));
    layout->addWidget(headingLabel(u"Reference basis"_s, this));
    basis_ = new QComboBox(this);
    basis_->setAccessibleName(u"Reference basis"_s);
    for (dravik::LeanBasis basis : dravik::allLeanBases)
        basis_->addItem(qText(dravik::label(basis)));
    layout->addWidget(basis_);
    connect(basis_, &QComboBox::activated, this, [this](int index) {
        const dravik::LeanBasis chosen = dravik::allLeanBases[index];
        model_.changeLean(
            [chosen](dravik::LeanAnnotation& annotation) { annotation.basis = chosen; });
    });
    placeReference_ = new QPushButton(u"Place / replace reference line"_s, this);
    layout->addWidget(placeReference_);
    connect(placeReference_, &QPushButton::clicked, this,
            [this] { model_.beginLeanPlacement(true); });
    featureID_ = new QLineEdit(this);
    featureID_->setPlaceholderText(u"Same feature ID in both photos"_s);
    featureID_->setAccessibleName(u"Same feature ID in both photos"_s);
    featureID_->setMaxLength(static_cast<int>(dravik::maxLeanTextLength));
    layout->addWidget(featureID_);
    connect(featureID_, &QLineEdit::editingFinished, this, &LeanReviewView::commitFeatureID);
    layout->addWidget(
        secondaryLabel(u"Mark the same two stationary points in both photos. The feature need not "
                       u"be level. Curved edges need the same local segment."_s));
    referenceReviewed_ = new QCheckBox(u"Reference evidence reviewed"_s, this);
    layout->addWidget(referenceReviewed_);
    connect(referenceReviewed_, &QCheckBox::toggled, this, [this](bool on) {
        model_.changeLean(
            [on](dravik::LeanAnnotation& annotation) { annotation.referenceReviewed = on; });
    });
    caution_ = warningLabel({}, this);
    layout->addWidget(caution_);

    layout->addWidget(divider(this));
    auto* uncertainties = new QGridLayout;
    wheelUncertainty_ = textLabel({}, this);
    referenceUncertainty_ = textLabel({}, this);
    const auto addStepper = [&](int row, QLabel* label, dravik::LeanLineKind kind,
                                const QString& what, QList<QToolButton*>& steps) {
        uncertainties->addWidget(label, row, 0);
        QToolButton* down = smallButton(u"−"_s, u"Decrease "_s + what, this);
        QToolButton* up = smallButton(u"+"_s, u"Increase "_s + what, this);
        for (auto [button, direction] : {std::pair{down, -1}, std::pair{up, 1}})
            connect(button, &QToolButton::clicked, this, [this, kind, direction] {
                model_.changeLean([kind, direction](dravik::LeanAnnotation& annotation) {
                    annotation.stepUncertainty(kind, direction);
                });
            });
        uncertainties->addWidget(down, row, 1);
        uncertainties->addWidget(up, row, 2);
        steps = {down, up};
    };
    addStepper(0, wheelUncertainty_, dravik::LeanLineKind::wheel, u"wheel uncertainty"_s,
               wheelSteps_);
    addStepper(1, referenceUncertainty_, dravik::LeanLineKind::reference,
               u"reference uncertainty"_s, referenceSteps_);
    uncertainties->setColumnStretch(0, 1);
    layout->addLayout(uncertainties);

    confirmWheel_ = new QPushButton(u"Confirm visible wheel axis"_s, this);
    markUnobservable_ = new QPushButton(u"Mark unobservable"_s, this);
    clearWheel_ = new QPushButton(u"Clear wheel axis"_s, this);
    clearReference_ = new QPushButton(u"Clear reference line"_s, this);
    for (QPushButton* button : {confirmWheel_, markUnobservable_, clearWheel_, clearReference_})
        layout->addWidget(button);
    connect(confirmWheel_, &QPushButton::clicked, this, [this] {
        model_.changeLean([](dravik::LeanAnnotation& annotation) { annotation.confirmWheel(); });
    });
    connect(markUnobservable_, &QPushButton::clicked, this, [this] {
        model_.changeLean(
            [](dravik::LeanAnnotation& annotation) { annotation.markWheelNotObservable(); });
    });
    connect(clearWheel_, &QPushButton::clicked, this, [this] {
        model_.changeLean(
            [](dravik::LeanAnnotation& annotation) { annotation.setWheel(std::nullopt); });
    });
    connect(clearReference_, &QPushButton::clicked, this, [this] {
        model_.changeLean(
            [](dravik::LeanAnnotation& annotation) { annotation.setReference(std::nullopt); });
    });

    layout->addWidget(secondaryLabel(u"Edits save on release and can be undone. Draft guesses "
                                     u"are not reviewed measurements."_s));
    layout->addStretch();

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::viewOptionsChanged, &ReviewerModel::interactionChanged,
                        &ReviewerModel::selectionChanged, &ReviewerModel::leanProposalsChanged})
        connect(&model_, signal, this, &LeanReviewView::refresh);
    refresh();
}

void LeanReviewView::commitFeatureID() {
    const dravik::ReviewFrame* active = model_.frame();
    if (!active)
        return;
    const std::string typed = featureID_->text().toStdString();
    const auto current = model_.lean(active->id);
    if ((current ? current->featureID : std::string()) == typed)
        return;
    model_.changeLean(
        [&typed](dravik::LeanAnnotation& annotation) { annotation.featureID = typed; });
}

void LeanReviewView::refresh() {
    const dravik::ReviewFrame* active = model_.frame();
    const auto annotation = active ? model_.lean(active->id) : std::nullopt;
    const bool hasFrame = active != nullptr;
    const bool hasWheel = annotation && annotation->wheel;
    const bool hasReference = annotation && annotation->reference;

    title_->setText((active ? QString::fromStdString(active->riderDisplayName) : u"Rider"_s) +
                    u" · wheel lean"_s);
    {
        const QSignalBlocker block(showLean_);
        showLean_->setChecked(model_.showLean());
    }
    {
        const QSignalBlocker block(endpoint_);
        const auto handles = std::begin(dravik::allLeanHandles);
        endpoint_->setCurrentIndex(static_cast<int>(
            std::find(handles, std::end(dravik::allLeanHandles), model_.selectedLeanHandle()) -
            handles));
    }
    const bool endpointPresent = annotation && annotation->point(model_.selectedLeanHandle());
    for (QToolButton* arrow : arrows_)
        arrow->setEnabled(endpointPresent);
    endpoint_->setEnabled(hasFrame);
    placeWheel_->setEnabled(hasFrame);
    placeReference_->setEnabled(hasFrame);

    const bool placing = model_.leanPlacement().has_value();
    placementPrompt_->setVisible(placing);
    cancelPlacement_->setVisible(placing);
    placementPrompt_->setText(model_.leanPlacementStart()
                                  ? u"Click the second endpoint. Escape cancels."_s
                                  : u"Click the first endpoint, then the second."_s);

    const dravik::LeanBasis basis =
        annotation ? annotation->basis : dravik::LeanBasis::assumedLevel;
    {
        const QSignalBlocker block(basis_);
        basis_->setCurrentIndex(basis == dravik::LeanBasis::assumedLevel ? 0 : 1);
        basis_->setEnabled(hasFrame);
    }
    caution_->setText(basis == dravik::LeanBasis::assumedLevel
                          ? u"This line is only assumed level. It does not establish physical "
                            u"motorcycle lean."_s
                          : u"Review correspondence and perspective; watermarks and moving "
                            u"objects are not references."_s);
    // Typing is not interrupted by redraws; the field shows the model again once left.
    if (!featureID_->hasFocus())
        featureID_->setText(annotation ? QString::fromStdString(annotation->featureID) : QString());
    featureID_->setEnabled(hasFrame);
    {
        const QSignalBlocker block(referenceReviewed_);
        referenceReviewed_->setChecked(annotation && annotation->referenceReviewed);
        referenceReviewed_->setEnabled(hasReference);
    }

    wheelUncertainty_->setText(
        uncertaintyText("Wheel uncertainty", annotation ? annotation->wheel : std::nullopt));
    referenceUncertainty_->setText(uncertaintyText(
        "Reference uncertainty", annotation ? annotation->reference : std::nullopt));
    const auto enableSteps = [&](const QList<QToolButton*>& steps, dravik::LeanLineKind kind) {
        steps[0]->setEnabled(annotation && annotation->canStepUncertainty(kind, -1));
        steps[1]->setEnabled(annotation && annotation->canStepUncertainty(kind, 1));
    };
    enableSteps(wheelSteps_, dravik::LeanLineKind::wheel);
    enableSteps(referenceSteps_, dravik::LeanLineKind::reference);

    // Confirming must change what the annotation says about the wheel.
    confirmWheel_->setEnabled(hasWheel &&
                              (!annotation->wheelReviewed || annotation->wheelNotObservable));
    markUnobservable_->setEnabled(hasFrame && !(annotation && annotation->wheelNotObservable));
    clearWheel_->setEnabled(hasWheel);
    clearReference_->setEnabled(hasReference);
}

} // namespace tessary
