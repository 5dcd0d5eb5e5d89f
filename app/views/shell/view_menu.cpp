// SPDX-License-Identifier: Apache-2.0
#include "shell/view_menu.h"

#include "pair/frame_pane.h"
#include "reviewer_model.h"
#include "shell/reviewer_view.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>

namespace tessary {

namespace {

QAction* addCommand(QMenu* menu, const QString& text, QList<QKeySequence> keys) {
    QAction* action = menu->addAction(text);
    action->setShortcuts(keys);
    // Heard wherever the focus is, even inside a scrolling panel.
    action->setShortcutContext(Qt::WindowShortcut);
    return action;
}

} // namespace

void addViewMenu(QMainWindow& window, ReviewerView& view, ReviewerModel& model) {
    QMenu* menu = window.menuBar()->addMenu("&View");
    const auto onPane = [&view](auto act) {
        return [&view, act] {
            if (FramePane* pane = view.activePane())
                act(*pane);
        };
    };
    QObject::connect(addCommand(menu, "Zoom &In",
                                {QKeySequence::ZoomIn, QKeySequence(Qt::CTRL | Qt::Key_Equal)}),
                     &QAction::triggered, &view, onPane([](FramePane& pane) { pane.zoomStep(1); }));
    QObject::connect(addCommand(menu, "Zoom &Out", {QKeySequence::ZoomOut}), &QAction::triggered,
                     &view, onPane([](FramePane& pane) { pane.zoomStep(-1); }));
    QObject::connect(addCommand(menu, "&Whole Photo", {QKeySequence(Qt::CTRL | Qt::Key_0)}),
                     &QAction::triggered, &view,
                     onPane([](FramePane& pane) { pane.showWholePhoto(); }));
    menu->addSeparator();
    QObject::connect(
        addCommand(menu, "&Next Photo",
                   {QKeySequence(Qt::Key_PageDown), QKeySequence(Qt::CTRL | Qt::Key_Down)}),
        &QAction::triggered, &model, [&model] { model.step(1); });
    QObject::connect(
        addCommand(menu, "&Previous Photo",
                   {QKeySequence(Qt::Key_PageUp), QKeySequence(Qt::CTRL | Qt::Key_Up)}),
        &QAction::triggered, &model, [&model] { model.step(-1); });
}

} // namespace tessary
