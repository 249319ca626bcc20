// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FontList.h"

#include "Platform/Base/Localization.h"
#include "Platform/Text/TextFrame.h"
#include "Widgets/Icons.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QPainter>

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace ferrow {

namespace {

constexpr int rowHeight = 30;
constexpr int rows = 9;
constexpr int inset = 8;

} // namespace

FontListModel::FontListModel(FontChoice chosen, QObject* parent)
    : QAbstractListModel(parent), chosen_(std::move(chosen))
{
    for (const CaptionFont font : allCases<CaptionFont>())
        all_.push_back({font, {}});
    const QStringList installed = FontFamilies::installed();
    std::vector<QString> families(installed.begin(), installed.end());
    Localization::standardSort(families, std::identity());
    for (const QString& family : families)
        all_.push_back({CaptionFont::system, family});
    families_ = int(families.size());
    shown_ = all_;
}

int FontListModel::rowOf(const FontChoice& choice) const
{
    const auto found = std::ranges::find(shown_, choice);
    return found == shown_.end() ? -1 : int(found - shown_.begin());
}

void FontListModel::search(const QString& text)
{
    const QStringList words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    beginResetModel();
    shown_.clear();
    std::ranges::copy_if(all_, std::back_inserter(shown_), [&](const FontChoice& choice) {
        return std::ranges::all_of(
            words, [&](const QString& word) { return choice.name().contains(word, Qt::CaseInsensitive); });
    });
    endResetModel();
}

int FontListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(shown_.size());
}

QVariant FontListModel::data(const QModelIndex& index, int role) const
{
    const FontChoice& choice = shown_[std::size_t(index.row())];
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole || role == Qt::ToolTipRole)
        return choice.name();
    if (role == Qt::AccessibleDescriptionRole)
        return choice == chosen_ ? QStringLiteral("In use") : QString();
    return {};
}

FontRowDelegate::FontRowDelegate(const FontListModel& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model)
{
}

void FontRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintListRow(*painter, option.rect, option, option.state & QStyle::State_MouseOver);
    const FontChoice& choice = model_.choice(index.row());
    const bool isChosen = !index.data(Qt::AccessibleDescriptionRole).toString().isEmpty();
    QRect text = option.rect.adjusted(inset, 0, -inset, 0);
    if (isChosen) {
        text.setRight(text.right() - Measure::fieldIcon - inset);
        paintIcon(*painter, IconName::check, QRect(text.right() + inset, text.top(), Measure::fieldIcon, text.height()),
                  Measure::fieldIcon, themeColor(&ThemeColors::text));
    }
    // One base line for all, however tall their faces are.
    const QFont base = Theme::current().font(TextRole::body);
    const QFontMetrics baseMetrics(base);
    painter->setClipRect(text);
    painter->setFont(choice.sample(base));
    painter->setPen(themeColor(&ThemeColors::text));
    const QString name = painter->fontMetrics().elidedText(choice.name(), Qt::ElideRight, text.width());
    painter->drawText(text.left(), text.top() + (text.height() + baseMetrics.ascent() - baseMetrics.descent()) / 2,
                      name);
    painter->restore();
}

QSize FontRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {0, Theme::current().scaled(rowHeight)};
}

FontList::FontList(FontListModel& model, QWidget* parent) : SheetList(QStringLiteral("Fonts"), parent)
{
    setModel(&model);
    setItemDelegate(new FontRowDelegate(model, this));
    setUniformItemSizes(true);
    setFocusPolicy(Qt::NoFocus);
}

QSize FontList::sizeHint() const
{
    return {0, rows * Theme::current().scaled(rowHeight)};
}

QSize FontList::minimumSizeHint() const
{
    return {0, 3 * Theme::current().scaled(rowHeight)};
}

} // namespace ferrow
