// SPDX-License-Identifier: Apache-2.0
#include "inspector/joint_inspector.h"

#include "dravik/joints.h"
#include "reviewer_model.h"
#include "sidebar/two_line_delegate.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QtGlobal>

namespace tessary {

namespace {

QString rowTitle(const std::string& joint) {
    const auto number = dravik::InspectionRenderer::jointID(joint);
    if (!number)
        qFatal("The joint %s has no number.", joint.c_str());
    return QString::number(*number) + "  " + QString::fromStdString(joint);
}

QString stateLine(const dravik::ReviewFrame& frame, const std::string& joint,
                  const std::string& kind) {
    if (auto edit = frame.edits.find(joint); edit != frame.edits.end())
        return QString::fromUtf8(dravik::label(edit->second.state));
    if (frame.seedPoint(joint, kind))
        return "Raw · unreviewed";
    return "No detection · place manually";
}

QLabel* secondaryText(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
    return label;
}

} // namespace

JointInspector::JointInspector(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), heading_(new QLabel(this)), joints_(new QListWidget(this)),
      place_(new QPushButton(this)), confirm_(new QPushButton("Confirm visible location", this)),
      obscured_(new QPushButton("Mark obscured / unobservable", this)),
      uncertain_(new QPushButton("Mark uncertain", this)) {
    setFixedWidth(columnWidth);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);

    QFont headingFont = heading_->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.15);
    heading_->setFont(headingFont);
    heading_->setTextFormat(Qt::PlainText);
    // A long rider name wraps rather than being cut at the column's edge.
    heading_->setWordWrap(true);
    layout->addWidget(heading_);
    layout->addWidget(secondaryText(
        "Cyan: unreviewed · green: reviewed\nOrange: uncertain or raw comparison", this));

    joints_->setItemDelegate(new TwoLineDelegate(joints_));
    joints_->setSelectionMode(QAbstractItemView::SingleSelection);
    joints_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    joints_->setAccessibleName("Joints");
    for (const std::string& joint : dravik::InspectionRenderer::jointNames()) {
        auto* item = new QListWidgetItem(rowTitle(joint), joints_);
        item->setData(Qt::UserRole, QString::fromStdString(joint));
    }
    layout->addWidget(joints_, 1);

    for (QPushButton* button : {place_, confirm_, obscured_, uncertain_})
        layout->addWidget(button);
    auto* footnote = secondaryText("Obscured joints are excluded. Corrections affect 2D locations "
                                   "only; hidden depth remains unvalidated.",
                                   this);
    QFont small = footnote->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    footnote->setFont(small);
    layout->addWidget(footnote);

    // Queued: the model's answer redraws this list, which must not happen inside its own signal.
    connect(
        joints_, &QListWidget::currentRowChanged, this,
        [this](int row) {
            if (QListWidgetItem* item = joints_->item(row))
                model_.setSelected(item->data(Qt::UserRole).toString().toStdString());
            refresh();
        },
        Qt::QueuedConnection);
    connect(place_, &QPushButton::clicked, this, [this] { model_.setPlacing(!model_.placing()); });
    connect(confirm_, &QPushButton::clicked, this,
            [this] { model_.setState(dravik::JointReviewState::confirmedVisible); });
    connect(obscured_, &QPushButton::clicked, this,
            [this] { model_.setState(dravik::JointReviewState::obscured); });
    connect(uncertain_, &QPushButton::clicked, this,
            [this] { model_.setState(dravik::JointReviewState::uncertain); });

    for (auto signal : {&ReviewerModel::snapshotChanged, &ReviewerModel::navigationChanged,
                        &ReviewerModel::selectionChanged, &ReviewerModel::interactionChanged,
                        &ReviewerModel::presentationChanged})
        connect(&model_, signal, this, &JointInspector::refresh);
    refresh();
}

void JointInspector::refresh() {
    const dravik::ReviewFrame* frame = model_.frame();
    heading_->setText(frame ? QString::fromStdString(frame->riderDisplayName + " · active rider")
                            : QString("Joint"));
    const std::string kind = frame ? model_.settings(frame->id).kind : std::string();

    const QSignalBlocker blocker(joints_);
    for (int row = 0; row < joints_->count(); ++row) {
        QListWidgetItem* item = joints_->item(row);
        const std::string joint = item->data(Qt::UserRole).toString().toStdString();
        item->setData(TwoLineDelegate::secondLineRole,
                      frame ? stateLine(*frame, joint, kind) : QString());
        if (joint == model_.selected())
            joints_->setCurrentItem(item);
    }

    place_->setText(model_.placing() ? "Cancel placement" : "Place selected joint");
    place_->setEnabled(frame);
    confirm_->setEnabled(frame && frame->displayPoint(model_.selected(), kind));
    obscured_->setEnabled(frame);
    uncertain_->setEnabled(frame);
}

} // namespace tessary
