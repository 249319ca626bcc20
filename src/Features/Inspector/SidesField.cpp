// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/SidesField.h"

#include "Widgets/Theme.h"

#include <QEvent>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int fieldWidth = 68;
constexpr QSize pictureSize(104, 76);
constexpr int leastPictureWidth = 64;
constexpr int leastGap = 8;

} // namespace

SidesField::SidesField(const QString& name, QWidget* parent)
    : NumberGroup(parent), picture_(new FramePicture(this)), fields_{addField(name + QStringLiteral(" top")),
                                                                     addField(name + QStringLiteral(" right")),
                                                                     addField(name + QStringLiteral(" bottom")),
                                                                     addField(name + QStringLiteral(" left"))}
{
    for (NumberField* field : fields_)
        field->setFixedWidth(Theme::current().scaled(fieldWidth));
    setFocusProxy(field(Side::top));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SidesField::setNumberRange(const ValueRange& range)
{
    for (NumberField* field : fields_) {
        field->setFormat(range.format);
        field->setStep(range.step);
    }
}

void SidesField::setSides(const SideLengths& sides)
{
    field(Side::top)->setValue(sides.top);
    field(Side::right)->setValue(sides.right);
    field(Side::bottom)->setValue(sides.bottom);
    field(Side::left)->setValue(sides.left);
}

void SidesField::takeNumbers()
{
    emit sidesEdited({field(Side::top)->value(), field(Side::right)->value(), field(Side::bottom)->value(),
                      field(Side::left)->value()});
}

bool SidesField::eventFilter(QObject* watched, QEvent* event)
{
    const auto at = std::ranges::find(fields_, watched);
    if (at != fields_.end() && event->type() == QEvent::FocusIn)
        picture_->setMarkedSide(Side(at - fields_.begin()));
    else if (at != fields_.end() && event->type() == QEvent::FocusOut)
        picture_->setMarkedSide(std::nullopt);
    return NumberGroup::eventFilter(watched, event);
}

QSize SidesField::sizeWith(int pictureWidth) const
{
    const NumberField* any = fields_.front();
    return {2 * any->width() + 2 * leastGap + pictureWidth,
            2 * (any->sizeHint().height() + Space::row) + pictureSize.height()};
}

QSize SidesField::sizeHint() const
{
    return sizeWith(pictureSize.width());
}

QSize SidesField::minimumSizeHint() const
{
    return sizeWith(leastPictureWidth);
}

void SidesField::resizeEvent(QResizeEvent*)
{
    const QSize each(fields_.front()->width(), fields_.front()->sizeHint().height());
    const int pictureWidth = std::min(pictureSize.width(), width() - 2 * (each.width() + leastGap));
    const QRect picture((width() - pictureWidth) / 2, each.height() + Space::row, pictureWidth, pictureSize.height());
    picture_->setGeometry(picture);
    const int beside = picture.center().y() + 1 - each.height() / 2;
    // The label's column lies beside the upper one.
    const int middle = std::max((width() - each.width()) / 2, Theme::current().scaled(Measure::formLabel));
    field(Side::top)->setGeometry(QRect({middle, 0}, each));
    field(Side::right)->setGeometry(QRect({width() - each.width(), beside}, each));
    field(Side::bottom)->setGeometry(QRect({middle, picture.bottom() + 1 + Space::row}, each));
    field(Side::left)->setGeometry(QRect({0, beside}, each));
}

} // namespace ferrow
