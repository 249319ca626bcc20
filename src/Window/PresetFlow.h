// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUuid>
#include <QWidget>

#include <functional>

namespace ferrow {

class EditHistory;
class ErrorAlerts;
class ExportSession;
class PhotoSession;
class PresetLibrary;
class PresetManagerView;
struct PhotoPreset;

/// The preset sheet with the questions that it leads to. All that is given must outlive it.
class PresetFlow : public QObject {
    Q_OBJECT

public:
    PresetFlow(QWidget& window, PresetLibrary& library, const PhotoSession& session, const ExportSession& exportSession,
               EditHistory& history, ErrorAlerts& alerts);

    void showPresets();

private:
    void saveCurrentPreset();
    /// The starter frames, each with the present export settings.
    void addStarters();
    void applyPreset(const QUuid& id);
    void renamePreset(const QUuid& id);
    void duplicatePreset(const QUuid& id);
    void deletePreset(const QUuid& id);
    void requestPresetName(const QString& title, const QString& prompt, const QString& defaultValue,
                           const std::function<void(const QString&)>& named);
    [[nodiscard]] const PhotoPreset* preset(const QUuid& id) const;

    QWidget& window_;
    PresetLibrary& library_;
    const PhotoSession& session_;
    const ExportSession& exportSession_;
    EditHistory& history_;
    ErrorAlerts& alerts_;
    QPointer<PresetManagerView> presets_;
};

} // namespace ferrow
