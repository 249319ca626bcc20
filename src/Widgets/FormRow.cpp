// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FormRow.h"

#include "Widgets/ColorWell.h"
#include "Widgets/SliderField.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace ferrow {

FormRow::FormRow(const QString& label, QWidget* control, QWidget* parent)
    : QWidget(parent), grid_(new QGridLayout(this)), label_(makeLabel(label, TextRole::body, &ThemeColors::text2)),
      control_(control), message_(new MessageLine(Severity::plain, QString()))
{
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setHorizontalSpacing(0);
    grid_->setVerticalSpacing(0);
    grid_->setColumnStretch(1, 1);
    grid_->addWidget(label_, 0, 0, Qt::AlignTop);
    grid_->addWidget(control_, 0, 1,
                     control_->sizePolicy().horizontalPolicy() == QSizePolicy::Fixed ? Qt::AlignLeft | Qt::AlignVCenter
                                                                                     : Qt::Alignment());
    grid_->addWidget(message_, 1, 1);
    message_->setRole(TextRole::small);
    message_->layout()->setContentsMargins(0, Space::iconEdge, 0, 0);
    message_->hide();

    // Beside the first line of a control that is higher.
    label_->setMinimumHeight(Theme::current().scaled(Measure::control));
    label_->setWordWrap(true);
    label_->setBuddy(control_->focusProxy() ? control_->focusProxy() : control_);
    setLabelWidth(Measure::formLabel);
    // A message that wraps needs more than the hint, which is made for its longest line.
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    followErrors();
}

void FormRow::followErrors()
{
    const auto show = [this](const QString& message) { setMessage(Severity::error, message); };
    if (auto* slider = qobject_cast<SliderField*>(control_))
        connect(slider, &SliderField::errorChanged, this, show);
    else if (auto* well = qobject_cast<ColorWell*>(control_))
        connect(well, &ColorWell::errorChanged, this, show);
    else if (auto* field = qobject_cast<CommitField*>(control_))
        connect(field, &CommitField::errorChanged, this, show);
}

void FormRow::setLabelWidth(int width)
{
    label_->setFixedWidth(Theme::current().scaled(width));
}

void FormRow::setLabelButton(QPushButton* button)
{
    constexpr int gapToControl = 10;
    auto* cell = new QHBoxLayout;
    cell->setContentsMargins(0, (Measure::control - Measure::smallControl) / 2, gapToControl, 0);
    cell->addStretch();
    cell->addWidget(button);
    grid_->addLayout(cell, 0, 0, Qt::AlignTop);
}

void FormRow::setWideControl(QWidget* control)
{
    grid_->addWidget(control, 0, 0, 1, 2);
    control->lower();
}

void FormRow::setMessage(Severity severity, const QString& text)
{
    message_->setMessage(severity, text);
    message_->setVisible(!text.isEmpty());
}

} // namespace ferrow
