// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QApplication;
class QWheelEvent;
class QWidget;

namespace ferrow {

/// Rules for keys that hold in every view, so that none has to think of them. FerrowStyle::install does it.
///
/// A key held down presses once: its repetition would go on to the dialog that the first press opened. And Ctrl with a
/// letter belongs to the window's commands also while a text field has the focus, but for copying and the like: Qt's
/// fields would take Ctrl+E as "to the end of the line".
void installKeyRules(QApplication& application);

/// A pane was scrolled by this turn of the wheel.
void noteScrolling(const QWheelEvent& event);
/// Whether a turn of the wheel over `widget` changes its value: only with the focus, and not while a pane that is being
/// scrolled merely brings it under the pointer. Leave the event to the pane otherwise.
[[nodiscard]] bool wheelIsFor(const QWidget& widget, const QWheelEvent& event);

} // namespace ferrow
