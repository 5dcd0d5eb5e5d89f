// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model_fixture.h"
#include "shell/review_window.h"
#include "sidebar/two_line_delegate.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << text.toStdString();
}

namespace tessary::test {

inline std::string text(const QString& value) {
    return value.toStdString();
}

inline std::string presetJson(const std::string& title, const std::string& manifest,
                              const std::string& results) {
    return "{\"title\": \"" + title + "\", \"manifest\": \"" + manifest + "\", \"results\": \"" +
           results + "\"}";
}
inline std::string presetJson(const std::string& title, const SessionFiles& session) {
    return presetJson(title, session.manifest.string(), session.results.string());
}

inline QString secondLine(const QListWidgetItem* item) {
    return item->data(TwoLineDelegate::secondLineRole).toString();
}

// Clicks a list's row as a user does; the list answers after its own signal has returned.
inline void clickRow(QListWidget* list, int row) {
    QListWidgetItem* item = list->item(row);
    ASSERT_NE(item, nullptr);
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
    QApplication::processEvents();
}

// Texts of the labels a user can see under `root`, in creation order. Widgets added to a shown
// panel appear once the posted show requests are delivered.
inline QStringList visibleTexts(const QWidget& root) {
    QCoreApplication::sendPostedEvents();
    QStringList texts;
    for (const QLabel* label : root.findChildren<QLabel*>())
        if (label->isVisibleTo(&root))
            texts << label->text();
    return texts;
}
inline bool showsText(const QWidget& root, const QString& text) {
    return visibleTexts(root).contains(text);
}
// The visible label whose text starts with `prefix`; empty when there is none.
inline QString textStartingWith(const QWidget& root, const QString& prefix) {
    for (const QString& text : visibleTexts(root))
        if (text.startsWith(prefix))
            return text;
    return {};
}

// The visible button whose text or accessible name is `name`, or picker so named.
template <class Widget = QAbstractButton> Widget* named(const QWidget& root, const QString& name) {
    QCoreApplication::sendPostedEvents();
    for (Widget* widget : root.findChildren<Widget*>())
        if (widget->isVisibleTo(&root) &&
            (widget->accessibleName() == name || widget->property("text").toString() == name))
            return widget;
    return nullptr;
}
inline QAbstractButton* buttonNamed(const QWidget& root, const QString& name) {
    return named(root, name);
}
inline QComboBox* pickerNamed(const QWidget& root, const QString& name) {
    return named<QComboBox>(root, name);
}

// What a user's pick in a popup does: the picker shows the row and reports it as activated.
inline void choose(QComboBox* picker, int index) {
    picker->setCurrentIndex(index);
    emit picker->activated(index);
}

// The review window on the fixture's model, shown at a size a reviewer would use.
class ShellTest : public ModelTest {
  protected:
    ShellTest() {
        window.resize(1400, 900);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    // The bundled sample in joint mode, as a reviewer starts correcting joints.
    SessionFiles openInJointMode() {
        SessionFiles session = openBundled();
        model.setLeanMode(false);
        QApplication::processEvents();
        return session;
    }

    // Chooses a command from the menu bar with the mouse, as a reviewer does.
    void chooseFromMenu(QAction* command) {
        ASSERT_TRUE(command->isEnabled());
        QMenuBar* bar = window.menuBar();
        for (QAction* title : bar->actions()) {
            QMenu* menu = title->menu();
            if (!menu || !menu->actions().contains(command))
                continue;
            QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(title).center());
            ASSERT_TRUE(waitUntil([&] { return menu->isVisible(); }));
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(command).center());
            ASSERT_TRUE(waitUntil([&] { return !menu->isVisible(); }));
            QApplication::processEvents();
            return;
        }
        FAIL() << "not in the menu bar: " << text(command->text());
    }

    ReviewWindow window{model};
};

} // namespace tessary::test
