// SPDX-License-Identifier: Apache-2.0
#include "arrange/session_setup_dialog.h"

#include "detection/detection_retry.h"
#include "reviewer_model.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <cmath>

namespace tessary {

namespace {

QString q(const std::string& text) {
    return QString::fromStdString(text);
}

// "b.jpg · Sam": the file names the photo; the rider name tells photos of one file apart.
QString photoLabel(const dravik::ArrangedPhoto& photo) {
    return q(photo.file + " \u00b7 " + photo.riderName);
}

// "2 pair statements, 1 lean check"; empty when nothing is dropped.
QString droppedText(const dravik::ArrangementEffect& effect) {
    QStringList parts;
    auto add = [&](std::size_t count, const char* one, const char* many) {
        if (count > 0)
            parts << QString::number(count) + " " + (count == 1 ? one : many);
    };
    add(effect.pairContexts, "pair statement", "pair statements");
    add(effect.leanPairContexts, "lean check", "lean checks");
    add(effect.photoCoaching, "coaching note", "coaching notes");
    add(effect.singlePhotoNotes, "single-photo note", "single-photo notes");
    add(effect.checklists, "checklist subject", "checklist subjects");
    return parts.join(", ");
}

QString candidateText(const dravik::Candidate& person, std::size_t number,
                      const std::vector<dravik::Candidate>& seen, bool chosen) {
    QString text = "Person " + QString::number(number);
    if (person.riding && *person.riding < seen.size())
        text += " \u00b7 riding a " + q(seen[*person.riding].kind);
    text += " \u00b7 " + QString::number(std::lround(person.score * 100)) + " % sure";
    if (chosen)
        text += " \u00b7 the detector\u2019s choice";
    return text;
}

} // namespace

SessionSetupDialog* SessionSetupDialog::openFor(QWidget* parent, ReviewerModel& model,
                                                const std::optional<std::string>& focusFrameID) {
    auto arrangement = model.arrangement();
    if (!arrangement)
        return nullptr;
    auto* dialog = new SessionSetupDialog(model, std::move(*arrangement), focusFrameID, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
    return dialog;
}

SessionSetupDialog::SessionSetupDialog(ReviewerModel& model, dravik::SessionArrangement arrangement,
                                       std::optional<std::string> focusFrameID, QWidget* parent)
    : QDialog(parent), model_(model), arrangement_(std::move(arrangement)),
      focus_(std::move(focusFrameID)), rows_(new QWidget), rowsLayout_(new QVBoxLayout(rows_)),
      effect_(new QLabel(this)), apply_(new QPushButton("Apply", this)) {
    setWindowTitle("Session setup");
    setMinimumSize(720, 480);
    auto* layout = new QVBoxLayout(this);

    auto* intro = new QLabel("Name the rider in each photo, and pair a rider photo with a "
                             "reference rider photo to compare them. Applying rewrites the "
                             "session; the review before stays beside it as a backup.",
                             this);
    intro->setWordWrap(true);
    layout->addWidget(intro);

    // Who the rider is in the photo the dialog was opened on, when the detector saw several people.
    const dravik::ReviewFrame* frame = focus_ ? model_.frame(*focus_) : nullptr;
    const RiderCandidates found = frame ? riderCandidates(*frame) : RiderCandidates{};
    if (found.people.size() > 1) {
        auto* group = new QGroupBox("Who is the rider in " + q(frame->file) + "?", this);
        auto* row = new QHBoxLayout(group);
        candidates_ = new QComboBox(group);
        candidates_->setAccessibleName("Rider candidate");
        for (std::size_t i = 0; i < found.people.size(); ++i) {
            const std::size_t index = found.people[i];
            candidates_->addItem(
                candidateText(found.seen[index], i + 1, found.seen, found.rider == index),
                static_cast<qulonglong>(index));
            if (found.rider == index)
                candidates_->setCurrentIndex(static_cast<int>(i));
        }
        detect_ = new QPushButton("Detect This Rider Again", group);
        detect_->setToolTip("Runs the detector again on this person and what they ride");
        row->addWidget(candidates_, 1);
        row->addWidget(detect_);
        layout->addWidget(group);
        connect(detect_, &QPushButton::clicked, this,
                [this, seen = found.seen, panel = frame->panel, frameID = frame->id] {
                    const auto person = candidates_->currentData().toULongLong();
                    // The retry runs on the active photo.
                    model_.activate(frameID);
                    model_.retryDetectionOn(riderArea(seen, person, panel));
                    reject();
                });
    }

    auto* scroll = new QScrollArea(this);
    scroll->setWidget(rows_);
    scroll->setWidgetResizable(true);
    layout->addWidget(scroll, 1);

    effect_->setWordWrap(true);
    effect_->setTextFormat(Qt::PlainText);
    layout->addWidget(effect_);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(apply_, QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    // Apply decides itself when the dialog closes: it is not connected to accept().
    connect(apply_, &QPushButton::clicked, this, &SessionSetupDialog::applyClicked);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    rebuild();
    if (focus_)
        if (QLineEdit* name = riderNameField(*focus_))
            name->setFocus();
}

QLineEdit* SessionSetupDialog::riderNameField(const std::string& frameID) const {
    return rows_->findChild<QLineEdit*>(q("rider:" + frameID));
}

QComboBox* SessionSetupDialog::referencePicker(const std::string& riderFrameID) const {
    return rows_->findChild<QComboBox*>(q("reference:" + riderFrameID));
}

QComboBox* SessionSetupDialog::directionPicker(const std::string& riderFrameID) const {
    return rows_->findChild<QComboBox*>(q("direction:" + riderFrameID));
}

QLineEdit* SessionSetupDialog::titleField(const std::string& riderFrameID) const {
    return rows_->findChild<QLineEdit*>(q("title:" + riderFrameID));
}

void SessionSetupDialog::rebuild() {
    while (QLayoutItem* item = rowsLayout_->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->setParent(nullptr); // out of findChild's reach at once
            widget->deleteLater();
        }
        delete item;
    }

    auto* photos = new QGroupBox("Riders", rows_);
    auto* names = new QFormLayout(photos);
    for (const dravik::ArrangedPhoto& photo : arrangement_.photos) {
        auto* field = new QLineEdit(q(photo.riderName), photos);
        field->setObjectName(q("rider:" + photo.frameID));
        field->setAccessibleName("Rider name of " + q(photo.file));
        connect(field, &QLineEdit::textEdited, this, [this, id = photo.frameID](const QString& t) {
            if (dravik::ArrangedPhoto* edited = arrangement_.photo(id))
                edited->riderName = t.toStdString();
            this->edited();
        });
        names->addRow(q(photo.file), field);
    }
    rowsLayout_->addWidget(photos);

    auto* pairs = new QGroupBox("Pairs", rows_);
    auto* grid = new QGridLayout(pairs);
    int column = 0;
    for (const char* heading : {"Title", "Rider photo", "Reference rider photo", "Corner"})
        grid->addWidget(new QLabel(heading, pairs), 0, column++);
    for (std::size_t i = 0; i < arrangement_.pairs.size(); ++i) {
        const dravik::ArrangedPair& pair = arrangement_.pairs[i];
        const int row = static_cast<int>(i) + 1;
        const dravik::ArrangedPhoto* rider = arrangement_.photo(pair.riderFrameID);

        auto* title = new QLineEdit(q(pair.title), pairs);
        title->setObjectName(q("title:" + pair.riderFrameID));
        title->setAccessibleName("Pair title");
        connect(title, &QLineEdit::textEdited, this, [this, i](const QString& t) {
            arrangement_.pairs[i].title = t.toStdString();
            edited();
        });
        grid->addWidget(title, row, 0);
        grid->addWidget(new QLabel(rider ? photoLabel(*rider) : QString(), pairs), row, 1);

        auto* reference = new QComboBox(pairs);
        reference->setObjectName(q("reference:" + pair.riderFrameID));
        reference->setAccessibleName("Reference rider photo");
        reference->addItem("None", QString());
        for (const dravik::ArrangedPhoto& photo : arrangement_.photos)
            if (photo.frameID != pair.riderFrameID) {
                reference->addItem(photoLabel(photo), q(photo.frameID));
                if (pair.referenceFrameID == photo.frameID)
                    reference->setCurrentIndex(reference->count() - 1);
            }
        connect(reference, &QComboBox::activated, this,
                [this, reference, riderID = pair.riderFrameID](int index) {
                    const std::string chosen = reference->itemData(index).toString().toStdString();
                    if (chosen.empty())
                        arrangement_.separate(riderID);
                    else
                        arrangement_.pairUp(riderID, chosen);
                    edited();
                    // The pairs change shape; the picker is not rebuilt under its own signal.
                    QTimer::singleShot(0, this, &SessionSetupDialog::rebuild);
                });
        grid->addWidget(reference, row, 2);

        auto* direction = new QComboBox(pairs);
        direction->setObjectName(q("direction:" + pair.riderFrameID));
        direction->setAccessibleName("Corner direction");
        direction->addItem("Unknown");
        direction->addItem("Left", static_cast<int>(dravik::CornerDirection::left));
        direction->addItem("Right", static_cast<int>(dravik::CornerDirection::right));
        if (pair.cornerDirection == dravik::CornerDirection::left)
            direction->setCurrentIndex(1);
        else if (pair.cornerDirection == dravik::CornerDirection::right)
            direction->setCurrentIndex(2);
        connect(direction, &QComboBox::activated, this, [this, i, direction](int index) {
            const QVariant value = direction->itemData(index);
            auto& chosen = arrangement_.pairs[i].cornerDirection;
            // "Unknown" clears a direction; one the manifest already calls unknown stays so.
            if (value.isValid())
                chosen = static_cast<dravik::CornerDirection>(value.toInt());
            else if (chosen != dravik::CornerDirection::unknown)
                chosen.reset();
            edited();
        });
        grid->addWidget(direction, row, 3);
    }
    grid->setColumnStretch(0, 2);
    grid->setColumnStretch(2, 2);
    rowsLayout_->addWidget(pairs);
    rowsLayout_->addStretch(1);
}

void SessionSetupDialog::edited() {
    confirming_ = false;
    apply_->setText("Apply");
    effect_->clear();
}

void SessionSetupDialog::applyClicked() {
    if (!confirming_) {
        dravik::ArrangementEffect effect;
        try {
            effect = model_.previewArrangement(arrangement_);
        } catch (const std::exception& failure) {
            effect_->setText(QString::fromUtf8(failure.what()));
            return;
        }
        const QString dropped = droppedText(effect);
        if (!dropped.isEmpty()) {
            // Said once, before anything is written; a second Apply goes ahead.
            confirming_ = true;
            effect_->setText("Applying drops " + dropped +
                             " about pairs that no longer exist. The review before stays "
                             "beside the session as a backup. Press \u201cApply Anyway\u201d to "
                             "go ahead.");
            apply_->setText("Apply Anyway");
            return;
        }
    }
    if (model_.arrange(arrangement_))
        accept();
    else if (model_.error())
        effect_->setText(q(*model_.error()));
}

} // namespace tessary
