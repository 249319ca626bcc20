// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportFindings.h"

#include <QWidget>

class QPushButton;

namespace ferrow {

class ElidedLabel;
class PhotoSession;
class StepButtons;

/// Leads through the photos that a finding of the check before an export is about, round and round, and back to it. In
/// sight from begin() to end(); photos that leave the list leave the round.
class ReviewBar : public QWidget {
    Q_OBJECT

public:
    /// The session must outlive it.
    explicit ReviewBar(PhotoSession& session, QWidget* parent = nullptr);

    /// Selects the first of the finding's photos, unless one of them is selected, and takes the focus.
    void begin(const ExportFinding& finding);
    void end();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The user is done, by the button or by Esc.
    void backRequested();
    /// It had the focus, and is about to go.
    void focusHandedOn();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void followPhotos();
    void showPosition();
    void step(int direction);

    PhotoSession& session_;
    std::vector<FileUrl> photos_; ///< In list order.
    ElidedLabel* title_ = nullptr;
    StepButtons* steps_ = nullptr;
    QPushButton* back_ = nullptr;
};

} // namespace ferrow
