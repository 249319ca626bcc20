// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetLibrary.h"
#include "Widgets/SheetList.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>
#include <QUuid>

#include <functional>
#include <optional>

namespace ferrow {

/// The library's presets in its order. Editing a row hands the new name on and changes nothing here.
class PresetListModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit PresetListModel(const PresetLibrary& library, QObject* parent = nullptr);

    [[nodiscard]] const std::vector<PhotoPreset>& presets() const { return presets_; }
    [[nodiscard]] const PhotoPreset& preset(int row) const;
    /// -1 when it is not there.
    [[nodiscard]] int rowOf(const QUuid& id) const;
    /// The library's list has changed.
    void renew();

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    /// Another name that is not blank was typed.
    void renamed(const QUuid& id, const QString& newName);

private:
    const PresetLibrary& library_;
    std::vector<PhotoPreset> presets_; ///< What the view was told of last.
};

/// A little frame in its true color, name and summary.
class PresetRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit PresetRowDelegate(const PresetListModel& model, QObject* parent = nullptr);

    /// How much of the selected row its buttons cover at the right.
    void setActionsWidth(int width) { actionsWidth_ = width; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

private:
    const PresetListModel& model_;
    int actionsWidth_ = 0;
};

/// Rows of presets. Enter and a double click apply the selected one, F2 renames it in place, Ctrl+D duplicates it,
/// Delete asks to remove it. The selected row carries `actions`, which the owner fills.
class PresetList : public SheetList {
    Q_OBJECT

public:
    explicit PresetList(const PresetLibrary& library, QWidget* parent = nullptr);

    /// Shown on the selected row from then on, hidden without one.
    void setActions(QWidget* actions);
    [[nodiscard]] std::optional<QUuid> selectedPreset() const;
    void selectFirst() { select(0); }
    /// After the library's list has changed: a preset that was added becomes selected, else the selected one stays so;
    /// if that was removed, its neighbor is selected.
    void renew();

signals:
    void selectedPresetChanged();
    void applyRequested(const QUuid& id);
    void duplicateRequested(const QUuid& id);
    void removeRequested(const QUuid& id);
    void renamed(const QUuid& id, const QString& newName);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

private:
    void select(int row);
    void placeActions();

    PresetListModel model_;
    PresetRowDelegate delegate_;
    QWidget* actions_ = nullptr;
};

/// Which row to select once a list of presets has changed from `before` to `after`; -1 for none.
[[nodiscard]] int selectionAfterChange(const std::vector<QUuid>& before, int selected, const std::vector<QUuid>& after);

} // namespace ferrow
