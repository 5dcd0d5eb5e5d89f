#pragma once

#include "model_fixture.h"
#include "shell/review_window.h"
#include "shell/two_line_delegate.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QTest>
#include <functional>

namespace tessary::test {

// Runs queued work until `done` holds or five seconds pass.
inline bool waitUntil(const std::function<bool()>& done, int milliseconds = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > milliseconds)
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 10);
        QTest::qWait(5);
    }
    return true;
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

    ReviewWindow window{model};
};

} // namespace tessary::test
