// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <vector>

namespace ferrow {

/// The program as org.freedesktop.Application on the session bus, under its desktop entry's id: the desktop, and every
/// later start, hands files to the window that runs. Main thread.
class ApplicationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    /// Takes the name `id`, such as "app.ferrow.Ferrow", where nobody else has it. What is called from then on is told
    /// of once events are handled. Without a bus nothing is ever told.
    explicit ApplicationService(const QString& id, QDBusConnection bus = QDBusConnection::sessionBus());
    ApplicationService(const ApplicationService&) = delete;
    ApplicationService& operator=(const ApplicationService&) = delete;
    ~ApplicationService() override;

    /// Hands `files` (none: the mere wish to be seen) to the program that has the name. Answers whether it has taken
    /// them: false without a bus, when this is the program with the name, and when the other one does not answer.
    [[nodiscard]] bool handOver(const std::vector<FileUrl>& files, const QByteArray& activationToken) const;

    // The names of the interface.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE void ActivateAction(const QString& name, const QVariantList& parameters,
                                     const QVariantMap& platformData);

signals:
    /// Somebody wants to see the window, and may have `files` for it. The token is the desktop's permission to come to
    /// the front; it may be empty.
    void called(const std::vector<ferrow::FileUrl>& files, const QByteArray& activationToken);

private:
    QDBusConnection bus_;
    QString id_;
    QString path_;
    bool isOwner_ = false;
};

/// What the desktop gave this start, so that its window may come to the front. To be asked for before the toolkit
/// starts, which takes it away.
[[nodiscard]] QByteArray activationTokenOfThisStart();

} // namespace ferrow
