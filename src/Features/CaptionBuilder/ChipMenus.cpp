// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/CaptionBuilder/ChipMenus.h"

#include "Metadata/MetadataTemplateExpander.h"

#include <QKeySequence>
#include <QMenu>

#include <algorithm>

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

QAction* addChoice(QMenu& menu, const QString& text, const CaptionSegment::Content& content,
                   const std::optional<CaptionSegment::Content>& current, const Chosen& chosen)
{
    const bool isCurrent = current == content;
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

void addSeparators(QMenu& menu, const std::optional<CaptionSegment::Content>& current, const Chosen& chosen)
{
    for (const auto& entry : CodedCases<CaptionSeparator>::table)
        addChoice(menu, displayName(entry.value), entry.value, current, chosen);
}

void addChoices(QMenu& menu, CaptionChips::Kind kind, const std::optional<CaptionSegment::Content>& current,
                const std::optional<PhotoMetadata>& metadata, const Chosen& chosen)
{
    if (kind == CaptionChips::Kind::token)
        addTokens(menu, current, metadata, chosen);
    else
        addSeparators(menu, current, chosen);
}

QMenu* makeMenu(QWidget& well, const QString& name)
{
    auto* menu = new QMenu(&well);
    menu->setObjectName(name);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    return menu;
}

/// A command for one chip, which may have gone, or stand elsewhere, when it is chosen.
class ChipCommand {
public:
    ChipCommand(CaptionEditing& editing, const QUuid& chip) : editing_(editing), chip_(chip) {}

    template <typename Command>
    [[nodiscard]] auto operator()(Command command) const
    {
        return [&editing = editing_, chip = chip_, command](const auto&... chosen) {
            if (const std::optional<int> index = editing.indexOf(chip))
                command(*index, chosen...);
        };
    }

private:
    CaptionEditing& editing_;
    QUuid chip_;
};

} // namespace

void addTokens(QMenu& menu, const std::optional<CaptionSegment::Content>& current,
               const std::optional<PhotoMetadata>& metadata, const Chosen& chosen)
{
    const auto* present = current ? std::get_if<CaptionToken>(&*current) : nullptr;
    for (const auto& entry : CodedCases<MetadataToken>::table) {
        const QString name = displayName(entry.value);
        const QString text = metadata ? name + u'\t' + hint(entry.value, *metadata) : name;
        const CaptionToken token = present && present->token == entry.value ? *present : CaptionToken(entry.value);
        addChoice(menu, text, token, current, chosen)->setObjectName(rawValue(entry.value));
    }
}

void openChoice(QWidget& well, CaptionChips::Kind kind, const std::optional<CaptionSegment::Content>& current,
                const std::optional<PhotoMetadata>& metadata, const QPoint& globalPlace, const Chosen& chosen)
{
    const bool isToken = kind == CaptionChips::Kind::token;
    QMenu* menu = makeMenu(well, isToken ? QStringLiteral("tokenMenu") : QStringLiteral("separatorMenu"));
    addChoices(*menu, kind, current, metadata, chosen);
    menu->popup(globalPlace);
    for (QAction* action : menu->actions())
        if (action->isChecked())
            menu->setActiveAction(action);
}

void openCommands(QWidget& well, CaptionEditing& editing, int index, const QPoint& globalPlace,
                  const std::function<void(int index)>& openOptions)
{
    const CaptionSegment& segment = editing.segments()[std::size_t(index)];
    const CaptionChips::Kind kind = CaptionChips::kindOf(segment.content);
    const ChipCommand command(editing, segment.id);
    const Chosen add = command([&editing](int at, const auto& content) { editing.add(content, at + 1); });
    QMenu& menu = *makeMenu(well, QStringLiteral("chipMenu"));

    if (kind == CaptionChips::Kind::text)
        addCommand(menu, withKey(QStringLiteral("Edit Text"), Qt::Key_F2),
                   command([&editing](int at) { editing.editText(at); }));
    if (kind == CaptionChips::Kind::token)
        addCommand(menu, withKey(QStringLiteral("Options"), Qt::Key_Return), command(openOptions));
    if (kind != CaptionChips::Kind::text)
        addChoices(*menu.addMenu(QStringLiteral("Change To")), kind, segment.content, editing.metadata(),
                   [&editing, chip = segment.id](const auto& content) { editing.change(chip, content); });
    menu.addSeparator();
    addCommand(menu, withKey(QStringLiteral("Move Left"), Qt::ALT | Qt::Key_Left),
               command([&editing](int at) { editing.move(at, std::max(at - 1, 0)); }))
        ->setEnabled(index > 0);
    addCommand(menu, withKey(QStringLiteral("Move Right"), Qt::ALT | Qt::Key_Right),
               command([&editing](int at) { editing.move(at, std::min(at + 2, editing.endGap())); }))
        ->setEnabled(index + 1 < editing.endGap());
    menu.addSeparator();
    addCommand(menu, QStringLiteral("Add Text"), command([&editing](int at) { editing.startText(at + 1); }));
    addTokens(*menu.addMenu(QStringLiteral("Add Token")), {}, editing.metadata(), add);
    addSeparators(*menu.addMenu(QStringLiteral("Add Separator")), {}, add);
    menu.addSeparator();
    addCommand(menu, withKey(QStringLiteral("Remove"), Qt::Key_Delete),
               command([&editing](int at) { editing.remove(at); }));
    menu.popup(globalPlace);
}

} // namespace ferrow::ChipMenus
