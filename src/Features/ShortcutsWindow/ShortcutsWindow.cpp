// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ShortcutsWindow/ShortcutsWindow.h"

#include "Features/ShortcutsWindow/ShortcutList.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int columnGap = 32;
/// Of the rows' texts inside their rows.
constexpr int rowInset = 8;
/// Rows that a group's title and the distance to the next group take.
constexpr int rowsOfTitle = 2;

int rowsOf(const ShortcutGroup& group)
{
    return int(group.shortcuts.size()) + rowsOfTitle;
}

/// How many groups come into the first column, so that the longer column is as short as can be.
std::size_t groupsInFirstColumn(const std::vector<ShortcutGroup>& groups)
{
    int all = 0;
    for (const ShortcutGroup& group : groups)
        all += rowsOf(group);
    std::size_t best = groups.size();
    int shortest = all;
    int first = 0;
    for (std::size_t count = 1; count <= groups.size(); ++count) {
        first += rowsOf(groups[count - 1]);
        if (std::max(first, all - first) < shortest) {
            shortest = std::max(first, all - first);
            best = count;
        }
    }
    return best;
}

void addGroup(QVBoxLayout& column, const ShortcutGroup& group)
{
    if (column.count() > 0)
        column.addSpacing(Space::sheet);
    QLabel* title = makeLabel(group.title, TextRole::section);
    title->setContentsMargins(rowInset, 0, rowInset, 0);
    column.addWidget(title);
    column.addSpacing(Space::iconEdge);
    column.addWidget(new ShortcutList(group));
}

} // namespace

ShortcutsWindow::ShortcutsWindow(const std::vector<ShortcutGroup>& groups, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("shortcutsWindow"));
    setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    setGround(this, &ThemeColors::raised);

    auto* page = new QWidget;
    setGround(page, &ThemeColors::raised);
    auto* columns = new QHBoxLayout(page);
    columns->setContentsMargins(Space::sheet, Space::sheet, Space::sheet, Space::preview);
    columns->setSpacing(columnGap);
    auto* first = new QVBoxLayout;
    auto* second = new QVBoxLayout;
    const std::size_t split = groupsInFirstColumn(groups);
    for (std::size_t i = 0; i < groups.size(); ++i)
        addGroup(i < split ? *first : *second, groups[i]);
    for (QVBoxLayout* column : {first, second}) {
        column->setSpacing(0);
        column->addStretch();
        columns->addLayout(column, 1);
    }

    auto* pane = new ScrollPane;
    pane->setPage(page);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(pane);
    const QSize room = QGuiApplication::primaryScreen()->availableSize() * 0.9;
    if (page->sizeHint().width() > room.width())
        columns->setDirection(QBoxLayout::TopToBottom); // It scrolls down, not sideways.
    const QSize wanted = page->sizeHint();
    resize(wanted.boundedTo(room));
    setMinimumWidth(std::min(wanted.width(), width()));
}

} // namespace ferrow
