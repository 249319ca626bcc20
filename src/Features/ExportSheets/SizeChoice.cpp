// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/SizeChoice.h"

#include "Widgets/ElidedLabel.h"
#include "Widgets/NumberField.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>

namespace ferrow {

namespace {

constexpr int fieldWidth = 88;

// What is usual for the web, on a large screen, and of most prints.
constexpr std::int64_t usualLongSide = 2048;
constexpr PixelSize usualBox{3840, 2160};
constexpr double usualMegapixels = 12;

} // namespace

SizeChoice::SizeChoice(QWidget* parent)
    : QWidget(parent), limit_(new SegmentedControl(QStringLiteral("Size"))), line_(new QWidget)
{
    limit_->setObjectName(QStringLiteral("sizeControl"));
    for (const SizeLimit limit : allCases<SizeLimit>())
        limit_->addSegment(rawValue(limit));
    connect(limit_, &SegmentedControl::chosen, this, [this](int index) {
        choose(allCases<SizeLimit>().at(std::size_t(index)));
        edit();
    });

    auto* fields = new QHBoxLayout(line_);
    fields->setContentsMargins({});
    fields->setSpacing(Space::group);
    longSide_ = addField(QStringLiteral("Long side"), QStringLiteral("longSideField"), double(usualLongSide));
    width_ = addField(QStringLiteral("Width at most"), QStringLiteral("boxWidthField"), double(usualBox.width));
    times_ = makeLabel(QStringLiteral("×"), TextRole::body, &ThemeColors::text2);
    fields->addWidget(times_);
    height_ = addField(QStringLiteral("Height at most"), QStringLiteral("boxHeightField"), double(usualBox.height));
    megapixels_ = addField(QStringLiteral("Megapixels"), QStringLiteral("megapixelsField"), usualMegapixels);
    megapixels_->setFormat(
        {.decimals = 1, .unit = QStringLiteral("MP"), .least = 0.1, .greatest = OutputSize::mostMegapixels});
    example_ = new ElidedLabel(QString());
    example_->setObjectName(QStringLiteral("sizeExample"));
    setTextRole(example_, TextRole::small, &ThemeColors::text2);
    fields->addWidget(example_, 1);
    line_->setMinimumHeight(longSide_->sizeHint().height());

    auto* lines = new QVBoxLayout(this);
    lines->setContentsMargins({});
    lines->setSpacing(Space::group);
    lines->addWidget(limit_);
    lines->addWidget(line_);
    choose(SizeLimit::none);
}

NumberField* SizeChoice::addField(const QString& name, const QString& objectName, double value)
{
    auto* field = new NumberField(name);
    field->setObjectName(objectName);
    field->setFormat({.unit = QStringLiteral("px"), .least = 1, .greatest = double(OutputSize::mostPixels)});
    field->setFixedWidth(Theme::current().scaled(fieldWidth));
    field->setValue(value);
    connect(field, &NumberField::valueEdited, this, &SizeChoice::edit);
    connect(field, &NumberField::errorChanged, this, &SizeChoice::errorChanged);
    line_->layout()->addWidget(field);
    return field;
}

void SizeChoice::setSize(const OutputSize& size)
{
    choose(size.limit);
    if (size.limit == SizeLimit::longSide)
        longSide_->setValue(double(size.box.width));
    if (size.limit == SizeLimit::box) {
        width_->setValue(double(size.box.width));
        height_->setValue(double(size.box.height));
    }
    if (size.limit == SizeLimit::megapixels)
        megapixels_->setValue(size.megapixels);
}

void SizeChoice::restrictToFullSize(const QString& reason)
{
    limit_->setToolTip(reason);
    for (int i = 0; i < limit_->count(); ++i)
        limit_->setSegmentEnabled(i, reason.isEmpty() || i == int(SizeLimit::none));
}

void SizeChoice::setExample(const QString& text)
{
    example_->setText(text);
}

void SizeChoice::choose(SizeLimit limit)
{
    limit_->setCurrentIndex(int(limit));
    longSide_->setVisible(limit == SizeLimit::longSide);
    width_->setVisible(limit == SizeLimit::box);
    times_->setVisible(limit == SizeLimit::box);
    height_->setVisible(limit == SizeLimit::box);
    megapixels_->setVisible(limit == SizeLimit::megapixels);
}

void SizeChoice::edit()
{
    switch (allCases<SizeLimit>().at(std::size_t(limit_->currentIndex()))) {
    case SizeLimit::none:
        emit sizeEdited({});
        break;
    case SizeLimit::longSide:
        emit sizeEdited(OutputSize::withLongSide(std::int64_t(longSide_->value())));
        break;
    case SizeLimit::box:
        emit sizeEdited(OutputSize::within({std::int64_t(width_->value()), std::int64_t(height_->value())}));
        break;
    case SizeLimit::megapixels:
        emit sizeEdited(OutputSize::ofMegapixels(megapixels_->value()));
        break;
    }
}

} // namespace ferrow
