#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QStringList>
#include <QWidget>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << text.toStdString();
}
inline void PrintTo(const QStringList& texts, std::ostream* out) {
    *out << texts.join(u" | ").toStdString();
}

namespace tessary::test {

// Widgets added to a shown panel appear once the posted show requests are delivered.
inline void settle() {
    QCoreApplication::sendPostedEvents();
}

// Texts of the labels a user can see under `root`, in creation order.
inline QStringList visibleTexts(const QWidget& root) {
    settle();
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

template <class Button = QAbstractButton>
Button* buttonNamed(const QWidget& root, const QString& text) {
    settle();
    for (Button* button : root.findChildren<Button*>())
        if (button->isVisibleTo(&root) &&
            (button->text() == text || button->accessibleName() == text))
            return button;
    return nullptr;
}

inline QComboBox* pickerNamed(const QWidget& root, const QString& name) {
    settle();
    for (QComboBox* picker : root.findChildren<QComboBox*>())
        if (picker->isVisibleTo(&root) && picker->accessibleName() == name)
            return picker;
    return nullptr;
}

} // namespace tessary::test

namespace tessary::test {

// What a user's pick in a popup does: the picker shows the row and reports it as activated.
inline void choose(QComboBox* picker, int index) {
    picker->setCurrentIndex(index);
    emit picker->activated(index);
}

} // namespace tessary::test
