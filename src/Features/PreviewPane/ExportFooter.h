// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportSession.h"

#include <QTimer>
#include <QWidget>

#include <chrono>
#include <cstdint>
#include <optional>

class QLabel;
class QPushButton;

namespace ferrow {

class ElidedLabel;
class ProgressLine;

/// Which tenth of a run is to be spoken, if another one has been reached since the last.
class SpokenTenths {
public:
    /// The percentage to say, from 10 on.
    [[nodiscard]] std::optional<int> reached(std::int64_t completed, std::int64_t total);
    void reset() { last_ = 0; }

private:
    int last_ = 0;
};

/// How far an export is, and the way out of it.
class ExportFooter : public QWidget {
    Q_OBJECT

public:
    explicit ExportFooter(const ExportSession& session, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void cancelRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void renew();
    void renewDetail();
    void speak();

    const ExportSession& session_;
    QLabel* title_ = nullptr;
    ElidedLabel* detail_ = nullptr;
    QPushButton* cancel_ = nullptr;
    ProgressLine* bar_ = nullptr;
    QTimer clock_;
    SpokenTenths tenths_;
};

} // namespace ferrow
