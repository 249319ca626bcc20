// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>

class QVariantAnimation;

namespace ferrow {

/// A bar of 4. With minimum equal to maximum it sweeps, or, where motion is reduced, stands still: say "Working" beside
/// it then.
class ProgressLine : public QProgressBar {
    Q_OBJECT

public:
    /// `name` is for assistive technology: "Export progress".
    explicit ProgressLine(const QString& name, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void updateSweep();

    QVariantAnimation* sweep_ = nullptr;
};

} // namespace ferrow
