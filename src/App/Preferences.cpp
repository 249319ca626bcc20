// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Preferences.h"

#include <QDir>
#include <QFile>

namespace ferrow {

namespace {

/// The one table of what is stored, with its defaults.
struct Stored {
    const char16_t* key;
    const char16_t* defaultText;
};

constexpr Stored appearanceText{u"appearancePreference", u"System"};
constexpr Stored lightBackdropText{u"previewBackdropLight", u"White"};
constexpr Stored darkBackdropText{u"previewBackdropDark", u"Black"};
constexpr Stored opensFoldersText{u"openExportFoldersAfterCompletion", u"false"};

const Stored& backdropText(bool isDark)
{
    return isDark ? darkBackdropText : lightBackdropText;
}

QString textOf(const QSettings& settings, const Stored& stored)
{
    return settings.value(QString::fromUtf16(stored.key)).toString();
}

template <typename Enum>
Enum choice(const QSettings& settings, const Stored& stored)
{
    if (const auto known = fromRawValue<Enum>(textOf(settings, stored)))
        return *known;
    return *fromRawValue<Enum>(QStringView(stored.defaultText));
}

void store(QSettings& settings, const Stored& stored, const QString& text)
{
    settings.setValue(QString::fromUtf16(stored.key), text);
    settings.sync(); // Now, not in a destructor: a program that leaves work behind ends without one.
}

QString fileName(const FileUrl& file)
{
    return QFile::decodeName(file.path());
}

} // namespace

Preferences::Preferences(const std::optional<FileUrl>& file, QObject* parent)
    : QObject(parent), settings_(fileName(file ? *file : defaultFile()), QSettings::IniFormat)
{
}

FileUrl Preferences::defaultFile()
{
    const QByteArray configured = qgetenv("XDG_CONFIG_HOME");
    const FileUrl folder = configured.startsWith('/')
                               ? FileUrl::fromPath(configured)
                               : FileUrl::fromPath(QDir::homePath()).appending(QByteArrayLiteral(".config"));
    return folder.appending(QByteArrayLiteral("Ferrow")).appending(QByteArrayLiteral("Ferrow.conf"));
}

AppearancePreference Preferences::appearance() const
{
    return choice<AppearancePreference>(settings_, appearanceText);
}

PreviewBackdrop Preferences::previewBackdrop(bool isDark) const
{
    return choice<PreviewBackdrop>(settings_, backdropText(isDark));
}

bool Preferences::opensExportFolders() const
{
    return textOf(settings_, opensFoldersText) == QLatin1StringView("true");
}

void Preferences::setAppearance(AppearancePreference appearance)
{
    if (appearance == this->appearance())
        return;
    store(settings_, appearanceText, rawValue(appearance));
    emit appearanceChanged();
}

void Preferences::setPreviewBackdrop(bool isDark, PreviewBackdrop backdrop)
{
    if (backdrop == previewBackdrop(isDark))
        return;
    store(settings_, backdropText(isDark), rawValue(backdrop));
    emit previewBackdropChanged(isDark);
}

void Preferences::setOpensExportFolders(bool opens)
{
    if (opens == opensExportFolders())
        return;
    store(settings_, opensFoldersText, opens ? QStringLiteral("true") : QStringLiteral("false"));
    emit opensExportFoldersChanged();
}

} // namespace ferrow
