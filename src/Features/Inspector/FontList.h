// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/FontChoice.h"
#include "Widgets/SheetList.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include <vector>

namespace ferrow {

/// The five typefaces, then all families that are installed in the order of their names, as far as they fit what is
/// searched for.
class FontListModel : public QAbstractListModel {
    Q_OBJECT

public:
    /// `chosen` wears the tick.
    explicit FontListModel(FontChoice chosen, QObject* parent = nullptr);

    [[nodiscard]] int familyCount() const { return families_; }
    [[nodiscard]] const FontChoice& choice(int row) const { return shown_[std::size_t(row)]; }
    /// -1 where it is not shown.
    [[nodiscard]] int rowOf(const FontChoice& choice) const;
    /// All words of `text` are to be in the name, in whatever case.
    void search(const QString& text);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    FontChoice chosen_;
    std::vector<FontChoice> all_;
    std::vector<FontChoice> shown_;
    int families_ = 0;
};

/// Each name in its own face.
class FontRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit FontRowDelegate(const FontListModel& model, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const FontListModel& model_;
};

/// Nine rows high, as far as there is room.
class FontList : public SheetList {
    Q_OBJECT

public:
    explicit FontList(FontListModel& model, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
};

} // namespace ferrow
