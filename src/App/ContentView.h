// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/EditHistory.h"
#include "App/ExportRequest.h"
#include "App/ExportSession.h"
#include "App/FilePanels.h"
#include "App/LogoImporter.h"
#include "App/PhotoSession.h"
#include "App/Preferences.h"
#include "App/PreviewLoader.h"
#include "App/PreviewRenderQueue.h"
#include "Persistence/PresetLibrary.h"
#include "Shared/UserFacingError.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>

#include <deque>
#include <functional>
#include <stop_token>

namespace ferrow {

class ConfirmSheet;
class ExportOptionsSheet;
struct Framing;
class InspectorView;
class MainToolBar;
class PhotoSidebar;
class PresetManagerView;
class PreviewPane;
class SettingsView;
class WindowActions;
class WindowColumns;

/// What the window asks of the desktop, replaceable in tests.
struct WindowServices {
    FilePanels panels;
    std::function<void(const std::vector<FileUrl>&)> showItems;
    std::function<void(const std::vector<FileUrl>&)> openFolders;
    std::function<void(const QString& title, const QString& body)> notify;
    bool isSandboxed = false;

    [[nodiscard]] static WindowServices system();
};

/// The main window: owns the models, lays out the views, and turns commands into calls on the models with the panels,
/// questions and alerts that they need. Closing it stops an import or export; finished files stay.
class ContentView : public QWidget {
    Q_OBJECT

public:
    explicit ContentView(Preferences& preferences, WindowServices services = WindowServices::system());
    ~ContentView() override;

    void importRoots(const std::vector<FileUrl>& urls);

    [[nodiscard]] PhotoSession& session() { return session_; }
    [[nodiscard]] ExportSession& exportSession() { return exportSession_; }
    [[nodiscard]] PresetLibrary& presetLibrary() { return presetLibrary_; }
    [[nodiscard]] EditHistory& history() { return history_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildViews();
    void connectActions();
    void connectModels();
    void updateActions();

    void choosePhotos();
    void chooseFolder();
    void loadSelectedPreview();
    void importLogo();
    /// Where it was asked for, be another photo selected by now.
    void useLogo(const LogoAssetReference& asset, const Framing& framing);
    void clearAll();

    void showExportOptions();
    void chooseExportFolder();
    void startExport();
    [[nodiscard]] bool mayWriteBesideSources();
    void confirmReplacement();
    void runExport(ExportRequest request);
    void cancelExport();
    void showReport();
    void finishExportReport();
    void notifyOfReport();
    void stopAllAccess();

    void showPresets();
    void saveCurrentPreset();
    void applyPreset(const QUuid& id);
    void renamePreset(const QUuid& id);
    void duplicatePreset(const QUuid& id);
    void deletePreset(const QUuid& id);
    void requestPresetName(const QString& title, const QString& prompt, const QString& defaultValue,
                           const std::function<void(const QString&)>& named);
    /// Does it, and presents what it throws under `failureTitle`.
    void attempt(const QString& failureTitle, const std::function<void()>& operation);
    [[nodiscard]] const PhotoPreset* preset(const QUuid& id) const;

    void present(const QString& title, const QString& message);
    void presentNext();

    void showSettings();
    void showShortcuts();
    void setComparing(bool comparing);
    void moveToArea(int direction);
    [[nodiscard]] bool handleDrag(QEvent* event);
    [[nodiscard]] bool handleCompareKey(const QEvent& event);
    [[nodiscard]] bool acceptsPhotos() const;

    Preferences& preferences_;
    WindowServices services_;
    PhotoSession session_;
    PreviewLoader previewLoader_;
    PreviewRenderQueue renderQueue_;
    ExportSession exportSession_;
    PresetLibrary presetLibrary_;
    LogoImporter logoImporter_;
    EditHistory history_;

    WindowActions* actions_ = nullptr;
    MainToolBar* toolBar_ = nullptr;
    PhotoSidebar* sidebar_ = nullptr;
    PreviewPane* preview_ = nullptr;
    InspectorView* inspector_ = nullptr;
    WindowColumns* columns_ = nullptr;
    QPointer<ExportOptionsSheet> exportOptions_;
    QPointer<PresetManagerView> presets_;
    QPointer<SettingsView> settings_;
    QPointer<ConfirmSheet> alert_;
    std::deque<PresentedError> errors_; ///< Still to be shown, one at a time.

    std::stop_source previewLoad_;
    QElapsedTimer exportTime_;
};

} // namespace ferrow
