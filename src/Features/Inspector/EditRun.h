// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

namespace ferrow {

/// Turns what happens in a popover into gestures of the edit history: a drag from press to release is one, and so is a
/// run of keys or clicks that follow each other within half a second. Every edit is told here just before it is made.
class EditRun : public QObject {
    Q_OBJECT

public:
    explicit EditRun(QObject* parent = nullptr);

    void beginDrag();
    void endDrag();
    void noteEdit();
    /// The popover closes: nothing more belongs to this gesture.
    void finish();

signals:
    void gestureStarted();
    void gestureEnded();

private:
    QTimer pause_;
    bool isDragging_ = false;
    bool isOpen_ = false;
};

} // namespace ferrow
