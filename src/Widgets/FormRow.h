// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QWidget>

class QGridLayout;
class QLabel;
class QPushButton;

namespace ferrow {

/// One row of a form: a label column and the control, as high as its message makes it. A control's
/// `errorChanged(QString)` (NumberField, SliderField, ColorWell) shows under it by itself.
class FormRow : public QWidget {
    Q_OBJECT

public:
    FormRow(const QString& label, QWidget* control, QWidget* parent = nullptr);

    /// 80 from the start, for the inspector; sheets take 116, settings 132.
    void setLabelWidth(int width);
    /// A small text under the control; an empty one takes it away. Errors also give the field their edge by themselves.
    void setMessage(Severity severity, const QString& text);

    /// A small button at the end of the label's column.
    void setLabelButton(QPushButton* button);
    /// Takes the whole width, below label and button, while it is shown in place of the control.
    void setWideControl(QWidget* control);

    [[nodiscard]] QLabel* label() const { return label_; }
    [[nodiscard]] QWidget* control() const { return control_; }

private:
    void followErrors();

    QGridLayout* grid_ = nullptr;
    QLabel* label_ = nullptr;
    QWidget* control_ = nullptr;
    MessageLine* message_ = nullptr;
};

} // namespace ferrow
