// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLayout>

#include <vector>

namespace ferrow {

/// Puts its items side by side at their preferred sizes and goes on in a new line where they do not fit. Mirrors in
/// right-to-left layouts.
class FlowLayout : public QLayout {
    Q_OBJECT

public:
    /// `gap` between items and between lines, in logical pixels.
    explicit FlowLayout(int gap, QWidget* parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect& rect) override;

private:
    int arrange(const QRect& rect, bool apply) const;

    std::vector<QLayoutItem*> items_;
    int gap_;
};

} // namespace ferrow
