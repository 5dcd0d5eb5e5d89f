#include "pair/angle_measurements_view.h"

#include "common/text_format.h"
#include "common/widgets.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

using namespace Qt::StringLiterals;

namespace {

QString differenceText(const std::optional<double>& difference) {
    if (!difference)
        return u"Unavailable"_s;
    return u"Visible difference: "_s + signedWhole(*difference) + u"° "_s +
           QString::fromUtf8(RiderLabels::rider) + u" − "_s +
           QString::fromUtf8(RiderLabels::reference) + u"; this is not a target or fault."_s;
}

// The side's angle, then why it is missing when it is.
void addSide(QVBoxLayout* layout, const char* sideLabel, const dravik::AngleSide& side) {
    const QString name = QString::fromUtf8(sideLabel);
    layout->addWidget(
        textLabel(name + u": "_s + (side.angle ? whole(*side.angle) + u"°"_s : u"unavailable"_s)));
    if (!side.missingJoints.empty()) {
        QStringList joints;
        for (const std::string& joint : side.missingJoints)
            joints << QString::fromStdString(joint);
        layout->addWidget(
            secondaryLabel(name + u" needs visible review: "_s + joints.join(u", "_s)));
    } else if (side.degenerate) {
        layout->addWidget(secondaryLabel(name + u": degenerate geometry; angle unavailable."_s));
    }
}

} // namespace

AngleMeasurementsView::AngleMeasurementsView(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(u"2D included angles · measurements and evidence"_s, this));
    observations_ = new QVBoxLayout;
    layout->addLayout(observations_);
    evidence_ = secondaryLabel({}, this);
    layout->addWidget(evidence_);
    layout->addWidget(secondaryLabel(qText(dravik::PairReport::limitations()), this));

    connect(&model_, &ReviewerModel::snapshotChanged, this, &AngleMeasurementsView::refresh);
    connect(&model_, &ReviewerModel::navigationChanged, this, &AngleMeasurementsView::refresh);
    refresh();
}

void AngleMeasurementsView::refresh() {
    clearLayout(observations_);
    const dravik::PairReport* report = model_.report();
    if (!report)
        return;
    for (const dravik::PairObservation& observation : report->observations) {
        auto* block = new QVBoxLayout;
        block->setSpacing(2);
        auto* title = textLabel(qText(dravik::label(observation.feature)));
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        block->addWidget(title);

        auto* row = new QHBoxLayout;
        row->addWidget(new QLabel(u"Views"_s));
        auto* views = new QComboBox;
        views->setAccessibleName(u"Views"_s);
        for (dravik::ViewComparability value : dravik::allViewComparabilities)
            views->addItem(qText(dravik::label(value)));
        const auto* all = std::begin(dravik::allViewComparabilities);
        views->setCurrentIndex(static_cast<int>(
            std::find(all, std::end(dravik::allViewComparabilities), observation.comparability) -
            all));
        connect(views, &QComboBox::activated, this, [this, id = observation.id](int index) {
            const dravik::PairReport* current = model_.report();
            if (!current)
                return;
            dravik::PairContext context = current->context;
            context.viewComparability[id] = dravik::allViewComparabilities[index];
            model_.updateContext(context);
        });
        row->addWidget(views);
        row->addStretch();
        block->addLayout(row);

        block->addWidget(textLabel(differenceText(observation.difference)));
        addSide(block, RiderLabels::rider, observation.rider);
        addSide(block, RiderLabels::reference, observation.reference);
        observations_->addLayout(block);
    }
    evidence_->setText(u"Evidence "_s + QString::fromStdString(report->shortDigest()) +
                       u" · analyzer "_s + QString::fromStdString(report->analyzerVersion) +
                       u" · rules "_s + QString::fromStdString(report->ruleCatalogVersion));
}

} // namespace tessary
