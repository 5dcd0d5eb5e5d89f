// SPDX-License-Identifier: Apache-2.0
#include "sidebar/discovery_notices.h"

#include "common/collapsible_section.h"
#include "reviewer_model.h"
#include "sidebar/busy_spinner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QStringList>
#include <QVBoxLayout>

namespace tessary {

DiscoveryNotices::DiscoveryNotices(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), statusLine_(new QWidget(this)),
      spinner_(new BusySpinner(statusLine_)), status_(new QLabel(statusLine_)),
      failureGroup_(new CollapsibleSection("Folders needing attention", this)),
      failures_(new QLabel(failureGroup_)),
      unusableGroup_(new CollapsibleSection("Photos not imported", this)),
      unusable_(new QLabel(unusableGroup_)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);

    auto* line = new QHBoxLayout(statusLine_);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(spinner_);
    line->addWidget(status_, 1);
    status_->setWordWrap(true);
    status_->setTextFormat(Qt::PlainText);
    layout->addWidget(statusLine_);

    failures_->setWordWrap(true);
    failures_->setTextFormat(Qt::PlainText);
    failures_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    failureGroup_->contentLayout()->addWidget(failures_);
    layout->addWidget(failureGroup_);

    unusable_->setWordWrap(true);
    unusable_->setTextFormat(Qt::PlainText);
    unusable_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    unusableGroup_->contentLayout()->addWidget(unusable_);
    unusableGroup_->setExpanded(true); // the reviewer chose these files a moment ago
    layout->addWidget(unusableGroup_);

    connect(&model_, &ReviewerModel::discoveryChanged, this, &DiscoveryNotices::refresh);
    refresh();
}

void DiscoveryNotices::refresh() {
    const std::string& status = model_.discoveryStatus();
    statusLine_->setVisible(!status.empty());
    spinner_->setVisible(model_.isDiscovering());
    status_->setText(QString::fromStdString(status));

    QStringList lines;
    for (const std::string& failure : model_.discoveryFailures())
        lines << QString::fromStdString(failure);
    failureGroup_->setVisible(!lines.isEmpty());
    failures_->setText(lines.join('\n'));

    QStringList unusable;
    for (const std::string& photo : model_.unusablePhotos())
        unusable << QString::fromStdString(photo);
    unusableGroup_->setVisible(!unusable.isEmpty());
    unusable_->setText(unusable.join('\n'));
    setVisible(!status.empty() || !lines.isEmpty() || !unusable.isEmpty());
}

} // namespace tessary
