// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionBuilder.h"

#include "Features/CaptionBuilder/CaptionWell.h"
#include "Features/CaptionBuilder/PaletteButton.h"
#include "Features/CaptionBuilder/WrappedLabel.h"
#include "Session/CaptionEditing.h"
#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ferrow {

CaptionBuilder::CaptionBuilder(CaptionEditing& editing, QWidget* parent)
    : QWidget(parent), editing_(editing), well_(new CaptionWell(editing, this)), palette_(new QWidget(this)),
      reading_(new WrappedLabel(this))
{
    buildPalette();
    reading_->setObjectName(QStringLiteral("captionReading"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(well_);
    column->addSpacing(Space::row);
    column->addWidget(palette_);
    column->addSpacing(Space::row);
    column->addWidget(makeLabel(QStringLiteral("Reads as"), TextRole::small, &ThemeColors::text2, this));
    column->addSpacing(Space::rowGap);
    column->addWidget(reading_);
    column->addWidget(makeNote(cut_, QStringLiteral("captionCutNote")));
    column->addWidget(makeNote(missing_, QStringLiteral("missingTokensNote")));
    connectPalette();
    setFocusProxy(well_);
    connect(&editing_, &CaptionEditing::changed, this, &CaptionBuilder::read);
    read();
}

void CaptionBuilder::setPane(QWidget* pane)
{
    well_->setPane(pane);
}

void CaptionBuilder::buildPalette()
{
    auto* row = new QHBoxLayout(palette_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    palette_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    const auto add = [&](CaptionChips::Kind kind, IconName iconName, const QString& text, const QString& objectName,
                         const QString& name) {
        auto* button = new PaletteButton(kind, iconName, text, palette_);
        button->setObjectName(objectName);
        button->setAccessibleName(name);
        button->setToolTip(name);
        row->addWidget(button, button->widthWithIcon());
        buttons_.push_back(button);
    };
    add(CaptionChips::Kind::text, IconName::textChip, QStringLiteral("Text"), QStringLiteral("addTextButton"),
        QStringLiteral("Add text"));
    add(CaptionChips::Kind::token, IconName::tokenChip, QStringLiteral("Token"), QStringLiteral("addTokenButton"),
        QStringLiteral("Add token"));
    add(CaptionChips::Kind::separator, IconName::separatorChip, QStringLiteral("Separator"),
        QStringLiteral("addSeparatorButton"), QStringLiteral("Add separator"));
}

QWidget* CaptionBuilder::makeNote(MessageLine*& line, const QString& objectName)
{
    auto* note = new QWidget(this);
    auto* column = new QVBoxLayout(note);
    column->setContentsMargins(0, Space::group, 0, 0);
    line = new MessageLine(Severity::warning, QString());
    line->setObjectName(objectName);
    line->setRole(TextRole::small);
    column->addWidget(line);
    note->hide();
    return note;
}

void CaptionBuilder::showNote(MessageLine* line, const QString& text)
{
    line->setMessage(Severity::warning, text);
    line->parentWidget()->setVisible(!text.isEmpty());
}

void CaptionBuilder::connectPalette()
{
    for (PaletteButton* button : buttons_) {
        const CaptionChips::Kind kind = button->kind();
        connect(button, &QPushButton::clicked, well_, [this, button, kind] {
            well_->startChip(kind, editing_.endGap(), button->mapToGlobal(QPoint(0, button->height() + 2)));
        });
        connect(button, &PaletteButton::dragStarted, well_,
                [this, button, kind](const QPoint& pointer) { well_->startDrag(kind, button->text(), pointer); });
        connect(button, &PaletteButton::dragMoved, &well_->drag(), &ChipDrag::moveTo);
        connect(button, &PaletteButton::dropped, &well_->drag(), &ChipDrag::drop);
        connect(button, &PaletteButton::dragGivenUp, &well_->drag(), &ChipDrag::giveUp);
    }
}

void CaptionBuilder::setCutNote(const QString& text)
{
    if (text != cut_->text())
        showNote(cut_, text);
}

void CaptionBuilder::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitPalette();
}

void CaptionBuilder::fitPalette()
{
    auto* row = static_cast<QBoxLayout*>(palette_->layout());
    const int gaps = row->spacing() * (int(buttons_.size()) - 1);
    int withIcons = gaps;
    int withoutIcons = gaps;
    for (const PaletteButton* button : buttons_) {
        withIcons += button->widthWithIcon();
        withoutIcons += button->minimumSizeHint().width();
    }
    // Narrow rows do without icons; where large text leaves no room for the words side by side, they stand in a column.
    const bool isColumn = withoutIcons > width();
    row->setDirection(isColumn ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    for (PaletteButton* button : buttons_)
        button->setShowsIcon(isColumn || withIcons <= width());
}

void CaptionBuilder::read()
{
    const CaptionChips::Segments& chips = editing_.drafted();
    const auto& metadata = editing_.metadata();
    const CaptionChips::Reading reading = editing_.reading(metadata);
    reading_->setText(reading.text);
    setTextRole(reading_, reading.isHint ? TextRole::body : TextRole::strong,
                reading.isHint ? &ThemeColors::text2 : &ThemeColors::text);
    const QString note =
        metadata ? CaptionChips::missingNote(CaptionChips::missingTokens(chips, *metadata)) : QString();
    showNote(missing_, note);
}

} // namespace ferrow
