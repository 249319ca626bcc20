// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/CommitField.h"

class QPushButton;

namespace ferrow {

/// A value that was read and may be corrected: a corrected one has an accent bar before it and a button behind it that
/// gives back what was read.
class CorrectionField : public CommitField {
    Q_OBJECT

public:
    /// `name` is for assistive technology.
    explicit CorrectionField(const QString& name, QWidget* parent = nullptr);

    /// `fileSays` is a sentence about what was read: a corrected field is described by it.
    void setCorrected(bool isCorrected, const QString& fileSays);
    [[nodiscard]] bool isCorrected() const { return isCorrected_; }

signals:
    void resetRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QPushButton* reset_ = nullptr;
    bool isCorrected_ = false;
};

} // namespace ferrow
