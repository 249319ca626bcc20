// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PresetManager/PresetList.h"

#include "Features/PresetManager/PresetSummary.h"
#include "Widgets/ColorWell.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ferrow {

namespace {

constexpr int rowHeight = 60;
constexpr int frameWidth = 46;
constexpr int frameHeight = 36;
constexpr double leastPhotoContrast = 0.16; ///< In value: what photo and border must differ by to be told apart.

QRect frameBox(const QRect& row)
{
    return {row.left() + Space::row - 1, row.center().y() - frameHeight / 2 + 1, frameWidth, frameHeight};
}

QRect textBox(const QRect& row)
{
    return row.adjusted(Space::row + frameWidth + Space::row, 0, -Space::row, 0);
}

/// Gray like the photo of a drawing, but another gray where the border is of the same.
QColor photoColor(const QColor& border)
{
    const auto& backdrops = Theme::backdrops();
    const bool stands = std::abs(border.valueF() - backdrops.lightGray.valueF()) > leastPhotoContrast ||
                        border.saturationF() > leastPhotoContrast;
    if (stands || border.lightnessF() > 0.9F)
        return backdrops.lightGray;
    return backdrops.gray;
}

void paintFrame(QPainter& painter, const QRect& box, const Border& border)
{
    const DrawnFrame frame = drawnFrame(border, QRectF(box).adjusted(1, 1, -1, -1));
    const QColor color = border.blurredBackground ? Theme::backdrops().gray : ColorText::toQColor(border.color);
    painter.setPen(QPen(themeColor(&ThemeColors::border), 1));
    painter.setBrush(color);
    painter.drawRoundedRect(frame.canvas.adjusted(-0.5, -0.5, 0.5, 0.5), 2, 2);
    if (border.line) {
        painter.setPen(QPen(ColorText::toQColor(border.line->color), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(frame.line.adjusted(0.5, 0.5, -0.5, -0.5));
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(photoColor(color));
    painter.drawRoundedRect(frame.photo, frame.cornerRadius, frame.cornerRadius);
}

std::vector<QUuid> ids(const std::vector<PhotoPreset>& presets)
{
    std::vector<QUuid> all;
    for (const auto& preset : presets)
        all.push_back(preset.id);
    return all;
}

} // namespace

int selectionAfterChange(const std::vector<QUuid>& before, int selected, const std::vector<QUuid>& after)
{
    const auto isNew = [&](const QUuid& id) { return std::find(before.begin(), before.end(), id) == before.end(); };
    if (std::count_if(after.begin(), after.end(), isNew) == 1)
        return int(std::find_if(after.begin(), after.end(), isNew) - after.begin());
    if (selected < 0)
        return -1;
    const auto kept = std::find(after.begin(), after.end(), before[std::size_t(selected)]);
    if (kept != after.end())
        return int(kept - after.begin());
    return std::min(selected, int(after.size()) - 1);
}

PresetListModel::PresetListModel(const PresetLibrary& library, QObject* parent)
    : QAbstractListModel(parent), library_(library), presets_(library.presets())
{
}

const PhotoPreset& PresetListModel::preset(int row) const
{
    return presets_[std::size_t(row)];
}

int PresetListModel::rowOf(const QUuid& id) const
{
    const auto found = std::find_if(presets_.begin(), presets_.end(), [&](const auto& each) { return each.id == id; });
    return found == presets_.end() ? -1 : int(found - presets_.begin());
}

void PresetListModel::renew()
{
    beginResetModel();
    presets_ = library_.presets();
    endResetModel();
}

int PresetListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(presets_.size());
}

QVariant PresetListModel::data(const QModelIndex& index, int role) const
{
    const auto& shown = preset(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return shown.name;
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(shown.name, payloadSummary(shown.payload));
    default:
        return {};
    }
}

bool PresetListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const auto name = value.toString().trimmed();
    if (role != Qt::EditRole || name.isEmpty() || name == preset(index.row()).name)
        return false;
    emit renamed(preset(index.row()).id, name);
    return true;
}

Qt::ItemFlags PresetListModel::flags(const QModelIndex&) const
{
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemNeverHasChildren;
}

PresetRowDelegate::PresetRowDelegate(const PresetListModel& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model)
{
}

QSize PresetRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {0, Theme::current().scaled(rowHeight)};
}

void PresetRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& theme = Theme::current();
    const auto& colors = theme.colors();
    const auto& preset = model_.preset(index.row());
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    paintListRow(*painter, QRectF(option.rect).adjusted(0, 1, 0, -1), option, hovered);
    paintFrame(*painter, frameBox(option.rect), preset.payload.framing.border);

    const int nameHeight = theme.lineHeight(TextRole::strong);
    const int summaryHeight = theme.lineHeight(TextRole::small);
    QRect line = textBox(option.rect).adjusted(0, 0, selected ? -actionsWidth_ : 0, 0);
    line.setTop(option.rect.center().y() - (nameHeight + summaryHeight) / 2);
    line.setHeight(nameHeight);
    const auto draw = [&](TextRole role, const QColor& color, const QString& text) {
        painter->setFont(theme.font(role));
        painter->setPen(color);
        painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
    };
    draw(TextRole::strong, colors.text, preset.name);
    line.translate(0, nameHeight);
    line.setHeight(summaryHeight);
    draw(TextRole::small, colors.text2, payloadSummary(preset.payload));
    painter->restore();
}

QWidget* PresetRowDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const
{
    auto* editor = new QLineEdit(parent);
    editor->setAccessibleName(QStringLiteral("Preset name"));
    editor->setObjectName(QStringLiteral("presetNameEditor"));
    return editor;
}

void PresetRowDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                             const QModelIndex&) const
{
    const QRect box = textBox(option.rect).adjusted(-Space::iconEdge, 0, Space::row, 0);
    const int height = Theme::current().scaled(Measure::control);
    editor->setGeometry(box.left(), box.center().y() - height / 2 + 1, box.width() - actionsWidth_ - Space::row,
                        height);
}

PresetList::PresetList(const PresetLibrary& library, QWidget* parent)
    : SheetList(QStringLiteral("Saved presets"), parent), model_(library), delegate_(model_)
{
    setObjectName(QStringLiteral("presetList"));
    setModel(&model_);
    setItemDelegate(&delegate_);
    setEditTriggers(EditKeyPressed);
    connect(&model_, &PresetListModel::renamed, this, &PresetList::renamed, Qt::QueuedConnection);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        placeActions();
        emit selectedPresetChanged();
    });
}

void PresetList::setActions(QWidget* actions)
{
    actions_ = actions;
    actions_->setParent(viewport());
    placeActions();
}

std::optional<QUuid> PresetList::selectedPreset() const
{
    const auto rows = selectionModel()->selectedRows();
    if (rows.isEmpty())
        return std::nullopt;
    return model_.preset(rows.first().row()).id;
}

void PresetList::renew()
{
    const auto before = ids(model_.presets());
    const auto selected = selectedPreset();
    const int selectedRow = selected ? model_.rowOf(*selected) : -1;
    model_.renew();
    select(selectionAfterChange(before, selectedRow, ids(model_.presets())));
    updateGeometry();
}

void PresetList::select(int row)
{
    if (row < 0) {
        placeActions();
        emit selectedPresetChanged();
        return;
    }
    setCurrentIndex(model_.index(row));
    scrollTo(model_.index(row));
}

void PresetList::placeActions()
{
    if (!actions_)
        return;
    const auto rows = selectionModel()->selectedRows();
    actions_->setVisible(!rows.isEmpty());
    if (rows.isEmpty())
        return;
    const QRect row = visualRect(rows.first());
    const QSize size = actions_->sizeHint();
    delegate_.setActionsWidth(size.width() + Space::row);
    actions_->setGeometry(row.right() + 1 - Space::row - size.width(), row.center().y() - size.height() / 2 + 1,
                          size.width(), size.height());
}

void PresetList::keyPressEvent(QKeyEvent* event)
{
    // Keys that end the typing of a name arrive here as well; they mean nothing more.
    if (state() == EditingState)
        return;
    const auto selected = selectedPreset();
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (selected)
            emit applyRequested(*selected);
        return;
    case Qt::Key_Delete:
        if (selected)
            emit removeRequested(*selected);
        return;
    case Qt::Key_D:
        if (selected && event->modifiers() == Qt::ControlModifier) {
            emit duplicateRequested(*selected);
            return;
        }
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        // Without a selection there is a current row all the same: the first arrow must not pass it over.
        if (!selected && model_.rowCount() > 0) {
            select(event->key() == Qt::Key_Down ? 0 : model_.rowCount() - 1);
            return;
        }
        break;
    default:
        break;
    }
    SheetList::keyPressEvent(event);
}

void PresetList::mouseDoubleClickEvent(QMouseEvent* event)
{
    SheetList::mouseDoubleClickEvent(event);
    const auto index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index.isValid())
        emit applyRequested(model_.preset(index.row()).id);
}

void PresetList::resizeEvent(QResizeEvent* event)
{
    SheetList::resizeEvent(event);
    placeActions();
}

void PresetList::scrollContentsBy(int dx, int dy)
{
    SheetList::scrollContentsBy(dx, dy);
    placeActions();
}

void PresetList::updateGeometries()
{
    SheetList::updateGeometries();
    placeActions();
}

} // namespace ferrow
