// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportCheck.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"
#include "Session/Preferences.h"
#include "Widgets/Sheet.h"

#include <QTimer>

#include <functional>

class QComboBox;
class QLineEdit;

namespace ferrow {

class ElidedLabel;
class ExportCheckList;
class FolderDisplay;
class FormRow;
class NumberField;
class SegmentedControl;
class SizeChoice;
class SliderField;
class ToggleSwitch;

/// How and whereto the batch is exported, with a check that runs while the sheet is open. Edits go into the export
/// session at once. The sheet starts nothing and asks nothing: the window does, and closes it when the export starts.
class ExportOptionsSheet : public Sheet {
    Q_OBJECT

public:
    /// The models must outlive it.
    ExportOptionsSheet(PhotoSession& session, ExportSession& exportSession, Preferences& preferences, QWidget* window);

    /// Begins the check. With the focus on the main button, or on what chooses a folder while there is none.
    void open();
    /// What was missing has been chosen: the focus goes on to the main button, which can be pressed while that is
    /// checked.
    void goOnToStart();

signals:
    /// The main button was pressed and the check found nothing that stops the export.
    void startRequested();
    void chooseFolderRequested();
    /// The photos that a finding is about are to be looked through.
    void showPhotosRequested(const ferrow::ExportFinding& finding);

private:
    void buildForm(QVBoxLayout& form);
    void addFormat(QVBoxLayout& form);
    void addSize(QVBoxLayout& form);
    void addDestination(QVBoxLayout& form);
    void addFilename(QVBoxLayout& form);
    void addCollisionRule(QVBoxLayout& form);
    void addLastRow(QVBoxLayout& form);
    void addWrittenCheck(QVBoxLayout& form);
    void buildCheck(QVBoxLayout& page);
    void buildFoot();
    void connectModels();

    void editSettings(const std::function<void(ExportSettings&)>& edit);
    void editConfiguration(const std::function<void(BatchExportConfiguration&)>& edit);
    void insertPlaceholder(const QString& placeholder);

    void showSettings();
    void showConfiguration();
    void showPhotos();
    void showExample();
    void showFindings();
    void remedy(ExportFinding::Remedy remedy);
    /// The findings' buttons are made after those of the foot, but come before them.
    void putFindingsInTabOrder();
    void updateMainButton();

    void checkSoon();
    void check();
    [[nodiscard]] bool isCheckOutstanding() const;
    void startWhenChecked();

    PhotoSession& session_;
    ExportSession& exportSession_;
    Preferences& preferences_;
    ExportCheck check_;
    QTimer beforeCheck_;    ///< Gathers the changes of a burst of typing.
    QTimer slowCheck_;      ///< Only a check that takes its time says so: lines that flash by tell nothing.
    OutputSize sizeBefore_; ///< Set before the photos' data was to be kept.
    bool startsWhenChecked_ = false;
    bool errorsAreMended_ =
        false; ///< What the last check found has been put right, as far as can be told before the next.

    SegmentedControl* format_ = nullptr;
    SegmentedControl* keepsData_ = nullptr;
    SliderField* quality_ = nullptr;
    FormRow* qualityRow_ = nullptr;
    SegmentedControl* depth_ = nullptr;
    FormRow* depthRow_ = nullptr; ///< In the place of the one for quality.
    SizeChoice* size_ = nullptr;
    SegmentedControl* destination_ = nullptr;
    FolderDisplay* folder_ = nullptr;
    QPushButton* chooseFolder_ = nullptr;
    FormRow* folderRow_ = nullptr;
    QLineEdit* subfolder_ = nullptr;
    FormRow* subfolderRow_ = nullptr;
    QLineEdit* template_ = nullptr;
    ElidedLabel* example_ = nullptr;
    QComboBox* collisionRule_ = nullptr;
    FormRow* collisionRow_ = nullptr;
    NumberField* concurrency_ = nullptr;
    ToggleSwitch* opensFolders_ = nullptr;
    ToggleSwitch* checksWritten_ = nullptr;
    ExportCheckList* findings_ = nullptr;
};

} // namespace ferrow
