// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

namespace ferrow {

/// How the desktop wants to be looked at, from the portal's settings and kept up to date. Without a portal everything
/// stands at its default and prefersDark() is absent: the caller judges by the palette. Main thread.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    /// Waits a moment for the portal, so that the first painted window has its colors; a portal that answers later
    /// announces itself by changed().
    explicit DesktopAppearance(QObject* parent = nullptr);

    [[nodiscard]] std::optional<bool> prefersDark() const { return prefersDark_; }
    [[nodiscard]] bool prefersMoreContrast() const { return moreContrast_; }
    [[nodiscard]] bool prefersReducedMotion() const { return reducedMotion_; }

signals:
    void changed();

private slots:
    void settingChanged(const QDBusMessage& message);

private:
    bool take(const QString& key, const QVariant& value);
    void takeAll(const QVariant& groups);

    std::optional<bool> prefersDark_;
    bool moreContrast_ = false;
    bool reducedMotion_ = false;
};

} // namespace ferrow
