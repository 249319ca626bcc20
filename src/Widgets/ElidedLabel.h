// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ferrow {

/// One line of plain text that gives way: elided in the middle (file names) or at the end, the whole of it in the
/// tooltip while it is elided and always for assistive technology.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, Qt::TextElideMode mode = Qt::ElideRight, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QString shownText() const;

    Qt::TextElideMode mode_;
};

} // namespace ferrow
