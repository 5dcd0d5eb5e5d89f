#include "lean/lean_evidence_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "dravik/lean_report.h"
#include "reviewer_model.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

// The five comparability checks, in the order the reviewer works through them.
struct Check {
    const char16_t* title;
    bool dravik::LeanPairContext::*flag;
};
const Check checks[] = {
    {u"Same wheel cue", &dravik::LeanPairContext::sameWheelCue},
    {u"Camera views comparable", &dravik::LeanPairContext::cameraViewsComparable},
    {u"Wheel headings comparable", &dravik::LeanPairContext::wheelHeadingsComparable},
    {u"Reference basis / correspondence comparable", &dravik::LeanPairContext::referenceComparable},
    {u"Camera roll comparable (image vertical)", &dravik::LeanPairContext::cameraRollComparable},
};

QString measurementLine(const dravik::ReviewFrame& frame, const dravik::LeanFrameEvidence* shown) {
    const QString name = QString::fromStdString(frame.riderDisplayName);
    const auto& measured = shown ? shown->measurement : std::nullopt;
    if (!measured)
        return name + u": wheel angle unavailable; place or review the lines."_s;
    return name + u": "_s + whole(measured->angle) + u"° · "_s + qText(measured->wording()) +
           u" · "_s + qText(dravik::label(measured->basis)) + u" · "_s +
           (measured->reviewed ? u"Reviewed"_s : u"Draft"_s) + u" · Annotation sensitivity "_s +
           whole(measured->low()) + u"° to "_s + whole(measured->high()) + u"°"_s;
}

QString comparisonLine(const dravik::LeanReport& report) {
    if (!report.comparison)
        return report.gap ? u"Comparison unavailable. "_s + qText(report.gap->explanation)
                          : u"Comparison unavailable."_s;
    const dravik::LeanComparison& comparison = *report.comparison;
    return QString::fromUtf8(RiderLabels::rider) + u" − "_s +
           QString::fromUtf8(RiderLabels::reference) + u": "_s +
           signedWhole(comparison.difference) + u"° ["_s + signedWhole(comparison.low()) +
           u"°, "_s + signedWhole(comparison.high()) + u"°] annotation sensitivity"_s;
}

QString approvalLine(const dravik::LeanReport& report, const dravik::LeanPairContext& context) {
    if (report.approved && report.evidenceDigest)
        return u"Approved · evidence "_s + qText(report.evidenceDigest->substr(0, 12));
    if (context.approvalDigest)
        return u"Not approved · the evidence or checks changed since the approval"_s;
    return u"Not approved"_s;
}

} // namespace

LeanEvidenceView::LeanEvidenceView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(headingLabel(u"Wheel lean evidence"_s, this));
    status_ = secondaryLabel({}, this);
    layout->addWidget(status_);
    measurements_ = new QVBoxLayout;
    layout->addLayout(measurements_);

    comparison_ = new QWidget(this);
    auto* pairLayout = new QVBoxLayout(comparison_);
    pairLayout->setContentsMargins(0, 0, 0, 0);
    readout_ = textLabel({}, comparison_);
    speedReadout_ = textLabel(u"Similar speed: user reported. Discuss the observation with "
                              u"separately reviewed posture and turn context."_s,
                              comparison_);
    pairLayout->addWidget(readout_);
    pairLayout->addWidget(speedReadout_);
    pairLayout->addWidget(headingLabel(u"Review comparison evidence"_s, comparison_));
    const auto currentContext = [this] {
        const dravik::ReviewDocument* document = model_.document();
        const auto pair = model_.pair();
        const dravik::LeanPairContext* stored =
            document && pair ? document->leanPairContext(pair->id) : nullptr;
        return stored ? *stored : dravik::LeanPairContext();
    };
    for (const Check& check : checks) {
        auto* box = new QCheckBox(QString::fromUtf16(check.title), comparison_);
        pairLayout->addWidget(box);
        checks_.append(box);
        connect(box, &QCheckBox::toggled, this, [this, flag = check.flag, currentContext](bool on) {
            dravik::LeanPairContext context = currentContext();
            context.*flag = on;
            model_.updateLeanContext(context, false);
        });
    }
    approve_ = new QPushButton(u"Approve this comparison"_s, comparison_);
    approve_->setCheckable(true);
    pairLayout->addWidget(approve_);
    approval_ = secondaryLabel({}, comparison_);
    pairLayout->addWidget(approval_);
    connect(approve_, &QPushButton::clicked, this, [this, currentContext] {
        model_.updateLeanContext(currentContext(), true);
        refresh(); // the click pressed the button; only the model says it stays so
    });
    similarSpeed_ = new QCheckBox(u"Similar speed — user reported"_s, comparison_);
    pairLayout->addWidget(similarSpeed_);
    connect(similarSpeed_, &QCheckBox::toggled, this, [this, currentContext](bool on) {
        dravik::LeanPairContext context = currentContext();
        context.similarSpeed = on;
        model_.updateLeanContext(context, false);
    });
    pairLayout->addWidget(
        secondaryLabel(u"Similar speed does not establish matched radius, turn phase, banking, or "
                       u"a body-position explanation."_s,
                       comparison_));
    layout->addWidget(comparison_);
    layout->addWidget(secondaryLabel(qText(dravik::LeanAnalysis::limitations()), this));
    layout->addStretch();

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::leanProposalsChanged})
        connect(&model_, signal, this, &LeanEvidenceView::refresh);
    for (auto signal : {&ReviewerModel::interactionChanged, &ReviewerModel::savedRevisionChanged})
        connect(&model_, signal, this, &LeanEvidenceView::refreshStatus);
    refresh();
}

void LeanEvidenceView::refreshStatus() {
    const dravik::ReviewDocument* document = model_.document();
    status_->setVisible(document != nullptr);
    if (!document)
        return;
    const QString state = model_.hasPreview()  ? u"Preview pending · release to save"_s
                          : model_.isUnsaved() ? u"Unsaved"_s
                                               : u"Saved locally"_s;
    status_->setText(u"Revision "_s + QString::number(document->revision()) + u" · "_s + state);
}

void LeanEvidenceView::refresh() {
    refreshStatus();
    clearLayout(measurements_);
    const dravik::ReviewDocument* document = model_.document();
    const dravik::LeanReport* report = model_.leanReport();
    if (document)
        for (const std::string& id : model_.visibleIDs())
            if (const dravik::ReviewFrame* frame = model_.frame(id))
                measurements_->addWidget(textLabel(measurementLine(*frame, report->frame(id))));

    const auto pair = model_.pair();
    const bool comparing = document && model_.compare() && pair && pair->hasReference();
    comparison_->setVisible(comparing);
    if (!comparing)
        return;
    const dravik::LeanPairContext* stored = document->leanPairContext(pair->id);
    const dravik::LeanPairContext context = stored ? *stored : dravik::LeanPairContext();
    readout_->setText(comparisonLine(*report));
    speedReadout_->setVisible(context.similarSpeed);
    for (qsizetype i = 0; i < checks_.size(); ++i) {
        const QSignalBlocker block(checks_[i]);
        checks_[i]->setChecked(context.*checks[i].flag);
    }
    {
        const QSignalBlocker block(similarSpeed_);
        similarSpeed_->setChecked(context.similarSpeed);
    }
    approve_->setEnabled(context.checksComplete());
    // Shown pressed while the approval still names the evidence on screen.
    approve_->setChecked(report->approved);
    approval_->setText(approvalLine(*report, context));
}

} // namespace tessary
