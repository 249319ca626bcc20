// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QString>

#include <functional>

class QWidget;

namespace ferrow {

/// Sends to assistive technology where there is any. Every event that this program makes itself goes through here.
void sendAccessible(QAccessibleEvent& event);
/// False where nobody would hear an event: then it need not be made.
[[nodiscard]] bool isHeard();
/// For tests: takes the events instead, whether or not there is assistive technology. An empty one gives them back.
void setAccessibleReceiver(const std::function<void(QAccessibleEvent&)>& receiver);

/// Says something that happened and that focus does not tell: "Report copied". Both ways at once, since screen readers
/// know one or the other: a notification that shows up in the widget's window, and an announcement.
void announce(QWidget* widget, const QString& text);
/// How far something has come: the announcement alone. A progress bar with a value tells it to everybody else.
void announceProgress(QWidget* widget, const QString& text);

/// For what `announce` makes: it takes a widget only if it is one of those.
[[nodiscard]] QAccessibleInterface* makeNotificationInterface(QWidget* widget);

} // namespace ferrow
