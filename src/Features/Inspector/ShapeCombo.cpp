// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/ShapeCombo.h"

#include "Session/WindowTexts.h"
#include "Widgets/Icons.h"

#include <QPainter>
#include <QStyleOptionMenuItem>
#include <QStyledItemDelegate>

#include <algorithm>
#include <array>

namespace ferrow {

namespace {

struct ListedShape {
    const char16_t* name; ///< Empty for those that have none but their ratio.
    double width;
    double height;

    [[nodiscard]] bool hasRatioOf(const FrameShape& shape) const
    {
        return shape.width * height == shape.height * width;
    }
};

constexpr std::array<ListedShape, 7> listedShapes{{{u"Square", 1, 1},
                                                   {u"Portrait", 4, 5},
                                                   {u"Landscape", 5, 4},
                                                   {u"", 3, 2},
                                                   {u"", 2, 3},
                                                   {u"", 16, 9},
                                                   {u"", 9, 16}}};

constexpr int asPhotoRow = 0;
constexpr int firstListedRow = 1;
constexpr int customRow = firstListedRow + int(listedShapes.size()) + 1; // After a separator.

// A row's text is both, one after the other.
constexpr int nameRole = Qt::UserRole;
constexpr int ratioRole = Qt::UserRole + 1;

auto listed(const FrameShape& shape)
{
    return std::ranges::find_if(listedShapes, [&](const ListedShape& each) { return each.hasRatioOf(shape); });
}

/// Rows as the program's menus have them.
class ShapeRowDelegate : public QStyledItemDelegate {
public:
    explicit ShapeRowDelegate(QComboBox* box) : QStyledItemDelegate(box), box_(box) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionMenuItem item = menuItem(option, index);
        box_->style()->drawControl(QStyle::CE_MenuItem, &item, painter, option.widget);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QStyleOptionMenuItem item = menuItem(option, index);
        const QSize text(item.fontMetrics.horizontalAdvance(item.text), item.fontMetrics.height());
        return box_->style()->sizeFromContents(QStyle::CT_MenuItem, &item, text, option.widget);
    }

private:
    [[nodiscard]] QStyleOptionMenuItem menuItem(const QStyleOptionViewItem& option, const QModelIndex& index) const
    {
        QStyleOptionMenuItem item;
        item.rect = option.rect;
        item.palette = option.palette;
        item.font = box_->font();
        item.fontMetrics = QFontMetrics(item.font);
        item.state = QStyle::State_Enabled | (option.state & QStyle::State_Selected);
        if (!index.flags().testFlag(Qt::ItemIsEnabled)) {
            item.menuItemType = QStyleOptionMenuItem::Separator;
            return item;
        }
        item.menuItemType = QStyleOptionMenuItem::Normal;
        item.icon = index.data(Qt::DecorationRole).value<QIcon>();
        item.maxIconWidth = Measure::icon;
        item.checked = index.row() == box_->currentIndex();
        item.text = index.data(nameRole).toString();
        if (index.row() == customRow)
            item.text += QStringLiteral("…");
        if (const QString ratio = index.data(ratioRole).toString(); !ratio.isEmpty())
            item.text += QLatin1Char('\t') + ratio;
        return item;
    }

    QComboBox* box_;
};

} // namespace

ShapeCombo::ShapeCombo(const QString& name, QWidget* parent) : QComboBox(parent)
{
    setAccessibleName(name);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
    setItemDelegate(new ShapeRowDelegate(this));
    addShape(shapeIcon(std::nullopt), QStringLiteral("As Photo"), QString());
    for (const ListedShape& each : listedShapes) {
        const QString ratio = WindowTexts::ratio({.width = each.width, .height = each.height});
        const QString shown = QString::fromUtf16(each.name);
        addShape(shapeIcon(each.width / each.height), shown.isEmpty() ? ratio : shown,
                 shown.isEmpty() ? QString() : ratio);
    }
    insertSeparator(count());
    addShape(icon(IconName::more, &ThemeColors::text2), QStringLiteral("Custom"), QString());
    Q_ASSERT(count() == customRow + 1);
    connect(this, &QComboBox::activated, this, &ShapeCombo::tell);
}

void ShapeCombo::addShape(const QIcon& icon, const QString& name, const QString& ratio)
{
    addItem(icon, ratio.isEmpty() ? name : name + QLatin1Char(' ') + ratio, name);
    setItemData(count() - 1, ratio, ratioRole);
}

bool ShapeCombo::isListed(const FrameShape& shape)
{
    return listed(shape) != listedShapes.end();
}

void ShapeCombo::setShape(const std::optional<FrameShape>& shape, bool isCustom)
{
    if (!shape) {
        setCurrentIndex(asPhotoRow);
        return;
    }
    const double ratio = shape->width / shape->height;
    customIcon_ = shapeIcon(ratio > 0 ? ratio : 1); // Presets may hold anything.
    const auto found = listed(*shape);
    setCurrentIndex(isCustom || found == listedShapes.end() ? customRow
                                                            : firstListedRow + int(found - listedShapes.begin()));
    update();
}

void ShapeCombo::tell(int row)
{
    if (row == asPhotoRow)
        emit asPhotoChosen();
    else if (row == customRow)
        emit customChosen();
    else
        emit ratioChosen(listedShapes[std::size_t(row - firstListedRow)].width,
                         listedShapes[std::size_t(row - firstListedRow)].height);
}

void ShapeCombo::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    style()->drawComplexControl(QStyle::CC_ComboBox, &option, &painter, this);

    QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    const QRect box(room.left(), room.top(), Measure::fieldIcon, room.height());
    const QIcon sign = currentIndex() == customRow ? customIcon_ : itemIcon(currentIndex());
    // The pictogram fills the icon's grid no more than halfway; beside text it is shown at full size.
    sign.paint(&painter, box.adjusted(-2, 0, 2, 0), Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    room.setLeft(box.right() + 1 + Space::group);
    const auto draw = [&](const QString& text, ColorRole color) {
        painter.setPen(themeColor(isEnabled() ? color : &ThemeColors::disabled));
        const QString shown = option.fontMetrics.elidedText(text, Qt::ElideRight, room.width());
        painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
        room.setLeft(room.left() + option.fontMetrics.horizontalAdvance(shown) + 6);
    };
    draw(currentData(nameRole).toString(), &ThemeColors::text);
    draw(currentData(ratioRole).toString(), &ThemeColors::text2);
}

} // namespace ferrow
