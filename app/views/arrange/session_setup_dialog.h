// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/session_arrangement.h"

#include <QDialog>
#include <optional>
#include <string>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// "Session setup": who rides in each photo, which rider photo is compared with which reference
// rider photo, the pairs' titles and corner directions. The reviewer edits a copy of the
// session's arrangement; Apply shows what the change would drop, asks once, and has the model
// rewrite the session and reopen it. Opened on one photo ("Set rider…"), it also lets the reviewer
// pick which of the people the detector saw is the rider, and detect that one again.
class SessionSetupDialog : public QDialog {
    Q_OBJECT

  public:
    // Opens the dialog window-modally over `parent`; none when no session is open.
    static SessionSetupDialog* openFor(QWidget* parent, ReviewerModel& model,
                                       const std::optional<std::string>& focusFrameID = {});

    SessionSetupDialog(ReviewerModel& model, dravik::SessionArrangement arrangement,
                       std::optional<std::string> focusFrameID, QWidget* parent = nullptr);

    const dravik::SessionArrangement& arrangement() const { return arrangement_; }
    QLineEdit* riderNameField(const std::string& frameID) const;
    QComboBox* referencePicker(const std::string& riderFrameID) const;
    QComboBox* directionPicker(const std::string& riderFrameID) const;
    QLineEdit* titleField(const std::string& riderFrameID) const;
    QComboBox* candidatePicker() const { return candidates_; }
    QPushButton* detectButton() const { return detect_; }
    QPushButton* applyButton() const { return apply_; }
    QLabel* effectText() const { return effect_; }

  private:
    void rebuild();
    void edited(); // any change asks again before applying
    void applyClicked();

    ReviewerModel& model_;
    dravik::SessionArrangement arrangement_;
    std::optional<std::string> focus_;
    QWidget* rows_;
    QVBoxLayout* rowsLayout_;
    QComboBox* candidates_ = nullptr;
    QPushButton* detect_ = nullptr;
    QLabel* effect_;
    QPushButton* apply_;
    bool confirming_ = false;
};

} // namespace tessary
