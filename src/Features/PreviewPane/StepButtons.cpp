// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/StepButtons.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace ferrow {

namespace {

/// The icon set has one arrow; this is the button with it the other way round.
class MirroredButton : public QPushButton {
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        QStylePainter painter(this);
        painter.translate(width(), 0);
        painter.scale(-1, 1);
        painter.drawControl(QStyle::CE_PushButton, option);
    }
};

QPushButton* prepared(QPushButton* button, const QString& name)
{
    setButtonRole(button, ButtonRole::flat);
    setSmallControl(button);
    button->setIcon(icon(IconName::chevronRight));
    button->setFixedSize(Measure::smallControl, Measure::smallControl);
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}

} // namespace

StepButtons::StepButtons(const QString& previous, const QString& next, QWidget* parent)
    : QWidget(parent), previous_(prepared(new MirroredButton(this), previous)),
      position_(makeLabel({}, TextRole::small, &ThemeColors::text2, this)), next_(prepared(new QPushButton(this), next))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::group); // The arrows' focus ring needs it.
    row->addWidget(previous_);
    row->addWidget(position_);
    row->addWidget(next_);
    connect(previous_, &QPushButton::clicked, this, [this] { emit stepRequested(-1); });
    connect(next_, &QPushButton::clicked, this, [this] { emit stepRequested(1); });
}

void StepButtons::setText(const QString& text)
{
    position_->setText(text);
}

void StepButtons::setStepsEnabled(bool previous, bool next)
{
    previous_->setEnabled(previous);
    next_->setEnabled(next);
}

} // namespace ferrow
