// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipMenus.h"

#include "Metadata/MetadataTemplateExpander.h"

#include <QKeySequence>

namespace ferrow::ChipMenus {

namespace {

/// Characters of a value that a menu has room for.
constexpr int longestHint = 18;

QString hint(MetadataToken token, const PhotoMetadata& metadata)
{
    QString value = MetadataTemplateExpander::tokenValue(token, metadata).value_or(QString()).simplified();
    if (value.isEmpty())
        return QStringLiteral("\u2014");
    if (value.size() > longestHint)
        value = value.left(longestHint - 1).trimmed() + u'\u2026';
    // An ampersand would underline the next letter.
    return value.replace(u'&', QStringLiteral("&&"));
}

QAction* addChoice(QMenu& menu, const QString& text, const CaptionSegment::Content& content, bool isCurrent,
                   const Chosen& chosen)
{
    QAction* action = menu.addAction(text);
    action->setCheckable(isCurrent);
    action->setChecked(isCurrent);
    QObject::connect(action, &QAction::triggered, &menu, [chosen, content] { chosen(content); });
    return action;
}

QString withKey(const QString& text, const QKeySequence& key)
{
    return text + u'\t' + key.toString(QKeySequence::NativeText);
}

QAction* addCommand(QMenu& menu, const QString& text, const std::function<void()>& command)
{
    QAction* action = menu.addAction(text);
    QObject::connect(action, &QAction::triggered, &menu, command);
    return action;
}

void addChange(QMenu& menu, const CaptionSegment& segment, const std::optional<PhotoMetadata>& metadata,
               const ChipCommands& commands)
{
    if (CaptionChips::kindOf(segment.content) == CaptionChips::Kind::text) {
        addCommand(menu, withKey(QStringLiteral("Edit Text"), Qt::Key_F2), commands.edit);
        return;
    }
    QMenu* choices = menu.addMenu(QStringLiteral("Change To"));
    if (const auto* token = std::get_if<MetadataToken>(&segment.content))
        addTokens(*choices, *token, metadata, commands.change);
    else
        addSeparators(*choices, std::get<CaptionSeparator>(segment.content), commands.change);
}

} // namespace

void addTokens(QMenu& menu, std::optional<MetadataToken> current, const std::optional<PhotoMetadata>& metadata,
               const Chosen& chosen)
{
    for (const auto& entry : CodedCases<MetadataToken>::table) {
        const QString name = displayName(entry.value);
        const QString text = metadata ? name + u'\t' + hint(entry.value, *metadata) : name;
        QAction* action = addChoice(menu, text, entry.value, current == entry.value, chosen);
        action->setObjectName(rawValue(entry.value));
    }
}

void addSeparators(QMenu& menu, std::optional<CaptionSeparator> current, const Chosen& chosen)
{
    for (const auto& entry : CodedCases<CaptionSeparator>::table)
        addChoice(menu, displayName(entry.value), entry.value, current == entry.value, chosen);
}

void addCommands(QMenu& menu, const CaptionChips::Segments& segments, int index,
                 const std::optional<PhotoMetadata>& metadata, const ChipCommands& commands)
{
    addChange(menu, segments.at(static_cast<std::size_t>(index)), metadata, commands);
    menu.addSeparator();
    addCommand(menu, withKey(QStringLiteral("Move Left"), Qt::ALT | Qt::Key_Left), commands.moveBack)
        ->setEnabled(index > 0);
    addCommand(menu, withKey(QStringLiteral("Move Right"), Qt::ALT | Qt::Key_Right), commands.moveOn)
        ->setEnabled(index + 1 < static_cast<int>(segments.size()));
    menu.addSeparator();
    addCommand(menu, QStringLiteral("Add Text"), commands.addText);
    addTokens(*menu.addMenu(QStringLiteral("Add Token")), {}, metadata, commands.add);
    addSeparators(*menu.addMenu(QStringLiteral("Add Separator")), {}, commands.add);
    menu.addSeparator();
    addCommand(menu, withKey(QStringLiteral("Remove"), Qt::Key_Delete), commands.remove);
}

} // namespace ferrow::ChipMenus
