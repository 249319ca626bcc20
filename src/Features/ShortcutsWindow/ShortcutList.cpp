// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ShortcutsWindow/ShortcutList.h"

#include "Widgets/FocusRing.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int capHeight = 22;
constexpr int capInset = 7;
constexpr int capGap = 4;
constexpr int sequenceGap = 16;
constexpr int textGap = 24;
constexpr int rowInset = 8;

QFont capFont()
{
    return Theme::current().font(TextRole::small);
}

int capWidth(const QString& cap)
{
    const int text = QFontMetrics(capFont()).horizontalAdvance(cap);
    return std::max(Theme::current().scaled(capHeight), text + 2 * capInset);
}

int sequenceWidth(const QKeySequence& keys)
{
    int width = -capGap;
    for (const QString& cap : KeyNames::caps(keys))
        width += capWidth(cap) + capGap;
    return width;
}

int keysWidth(const Shortcut& shortcut)
{
    int width = -sequenceGap;
    for (const QKeySequence& keys : shortcut.keys)
        width += sequenceWidth(keys) + sequenceGap;
    return std::max(width, 0);
}

void paintCap(QPainter& painter, const QRectF& cap, const QString& text)
{
    painter.setPen(QPen(themeColor(&ThemeColors::border), 1));
    painter.setBrush(themeColor(&ThemeColors::fill));
    painter.drawRoundedRect(cap.adjusted(0.5, 0.5, -0.5, -0.5), Radius::box, Radius::box);
    painter.setPen(themeColor(&ThemeColors::text));
    painter.setFont(capFont());
    painter.drawText(cap, Qt::AlignCenter, text);
}

QString spokenCap(const QString& cap)
{
    static const QList<std::pair<QString, QString>> words{{QStringLiteral("Ctrl"), QStringLiteral("Control")},
                                                          {QStringLiteral("Del"), QStringLiteral("Delete")},
                                                          {QStringLiteral("Esc"), QStringLiteral("Escape")},
                                                          {QStringLiteral("PgUp"), QStringLiteral("Page Up")},
                                                          {QStringLiteral("PgDown"), QStringLiteral("Page Down")},
                                                          {QStringLiteral("+"), QStringLiteral("Plus")},
                                                          {QStringLiteral("-"), QStringLiteral("Minus")},
                                                          {QStringLiteral(","), QStringLiteral("Comma")},
                                                          {QStringLiteral("\\"), QStringLiteral("Backslash")},
                                                          {QStringLiteral("?"), QStringLiteral("Question Mark")}};
    for (const auto& [shown, said] : words)
        if (shown == cap)
            return said;
    return cap;
}

} // namespace

QStringList KeyNames::caps(const QKeySequence& keys)
{
    QStringList caps;
    QString rest = keys.toString(QKeySequence::NativeText);
    // A plus at the end is a key, as in "Ctrl++"; all others join.
    for (qsizetype plus = rest.indexOf(u'+'); plus > 0 && plus + 1 < rest.size(); plus = rest.indexOf(u'+')) {
        caps.append(rest.left(plus));
        rest = rest.mid(plus + 1);
    }
    caps.append(rest);
    return caps;
}

QString KeyNames::spoken(const QKeySequence& keys)
{
    QStringList words;
    for (const QString& cap : caps(keys))
        words.append(spokenCap(cap));
    return words.join(u' ');
}

QString KeyNames::spoken(const Shortcut& shortcut)
{
    QStringList ways;
    for (const QKeySequence& keys : shortcut.keys)
        ways.append(spoken(keys));
    return ways.isEmpty() ? shortcut.text
                          : QStringLiteral("%1, %2").arg(shortcut.text, ways.join(QStringLiteral(" or ")));
}

ShortcutList::ShortcutList(const ShortcutGroup& group, QWidget* parent) : QWidget(parent), group_(group)
{
    setAccessibleName(group_.title);
    setFocusPolicy(Qt::StrongFocus);
    setFocusLook(this, FocusLook::own);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, [this] {
        updateGeometry();
        update();
    });
}

int ShortcutList::rowHeight() const
{
    return Theme::current().scaled(capHeight) + Space::group + Space::rowGap;
}

QRect ShortcutList::rowRect(int index) const
{
    return {0, index * rowHeight(), width(), rowHeight()};
}

QSize ShortcutList::sizeHint() const
{
    const QFontMetrics text(Theme::current().font(TextRole::body));
    int width = 0;
    for (const Shortcut& shortcut : group_.shortcuts)
        width = std::max(width, text.horizontalAdvance(shortcut.text) + textGap + keysWidth(shortcut) + 2 * rowInset);
    return {width, itemCount() * rowHeight()};
}

void ShortcutList::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int height = Theme::current().scaled(capHeight);
    for (int i = 0; i < itemCount(); ++i) {
        const Shortcut& shortcut = group_.shortcuts[std::size_t(i)];
        const QRect row = rowRect(i);
        painter.setFont(Theme::current().font(TextRole::body));
        painter.setPen(themeColor(&ThemeColors::text));
        painter.drawText(row.adjusted(rowInset, 0, -rowInset, 0), Qt::AlignVCenter | Qt::AlignLeading, shortcut.text);
        if (i == current_) {
            QStyleOption option;
            option.initFrom(this);
            paintListRow(painter, row, option, false);
        }

        int x = row.width() - rowInset - keysWidth(shortcut);
        const auto paintAt = [&](const QString& cap) {
            const QRect place(x, row.y() + (row.height() - height) / 2, capWidth(cap), height);
            x += place.width() + capGap;
            paintCap(painter, place, cap);
        };
        for (const QKeySequence& keys : shortcut.keys) {
            for (const QString& cap : KeyNames::caps(keys))
                paintAt(cap);
            x += sequenceGap - capGap;
        }
    }
}

void ShortcutList::keyPressEvent(QKeyEvent* event)
{
    const int step = event->key() == Qt::Key_Down ? 1 : event->key() == Qt::Key_Up ? -1 : 0;
    if (step == 0 || current_ + step < 0 || current_ + step >= itemCount()) {
        QWidget::keyPressEvent(event);
        return;
    }
    pressItem(current_ + step);
}

int ShortcutList::itemCount() const
{
    return int(group_.shortcuts.size());
}

AccessibleItem ShortcutList::item(int index) const
{
    return {.name = KeyNames::spoken(group_.shortcuts[std::size_t(index)]),
            .description = {},
            .rect = rowRect(index),
            .role = QAccessible::ListItem};
}

void ShortcutList::pressItem(int index)
{
    current_ = index;
    update();
    notifyItemFocused(this);
}

} // namespace ferrow
