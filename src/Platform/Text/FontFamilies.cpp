// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Text/TextFrame.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <tuple>

namespace ferrow::FontFamilies {

namespace {

const QString& emojiFamily()
{
    static const QString name = QStringLiteral("Noto Color Emoji");
    return name;
}

struct StandIns {
    QLatin1StringView asked;
    std::array<QLatin1StringView, 3> families;
};

/// Chosen by eye. Font matching by the system gives one and the same sans-serif for all of these names.
constexpr std::array<StandIns, 5> standIns{{
    {QLatin1StringView("Helvetica Neue"),
     {QLatin1StringView("Inter"), QLatin1StringView("Nimbus Sans"), QLatin1StringView("Liberation Sans")}},
    {QLatin1StringView("Avenir Next"), {QLatin1StringView("Manrope"), QLatin1StringView("Lato")}},
    {QLatin1StringView("New York"), {QLatin1StringView("PT Serif"), QLatin1StringView("Noto Serif")}},
    {QLatin1StringView("SF Mono"), {QLatin1StringView("JetBrains Mono"), QLatin1StringView("DejaVu Sans Mono")}},
    {QLatin1StringView("Arial Rounded MT Bold"),
     {QLatin1StringView("Quicksand"), QLatin1StringView("Dosis"), QLatin1StringView("Comfortaa")}},
}};

/// How long the desktop may take to answer before its font is done without.
constexpr std::chrono::milliseconds desktopPatience{200};

/// The family in a description such as "Cantarell Bold 11" or "Noto Sans, 10": installed names decide where it ends.
QString familyOfDescription(const QString& description)
{
    QString family = description.section(u',', 0, 0).simplified();
    while (!family.isEmpty() && !QFontDatabase::hasFamily(family)) {
        const qsizetype lastWord = family.lastIndexOf(u' ');
        family.truncate(lastWord < 0 ? 0 : lastWord);
    }
    return family;
}

/// What GNOME and the desktops that follow it publish. A session without a running portal is not asked to start one.
QString fontNameFromPortal()
{
    const QString connectionName = QStringLiteral("ferrow-font");
    QVariant answer;
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
        QDBusMessage question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
        question << QStringLiteral("org.gnome.desktop.interface") << QStringLiteral("font-name");
        question.setAutoStartService(false);
        const QDBusMessage reply =
            bus.isConnected() ? bus.call(question, QDBus::Block, int(desktopPatience.count())) : question;
        if (reply.type() == QDBusMessage::ReplyMessage)
            answer = reply.arguments().value(0);
    }
    QDBusConnection::disconnectFromBus(connectionName);
    while (answer.canConvert<QDBusVariant>())
        answer = answer.value<QDBusVariant>().variant();
    return answer.toString();
}

/// Connecting to a bus that accepts and then stays silent has no limit of its own, so that it is waited for from here.
/// A thread that never gets its answer is left to the end of the process.
QString familyFromPortal()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return {};
    const auto answer = std::make_shared<std::promise<QString>>();
    std::future<QString> description = answer->get_future();
    try {
        std::thread([answer] { answer->set_value(fontNameFromPortal()); }).detach();
    } catch (const std::system_error&) {
        return {}; // The system allows no more threads.
    }
    if (description.wait_for(desktopPatience) != std::future_status::ready)
        return {};
    return familyOfDescription(description.get());
}

/// KDE keeps its font in a settings file: "font=Noto Sans,10,-1,…" in the group General.
QString familyFromKde()
{
    if (!qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(QLatin1StringView("KDE")))
        return {};
    const QByteArray folder = qgetenv("XDG_CONFIG_HOME");
    QFile file(QFile::decodeName((folder.isEmpty() ? qgetenv("HOME") + "/.config" : folder) + "/kdeglobals"));
    // Opening something that is not a file, such as a pipe, might wait for ever.
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    bool inGeneral = false;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine(4096).trimmed();
        if (line.startsWith('['))
            inGeneral = line == "[General]";
        else if (inGeneral && line.startsWith("font="))
            return familyOfDescription(QString::fromUtf8(line.mid(5)));
    }
    return {};
}

QString findSystem()
{
    for (const auto& source : {familyFromKde, familyFromPortal}) {
        const QString family = source();
        if (!family.isEmpty())
            return family;
    }
    return QFontInfo(QFont(QStringLiteral("sans-serif"))).family();
}

} // namespace

QString system()
{
    static const QString family = findSystem();
    return family;
}

QStringList installed()
{
    QStringList families = QFontDatabase::families();
    families.removeIf([](const QString& family) { return QFontDatabase::isPrivateFamily(family); });
    return families;
}

bool isInstalled(const QString& family)
{
    return QFontDatabase::hasFamily(family);
}

QStringList styles(const QString& family)
{
    QStringList styles = QFontDatabase::styles(family);
    const auto rank = [&](const QString& style) {
        return std::tuple(QFontDatabase::weight(family, style), QFontDatabase::italic(family, style), style);
    };
    std::ranges::sort(styles, {}, rank);
    return styles;
}

bool hasLetters(const QString& family)
{
    return QFontDatabase::writingSystems(family).contains(QFontDatabase::Latin);
}

QString standInFor(const QString& family)
{
    if (family.trimmed().isEmpty())
        return system(); // It would match whichever font comes first.
    const auto matched = [](const QString& name) { return QFontInfo(QFont(QStringList{name})).family(); };
    const QString nearest = matched(family);
    // For a name that it does not know, the system has one answer. Signs instead of letters are no stand-in.
    const bool isKnown = nearest != matched(QStringLiteral("sans-serif")) && hasLetters(nearest);
    return isKnown ? nearest : system();
}

QStringList chainForInstalled(const QString& family)
{
    return QStringList{isInstalled(family) ? family : standInFor(family), system()} +
           chainFor(QStringLiteral("Helvetica Neue"));
}

QStringList chainFor(const QString& name)
{
    QStringList chain{name};
    for (const StandIns& row : standIns) {
        if (row.asked != name)
            continue;
        for (const QLatin1StringView family : row.families)
            if (!family.isEmpty())
                chain.append(family);
    }
    chain.append(emojiFamily());
    return chain;
}

} // namespace ferrow::FontFamilies
