// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleEvents.h"

#include <QAccessibleWidget>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTimer>
#include <QWidget>

#include <chrono>

namespace ferrow {

namespace {

using namespace std::chrono_literals;

/// Until a screen reader that is still speaking has come to it.
constexpr auto notificationStays = 20s;

std::function<void(QAccessibleEvent&)>& testReceiver()
{
    static std::function<void(QAccessibleEvent&)> receiver;
    return receiver;
}

/// Nothing to be seen. Each text has its own: screen readers keep the name of what they have met once.
class Notification : public QWidget {
public:
    Notification(QWidget* window, const QString& text) : QWidget(window), text_(text)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(0, 0, 1, 1);
        lower();
        QTimer::singleShot(notificationStays, this, &QObject::deleteLater);
    }

    [[nodiscard]] const QString& text() const { return text_; }

private:
    QString text_;
};

class NotificationInterface : public QAccessibleWidget {
public:
    explicit NotificationInterface(Notification* notification)
        : QAccessibleWidget(notification, QAccessible::Notification)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? static_cast<Notification*>(widget())->text() : QString();
    }
};

} // namespace

void setAccessibleReceiver(const std::function<void(QAccessibleEvent&)>& receiver)
{
    testReceiver() = receiver;
}

bool isHeard()
{
    return testReceiver() || QAccessible::isActive();
}

void sendAccessible(QAccessibleEvent& event)
{
    if (testReceiver())
        testReceiver()(event);
    else if (QAccessible::isActive())
        QAccessible::updateAccessibility(&event);
}

void announce(QWidget* widget, const QString& text)
{
    if (!isHeard() || text.isEmpty())
        return;
    (new Notification(widget->window(), text))->show();
    announceProgress(widget, text);
}

void announceProgress(QWidget* widget, const QString& text)
{
    QAccessibleInterface* speaker = QAccessible::isActive() ? QAccessible::queryAccessibleInterface(widget) : nullptr;
    if (!speaker || text.isEmpty())
        return;
    // Qt before 6.8 has no announcements; what it would send goes over its own connection to assistive technology.
    const QString object = QStringLiteral("/org/a11y/atspi/accessible/%1").arg(QAccessible::uniqueId(speaker));
    const QDBusConnection bus(QStringLiteral("a11y"));
    QDBusMessage announcement = QDBusMessage::createSignal(object, QStringLiteral("org.a11y.atspi.Event.Object"),
                                                           QStringLiteral("Announcement"));
    constexpr int polite = 1; // After what is being said.
    announcement << QString() << polite << 0 << QVariant::fromValue(QDBusVariant(text)) << QVariantMap();
    bus.send(announcement);
}

QAccessibleInterface* makeNotificationInterface(QWidget* widget)
{
    auto* notification = dynamic_cast<Notification*>(widget);
    return notification ? new NotificationInterface(notification) : nullptr;
}

} // namespace ferrow
