// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Widgets/ChoiceStrip.h"
#include "Widgets/Theme.h"

#include <map>

namespace ferrow {

/// A few choices below each other, each with what it comes to at the end of its line.
class RadioList : public ChoiceStrip {
    Q_OBJECT

public:
    /// From the start of a line to its words, in logical pixels.
    static constexpr int textInset = Space::group + Measure::checkBox + Space::group;

    /// `name` is what assistive technology calls the group.
    RadioList(const QString& name, const QStringList& items, QWidget* parent = nullptr);

    /// A small line above an item.
    void setHeading(int index, const QString& text);
    /// One for each item.
    void setExamples(const QStringList& examples);

    AccessibleItem item(int index) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    [[nodiscard]] QRect itemRect(int index) const override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect textRect(int index) const;
    void paintItem(QPainter& painter, int index) const;

    std::map<int, QString> headings_;
    QStringList examples_;
};

} // namespace ferrow
