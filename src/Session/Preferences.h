// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"
#include "Platform/Base/FileUrl.h"

#include <QObject>
#include <QSettings>

#include <optional>

namespace ferrow {

enum class AppearancePreference { system, light, dark };
/// What surrounds the framed photo in the preview.
enum class PreviewBackdrop { black, charcoal, gray, lightGray, white };

template <>
struct CodedCases<AppearancePreference> {
    static constexpr std::array<CodedCase<AppearancePreference>, 3> table{{{AppearancePreference::system, u"System"},
                                                                           {AppearancePreference::light, u"Light"},
                                                                           {AppearancePreference::dark, u"Dark"}}};
};

template <>
struct CodedCases<PreviewBackdrop> {
    static constexpr std::array<CodedCase<PreviewBackdrop>, 5> table{{{PreviewBackdrop::black, u"Black"},
                                                                      {PreviewBackdrop::charcoal, u"Charcoal"},
                                                                      {PreviewBackdrop::gray, u"Gray"},
                                                                      {PreviewBackdrop::lightGray, u"Light Gray"},
                                                                      {PreviewBackdrop::white, u"White"}}};
};

/// The four things that survive a restart beside presets and logos. Lives on the main thread; written when changed.
/// Stored texts that say nothing known count as the default and stay in the file until the user chooses.
class Preferences : public QObject {
    Q_OBJECT

public:
    /// Without `file`: Ferrow/Ferrow.conf in $XDG_CONFIG_HOME, else in ~/.config.
    explicit Preferences(const std::optional<FileUrl>& file = {}, QObject* parent = nullptr);

    [[nodiscard]] static FileUrl defaultFile();

    [[nodiscard]] AppearancePreference appearance() const;
    /// One choice for light appearance, one for dark.
    [[nodiscard]] PreviewBackdrop previewBackdrop(bool isDark) const;
    [[nodiscard]] bool opensExportFolders() const;

    /// A sentence for the user where the last change could not be written and holds for this run alone; else empty.
    [[nodiscard]] QString unsavedNote() const;

    void setAppearance(AppearancePreference appearance);
    void setPreviewBackdrop(bool isDark, PreviewBackdrop backdrop);
    void setOpensExportFolders(bool opens);

signals:
    void appearanceChanged();
    void previewBackdropChanged(bool isDark);
    void opensExportFoldersChanged();

private:
    void store(const char16_t* key, const QString& text);

    QString fileName_;
    std::optional<QSettings> settings_;
    bool isUnsaved_ = false;
};

} // namespace ferrow
