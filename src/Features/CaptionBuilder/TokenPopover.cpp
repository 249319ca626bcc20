// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/TokenPopover.h"

#include "Features/CaptionBuilder/ChipMenus.h"
#include "Features/CaptionBuilder/WrappedLabel.h"
#include "Metadata/MetadataTemplateExpander.h"
#include "Platform/Base/Localization.h"
#include "Widgets/CommitField.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FocusRing.h"
#include "Widgets/FormRow.h"
#include "Widgets/HairLine.h"
#include "Widgets/MenuButton.h"
#include "Widgets/RadioList.h"
#include "Widgets/SegmentedControl.h"

#include <QLabel>
#include <QMenu>
#include <QVBoxLayout>

namespace ferrow {

namespace {

/// Characters of a value, or a file's name, that are enough to know it by.
constexpr int longestQuote = 80;
/// Characters of a text for what is missing.
constexpr int longestText = 1'000;

QString quoted(const QString& text)
{
    const QString line = text.simplified();
    return line.size() <= longestQuote ? line : line.left(longestQuote - 1).trimmed() + u'…';
}

QString lackingNote(const CaptionEditing::Survey& survey)
{
    if (survey.lacking == 0 || survey.photos == 1)
        return {};
    if (survey.lacking == survey.photos)
        return QStringLiteral("None of the %1 photos has one.").arg(Localization::number(std::int64_t(survey.photos)));
    return (survey.lacking == 1 ? QStringLiteral("%1 of %2 photos has none.")
                                : QStringLiteral("%1 of %2 photos have none."))
        .arg(Localization::number(std::int64_t(survey.lacking)), Localization::number(std::int64_t(survey.photos)));
}

MetadataToken kindOf(const CaptionEditing& editing, const QUuid& chip)
{
    const int index = editing.indexOf(chip).value();
    return std::get<CaptionToken>(editing.segments()[std::size_t(index)].content).token;
}

} // namespace

TokenPopover::TokenPopover(QWidget* opener, CaptionEditing& editing, const QUuid& chip)
    : Popover(opener, displayName(kindOf(editing, chip))), editing_(editing), chip_(chip), kind_(kindOf(editing, chip)),
      pattern_(QStringLiteral("d MMMM, HH:mm"))
{
    setDeletedAfterClose(true);
    setObjectName(QStringLiteral("tokenPopover"));
    buildChange();
    value_ = new WrappedLabel;
    value_->setObjectName(QStringLiteral("tokenValue"));
    setTextRole(value_, TextRole::small, &ThemeColors::text2);
    body()->addWidget(value_);
    if (kind_ == MetadataToken::captureDate)
        buildStyles();
    buildMissing();
    connect(&editing_, &CaptionEditing::changed, this, &TokenPopover::follow);
    follow();
}

/// Null once the chip has gone or is another token.
const CaptionToken* TokenPopover::token() const
{
    const std::optional<int> index = editing_.indexOf(chip_);
    const auto* now = index ? std::get_if<CaptionToken>(&editing_.segments()[std::size_t(*index)].content) : nullptr;
    return now && now->token == kind_ ? now : nullptr;
}

void TokenPopover::present()
{
    open(styles_ ? static_cast<QWidget*>(styles_) : missing_);
}

void TokenPopover::buildChange()
{
    auto* change = new MenuButton(QStringLiteral("Change To"));
    change->setObjectName(QStringLiteral("changeTokenButton"));
    setSmallControl(change);
    auto* menu = new QMenu(change);
    // Filled anew, as the values beside the tokens are those of the photo that is shown then.
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        menu->clear();
        if (const CaptionToken* now = token())
            ChipMenus::addTokens(*menu, *now, editing_.metadata(),
                                 [this](const CaptionSegment::Content& content) { editing_.change(chip_, content); });
    });
    change->setMenu(menu);
    setTitleButton(change);
}

void TokenPopover::buildStyles()
{
    QStringList names;
    for (const DateStyle style : allCases<DateStyle>())
        names.append(displayName(style));
    styles_ = new RadioList(QStringLiteral("Date style"), names);
    styles_->setObjectName(QStringLiteral("dateStyles"));
    styles_->setHeading(int(DateStyle::shortDate), QStringLiteral("System"));
    styles_->setHeading(int(DateStyle::iso), QStringLiteral("Same order everywhere"));
    connect(styles_, &ChoiceStrip::indexChosen, this, [this](int index) {
        const auto style = allCases<DateStyle>()[std::size_t(index)];
        setDate({style, style == DateStyle::custom ? pattern_ : QString()});
    });

    patternField_ = new CommitField(QStringLiteral("Date pattern"));
    patternField_->setObjectName(QStringLiteral("datePatternField"));
    patternField_->setMaxLength(10 * int(DateFormat::longestPattern));
    connect(patternField_, &CommitField::committed, this, &TokenPopover::takePattern);
    auto* row = new FormRow(QString(), patternField_);
    row->setLabelWidth(RadioList::textInset);
    connect(patternField_, &CommitField::errorChanged, this, &TokenPopover::relayout);

    auto* rows = new QVBoxLayout;
    rows->setSpacing(Space::group);
    rows->addWidget(styles_);
    rows->addWidget(row);
    body()->addLayout(rows);
    body()->addWidget(new HairLine);
}

void TokenPopover::buildMissing()
{
    missing_ =
        new SegmentedControl(QStringLiteral("If missing"), {QStringLiteral("Leave Out"), QStringLiteral("Text")});
    missing_->setObjectName(QStringLiteral("ifMissingControl"));
    connect(missing_, &SegmentedControl::chosen, this, [this](int index) {
        wantsText_ = index == 1;
        setIfMissing(wantsText_ ? text_ : QString());
        follow();
        // Arrow keys may be on their way elsewhere.
        if (wantsText_ && !FocusRing::isKeyboardFocus())
            textField_->setFocus(Qt::MouseFocusReason);
    });
    body()->addWidget(new FormRow(QStringLiteral("If missing"), missing_));

    textField_ = new CommitField(QStringLiteral("Text if missing"));
    textField_->setObjectName(QStringLiteral("ifMissingField"));
    textField_->setMaxLength(longestText);
    connect(textField_, &CommitField::committed, this, [this](const QString& text) {
        text_ = text;
        setIfMissing(text);
    });
    textRow_ = new FormRow(QStringLiteral("Text"), textField_);
    body()->addWidget(textRow_);

    auto* lines = new QVBoxLayout;
    lines->setSpacing(Space::rowGap);
    exampleName_ = makeLabel(QString(), TextRole::small, &ThemeColors::text2);
    exampleName_->setWordWrap(true);
    example_ = new WrappedLabel;
    example_->setObjectName(QStringLiteral("missingExample"));
    lines->addWidget(exampleName_);
    lines->addWidget(example_);
    body()->addLayout(lines);
}

/// Shows what the models say now.
void TokenPopover::follow()
{
    const CaptionToken* now = token();
    if (!now) {
        dismiss();
        return;
    }
    const CaptionEditing::Survey survey = editing_.survey(kind_);
    const auto& shown = editing_.metadata();
    QString said;
    if (shown && MetadataTemplateExpander::isMissing(kind_, *shown))
        said = QStringLiteral("Missing in the shown photo.");
    else if (shown && !styles_)
        said =
            QStringLiteral("%1 in the shown photo.").arg(quoted(*MetadataTemplateExpander::tokenValue(kind_, *shown)));
    value_->setText(QStringList{said, lackingNote(survey)}.join(u' ').trimmed());
    value_->setVisible(!value_->text().isEmpty());
    if (styles_)
        showStyles(now->date, survey);
    showMissing(now->ifMissing, survey);
    relayout();
}

void TokenPopover::showStyles(const DateFormat& format, const CaptionEditing::Survey& survey)
{
    const bool isCustom = format.style == DateStyle::custom;
    if (isCustom)
        pattern_ = format.pattern;
    styles_->setCurrentIndex(int(format.style));
    const auto& shown = editing_.metadata();
    const auto& photo = shown && shown->captureDate ? shown : survey.firstWith;
    QStringList examples;
    for (const DateStyle style : allCases<DateStyle>()) {
        const CaptionToken token(kind_, {style, style == DateStyle::custom ? pattern_ : QString()});
        examples.append(photo ? MetadataTemplateExpander::tokenValue(token, *photo).value_or(QString()).simplified()
                              : QString());
    }
    styles_->setExamples(examples);
    patternField_->setEnabled(isCustom);
    patternField_->showText(pattern_);
}

void TokenPopover::showMissing(const QString& ifMissing, const CaptionEditing::Survey& survey)
{
    if (!ifMissing.isEmpty())
        text_ = ifMissing;
    const bool hasText = wantsText_ || !ifMissing.isEmpty();
    missing_->setCurrentIndex(hasText ? 1 : 0);
    textRow_->setVisible(hasText);
    textField_->showText(ifMissing);

    exampleName_->setVisible(survey.firstWithout.has_value());
    example_->setVisible(survey.firstWithout.has_value());
    if (!survey.firstWithout)
        return;
    const CaptionChips::Reading reading = editing_.reading(survey.firstWithout);
    exampleName_->setText(QStringLiteral("%1 reads").arg(quoted(survey.firstWithout->filename)));
    example_->setText(reading.text);
    setTextRole(example_, TextRole::body, reading.isHint ? &ThemeColors::text2 : &ThemeColors::text);
}

void TokenPopover::setDate(const DateFormat& format)
{
    if (const CaptionToken* now = token())
        editing_.change(chip_, CaptionToken(kind_, format, now->ifMissing));
}

void TokenPopover::setIfMissing(const QString& text)
{
    if (const CaptionToken* now = token())
        editing_.change(chip_, CaptionToken(kind_, now->date, text));
}

void TokenPopover::takePattern(const QString& pattern)
{
    const QString fault = DateFormat::patternFault(pattern);
    patternField_->setError(fault);
    if (fault.isEmpty())
        setDate({DateStyle::custom, pattern});
}

} // namespace ferrow
