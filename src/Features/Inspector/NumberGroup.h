// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/EditRun.h"

#include <QWidget>

namespace ferrow {

class NumberField;

/// Number fields that make one value together. A run of steps by keys or wheel is one gesture, a typed number is an
/// edit of its own.
class NumberGroup : public QWidget {
    Q_OBJECT

public:
    explicit NumberGroup(QWidget* parent = nullptr);

signals:
    void gestureStarted();
    void gestureEnded();
    /// As NumberField's, of any of them.
    void errorChanged(const QString& message);

protected:
    /// `name` is for assistive technology.
    [[nodiscard]] NumberField* addField(const QString& name);
    /// The user has given one of the fields another number.
    virtual void takeNumbers() = 0;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    EditRun run_;
};

} // namespace ferrow
