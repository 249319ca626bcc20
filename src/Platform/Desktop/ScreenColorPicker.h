// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QDBusMessage>
#include <QObject>

namespace ferrow {

/// The desktop's own color picker, through the portal: the user clicks anywhere on the screen. Main thread.
class ScreenColorPicker : public QObject {
    Q_OBJECT

public:
    /// Asks the portal whether it can pick; availableChanged() follows when it can.
    explicit ScreenColorPicker(QObject* parent = nullptr);

    [[nodiscard]] bool isAvailable() const { return available_; }
    /// picked() follows, or nothing when the user gives up.
    void pick();

signals:
    void availableChanged();
    void picked(const QColor& color); ///< sRGB.

private slots:
    void answered(const QDBusMessage& message);

private:
    bool available_ = false;
};

} // namespace ferrow
