// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/OutputSize.h"

#include <QWidget>

class QLabel;

namespace ferrow {

class ElidedLabel;
class NumberField;
class SegmentedControl;

/// What limits the size of an export, the numbers for it, and what comes of that. Its second line is there whatever is
/// chosen, so that nothing below moves. Numbers of limits that are not chosen stay while it lives.
class SizeChoice : public QWidget {
    Q_OBJECT

public:
    explicit SizeChoice(QWidget* parent = nullptr);

    /// Does not emit `sizeEdited`.
    void setSize(const OutputSize& size);
    /// Only full size, with the reason as a tooltip, or any with an empty one.
    void restrictToFullSize(const QString& reason);
    /// Beside the numbers.
    void setExample(const QString& text);

signals:
    void sizeEdited(const ferrow::OutputSize& size);
    /// Why what was typed can't be taken; empty when all is well again.
    void errorChanged(const QString& message);

private:
    NumberField* addField(const QString& name, const QString& objectName, double value);
    void choose(SizeLimit limit);
    void edit();

    SegmentedControl* limit_;
    QWidget* line_;
    NumberField* longSide_;
    NumberField* width_;
    QLabel* times_;
    NumberField* height_;
    NumberField* megapixels_;
    ElidedLabel* example_;
};

} // namespace ferrow
