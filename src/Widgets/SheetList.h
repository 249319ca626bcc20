// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/AccessibleRows.h"

namespace ferrow {

/// The list in a sheet's body: as high as its rows, as long as the window leaves room for them beside all else on the
/// card, and then it scrolls by itself. Rows are painted by a delegate.
class SheetList : public QListView, public AccessibleRows {
    Q_OBJECT

public:
    /// `name` is for assistive technology.
    explicit SheetList(const QString& name, QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] int room() const;
    [[nodiscard]] int heightBesideList() const;
    /// Of the rows together, but no more than `enough`: thousands of rows are not measured for it.
    [[nodiscard]] int contentHeight(int enough) const;
};

} // namespace ferrow
