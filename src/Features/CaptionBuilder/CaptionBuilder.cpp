// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/CaptionBuilder.h"

#include "Features/CaptionBuilder/CaptionWell.h"
#include "Features/CaptionBuilder/PaletteButton.h"
#include "Features/CaptionBuilder/WrappedLabel.h"
#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ferrow {

CaptionBuilder::CaptionBuilder(QWidget* parent)
    : QWidget(parent), well_(new CaptionWell(this)), palette_(new QWidget(this)), reading_(new WrappedLabel(this))
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
    connectWell();
    read({});
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

void CaptionBuilder::connectWell()
{
    connect(well_, &CaptionWell::edited, this, [this](const QString& stepName, const auto& segments) {
        read(segments);
        emit segmentsEdited(stepName, segments);
    });
    connect(well_, &CaptionWell::previewed, this, [this](const auto& segments) {
        read(segments);
        emit segmentsPreviewed(segments);
    });
    connect(well_, &CaptionWell::interrupted, this, &CaptionBuilder::interrupted);
    for (PaletteButton* button : buttons_) {
        const CaptionChips::Kind kind = button->kind();
        connect(button, &QPushButton::clicked, well_, [this, button, kind] {
            if (kind == CaptionChips::Kind::text)
                well_->startText(well_->endGap());
            else
                well_->startChoice(kind, well_->endGap(), button->mapToGlobal(QPoint(0, button->height() + 2)));
        });
        connect(button, &PaletteButton::dragStarted, well_, [this, button, kind](const QPoint& pointer) {
            well_->beginPaletteDrag(kind, button->text(), pointer);
        });
        connect(button, &PaletteButton::dragMoved, well_, &CaptionWell::dragTo);
        connect(button, &PaletteButton::dropped, well_, &CaptionWell::drop);
        connect(button, &PaletteButton::dragGivenUp, well_, &CaptionWell::giveUpDrag);
    }
}

void CaptionBuilder::setSegments(const std::vector<CaptionSegment>& segments)
{
    well_->setSegments(segments);
    // What is typed or dragged goes on being read, and tells itself.
    if (!well_->isBusy() && segments != read_)
        read(segments);
}

void CaptionBuilder::setMetadata(const std::optional<PhotoMetadata>& metadata)
{
    if (metadata == metadata_)
        return;
    metadata_ = metadata;
    well_->setMetadata(metadata);
    read(read_);
}

void CaptionBuilder::setCutNote(const QString& text)
{
    if (text != cut_->text())
        showNote(cut_, text);
}

const std::vector<CaptionSegment>& CaptionBuilder::segments() const
{
    return well_->segments();
}

void CaptionBuilder::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitPalette();
}

void CaptionBuilder::fitPalette()
{
    auto* row = static_cast<QBoxLayout*>(palette_->layout());
    const int gaps = row->spacing() * (static_cast<int>(buttons_.size()) - 1);
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

void CaptionBuilder::read(const std::vector<CaptionSegment>& segments)
{
    read_ = segments;
    const CaptionChips::Reading reading = CaptionChips::reading(read_, metadata_);
    reading_->setText(reading.text);
    setTextRole(reading_, reading.isHint ? TextRole::body : TextRole::strong,
                reading.isHint ? &ThemeColors::text2 : &ThemeColors::text);
    const QString note =
        metadata_ ? CaptionChips::missingNote(CaptionChips::missingTokens(read_, *metadata_)) : QString();
    showNote(missing_, note);
}

} // namespace ferrow
