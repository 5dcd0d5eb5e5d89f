// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace tessary {

class ReviewerModel;

// Edits the wheel and reference lean lines of the active photo.
class LeanReviewView : public QWidget {
    Q_OBJECT

  public:
    explicit LeanReviewView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();
    void commitFeatureID();

    ReviewerModel& model_;
    QLabel* title_;
    QCheckBox* showLean_;
    QComboBox* endpoint_;
    QList<QToolButton*> arrows_;
    QPushButton* placeWheel_;
    QLabel* placementPrompt_;
    QPushButton* cancelPlacement_;
    QComboBox* basis_;
    QPushButton* placeReference_;
    QLineEdit* featureID_;
    QCheckBox* referenceReviewed_;
    QLabel* caution_;
    QLabel* wheelUncertainty_;
    QLabel* referenceUncertainty_;
    QList<QToolButton*> wheelSteps_;
    QList<QToolButton*> referenceSteps_;
    QPushButton* confirmWheel_;
    QPushButton* markUnobservable_;
    QPushButton* clearWheel_;
    QPushButton* clearReference_;
};

} // namespace tessary
