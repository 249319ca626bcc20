// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/Preferences.h"

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

QString fileName(const FileUrl& file)
{
    return QFile::decodeName(file.path());
}

} // namespace

Preferences::Preferences(const std::optional<FileUrl>& file, QObject* parent)
    : QObject(parent), fileName_(fileName(file ? *file : defaultFile()))
{
    settings_.emplace(fileName_, QSettings::IniFormat);
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
    return choice<AppearancePreference>(*settings_, appearanceText);
}

PreviewBackdrop Preferences::previewBackdrop(bool isDark) const
{
    return choice<PreviewBackdrop>(*settings_, backdropText(isDark));
}

bool Preferences::opensExportFolders() const
{
    return textOf(*settings_, opensFoldersText) == QLatin1StringView("true");
}

QString Preferences::unsavedNote() const
{
    return isUnsaved_
               ? QStringLiteral("This choice is lost when Ferrow is closed: “%1” can’t be written.").arg(fileName_)
               : QString();
}

void Preferences::store(const char16_t* key, const QString& text)
{
    // An error sticks to the object, also when a later write succeeds.
    if (settings_->status() != QSettings::NoError)
        settings_.emplace(fileName_, QSettings::IniFormat);
    settings_->setValue(QString::fromUtf16(key), text);
    settings_->sync(); // Now, not in a destructor: a program that leaves work behind ends without one.
    isUnsaved_ = settings_->status() == QSettings::AccessError;
}

void Preferences::setAppearance(AppearancePreference appearance)
{
    if (appearance == this->appearance())
        return;
    store(appearanceText.key, rawValue(appearance));
    emit appearanceChanged();
}

void Preferences::setPreviewBackdrop(bool isDark, PreviewBackdrop backdrop)
{
    if (backdrop == previewBackdrop(isDark))
        return;
    store(backdropText(isDark).key, rawValue(backdrop));
    emit previewBackdropChanged(isDark);
}

void Preferences::setOpensExportFolders(bool opens)
{
    if (opens == opensExportFolders())
        return;
    store(opensFoldersText.key, opens ? QStringLiteral("true") : QStringLiteral("false"));
    emit opensExportFoldersChanged();
}

} // namespace ferrow
