// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FormRow.h"

#include "Widgets/ColorWell.h"
#include "Widgets/SliderField.h"

#include <QGridLayout>
#include <QLabel>

namespace ferrow {

FormRow::FormRow(const QString& label, QWidget* control, QWidget* parent)
    : QWidget(parent), label_(makeLabel(label, TextRole::body, &ThemeColors::text2)), control_(control),
      message_(new MessageLine(Severity::plain, QString()))
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(0);
    grid->setVerticalSpacing(0);
    grid->setColumnStretch(1, 1);
    grid->addWidget(label_, 0, 0, Qt::AlignTop);
    grid->addWidget(control_, 0, 1,
                    control_->sizePolicy().horizontalPolicy() == QSizePolicy::Fixed ? Qt::AlignLeft | Qt::AlignVCenter
                                                                                    : Qt::Alignment());
    grid->addWidget(message_, 1, 1);
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

void FormRow::setMessage(Severity severity, const QString& text)
{
    message_->setMessage(severity, text);
    message_->setVisible(!text.isEmpty());
}

} // namespace ferrow
