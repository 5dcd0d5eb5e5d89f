// SPDX-License-Identifier: Apache-2.0
#include "sidebar/sidebar.h"

#include "reviewer_model.h"
#include "sidebar/two_line_delegate.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tessary {

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;

namespace {

constexpr int pairIDRole = TwoLineDelegate::secondLineRole + 1;

QLabel* sectionHeader(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 0.85);
    label->setFont(font);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

struct Row {
    QString first;
    QString second;
    QString pairID;
};

std::vector<Row> frameRows(const dravik::ReviewDocument& document) {
    std::vector<Row> rows;
    for (const dravik::ReviewFrame& frame : document.frames())
        rows.push_back({QString::fromStdString(frame.name + " · " + frame.riderDisplayName),
                        QString::number(frame.edits.size()) + " / 19 reviewed",
                        {}});
    return rows;
}

std::vector<Row> pairRows(const ReviewerModel& model) {
    std::vector<Row> rows;
    for (const dravik::ReviewPair& pair : model.pairs()) {
        // A pair's title is the name its frames carry.
        const dravik::ReviewFrame* first =
            pair.frameIDs.empty() ? nullptr : model.frame(pair.frameIDs.front());
        rows.push_back(
            {first ? QString::fromStdString(first->name) : QString(),
             pair.hasReference() ? "Rider + Reference rider" : "No reference rider · Single",
             QString::fromStdString(pair.id)});
    }
    return rows;
}

} // namespace

Sidebar::Sidebar(ReviewerModel& model, QWidget* parent)
    : QWidget(parent), model_(model), photos_(new QListWidget(this)), sessions_(new QWidget),
      sessionButtons_(new QVBoxLayout(sessions_)), discover_(new QPushButton(this)),
      open_(new QPushButton("Open Session…", this)),
      import_(new QPushButton("Import Photo Folder…", this)) {
    setFixedWidth(columnWidth);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 10, 8, 10);
    layout->setSpacing(6);

    layout->addWidget(sectionHeader("PHOTOS", this));
    photos_->setItemDelegate(new TwoLineDelegate(photos_));
    photos_->setSelectionMode(QAbstractItemView::SingleSelection);
    photos_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    photos_->setAccessibleName("Photos");
    layout->addWidget(photos_, 3);

    layout->addWidget(sectionHeader("Sessions", this));
    sessionButtons_->setContentsMargins(0, 0, 0, 0);
    sessionButtons_->setSpacing(2);
    sessionButtons_->addStretch();
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(sessions_);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layout->addWidget(scroll, 1);
    layout->addWidget(discover_);
    layout->addWidget(open_);
    layout->addWidget(import_);

    // The model is asked after the list has finished its own signal, since the answer can rebuild
    // the list.
    connect(photos_, &QListWidget::currentRowChanged, this, &Sidebar::choose, Qt::QueuedConnection);
    connect(discover_, &QPushButton::clicked, this, [this] { model_.discoverSessions(); });
    connect(open_, &QPushButton::clicked, this, [this] { model_.openSession(); });
    connect(import_, &QPushButton::clicked, this, [this] { model_.importPhotoFolder(); });

    connect(&model_, &ReviewerModel::snapshotChanged, this, &Sidebar::refreshPhotos);
    connect(&model_, &ReviewerModel::navigationChanged, this, &Sidebar::refreshPhotos);
    connect(&model_, &ReviewerModel::presetsChanged, this, &Sidebar::refreshPresets);
    connect(&model_, &ReviewerModel::sessionChanged, this, &Sidebar::refreshPresets);
    connect(&model_, &ReviewerModel::discoveryChanged, this, &Sidebar::refreshDiscovery);
    refreshPhotos();
    refreshPresets();
    refreshDiscovery();
}

void Sidebar::refreshPhotos() {
    const dravik::ReviewDocument* document = model_.document();
    const std::vector<Row> rows = !document          ? std::vector<Row>{}
                                  : model_.compare() ? pairRows(model_)
                                                     : frameRows(*document);
    int current = -1;
    if (document && model_.compare()) {
        if (auto pair = model_.pair())
            for (std::size_t i = 0; i < rows.size(); ++i)
                if (rows[i].pairID.toStdString() == pair->id)
                    current = static_cast<int>(i);
    } else if (document && model_.activeFrameID()) {
        if (auto index = document->frameIndex(*model_.activeFrameID()))
            current = static_cast<int>(*index);
    }

    const QSignalBlocker blocker(photos_);
    while (photos_->count() > static_cast<int>(rows.size()))
        delete photos_->takeItem(photos_->count() - 1);
    while (photos_->count() < static_cast<int>(rows.size()))
        photos_->addItem(new QListWidgetItem);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        QListWidgetItem* item = photos_->item(static_cast<int>(i));
        item->setText(rows[i].first);
        item->setData(TwoLineDelegate::secondLineRole, rows[i].second);
        item->setData(pairIDRole, rows[i].pairID);
        item->setToolTip(rows[i].first + "\n" + rows[i].second);
    }
    photos_->setCurrentRow(current);
    if (current < 0)
        photos_->clearSelection();
}

void Sidebar::choose(int row) {
    QListWidgetItem* item = photos_->item(row);
    if (!item || !model_.document())
        return;
    const QString pairID = item->data(pairIDRole).toString();
    if (model_.compare() && !pairID.isEmpty())
        model_.selectPair(pairID.toStdString());
    else if (!model_.compare())
        model_.selectFrame(row);
    // A refused choice leaves the model where it was; show that again.
    refreshPhotos();
}

void Sidebar::refreshPresets() {
    while (sessionButtons_->count() > 1) {
        QLayoutItem* item = sessionButtons_->takeAt(0);
        if (QWidget* button = item->widget()) {
            button->hide();
            button->deleteLater();
        }
        delete item;
    }
    int position = 0;
    const auto open = model_.manifestURL();
    const int width = columnWidth - 30; // the column less its margins and the button's padding
    for (const ReviewPreset& preset : model_.presets()) {
        const bool isOpen = open && fs::path(preset.manifest) == *open;
        const QString title = QString::fromStdString(preset.title);
        auto* button = new QPushButton(sessions_);
        QFont font = button->font();
        font.setBold(isOpen);
        button->setFont(font);
        // Plain text, cut to the column: "&" is not a mnemonic here.
        button->setText(
            QFontMetrics(font)
                .elidedText((isOpen ? u"\u25b8 "_s : QString()) + title, Qt::ElideRight, width)
                .replace('&', "&&"));
        button->setFlat(true);
        button->setStyleSheet("text-align: left; padding: 2px 4px;");
        button->setAccessibleDescription(isOpen ? u"Open session"_s : QString());
        button->setToolTip(title + (isOpen ? u" · open"_s : QString()) + u"\n"_s +
                           QString::fromStdString(preset.manifest));
        connect(button, &QPushButton::clicked, this, [this, preset] { model_.openPreset(preset); });
        sessionButtons_->insertWidget(position++, button);
        button->show();
    }
}

void Sidebar::refreshDiscovery() {
    const bool busy = model_.isDiscovering();
    discover_->setText(busy ? "Analyzing folders…" : "Check for new folders");
    discover_->setEnabled(!busy);
    import_->setEnabled(!busy);
}

} // namespace tessary
