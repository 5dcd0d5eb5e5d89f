// SPDX-License-Identifier: Apache-2.0
#include "common/split_memory.h"

#include <QHash>
#include <QList>
#include <QSplitter>

namespace tessary {

namespace {

constexpr char keyProperty[] = "tessarySplitKey";

// Kept for the rest of the run, in every session.
QHash<QString, QList<int>>& remembered() {
    static QHash<QString, QList<int>> sizes;
    return sizes;
}

} // namespace

bool keepSplit(QSplitter* splitter, const QString& key) {
    if (!splitter->property(keyProperty).isValid())
        QObject::connect(splitter, &QSplitter::splitterMoved, splitter, [splitter] {
            remembered().insert(splitter->property(keyProperty).toString(), splitter->sizes());
        });
    splitter->setProperty(keyProperty, key);
    const auto found = remembered().constFind(key);
    if (found == remembered().constEnd() || found->size() != splitter->count())
        return false;
    splitter->setSizes(*found);
    return true;
}

} // namespace tessary
