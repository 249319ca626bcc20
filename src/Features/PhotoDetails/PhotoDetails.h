// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Session/EditHistory.h"
#include "Session/PhotoSession.h"

#include <QPointer>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QPushButton;

namespace ferrow {

class CorrectionField;
class FormRow;

/// What was read of the selected photo, each value to be corrected for captions. A card over the inspector that is in
/// nobody's way: it stays while photos are looked through and shows the selected one, until it is closed, no photo is
/// selected, or the focus goes to what lies under it.
class PhotoDetails : public QWidget {
    Q_OBJECT

public:
    /// Lives in the window of `pane`, over it. The models must outlive it.
    PhotoDetails(PhotoSession& session, EditHistory& history, QWidget* pane);

    /// Shows the card with the focus in it, or closes it.
    void toggle();
    void open();
    /// Gives back the focus where it had it.
    void dismiss();
    /// While an export runs values can be read and not changed.
    void setLocked(bool locked);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Row {
        MetadataField field = MetadataField::lens;
        CorrectionField* value = nullptr;
        FormRow* row = nullptr;
    };

    QWidget* buildHead();
    QWidget* buildRows();
    QWidget* buildFoot();
    void place();
    void refresh();
    void refreshRow(const Row& row, const ImportedPhoto& photo);
    void refreshFoot(const ImportedPhoto& photo);
    void correct(const Row& row, const QString& text);
    void useForAll();

    PhotoSession& session_;
    EditHistory& history_;
    QPointer<QWidget> pane_;
    QWidget* shadow_ = nullptr;
    QWidget* head_ = nullptr;
    QLabel* thumbnail_ = nullptr;
    QLabel* name_ = nullptr;
    QLabel* size_ = nullptr;
    QWidget* page_ = nullptr;
    QWidget* foot_ = nullptr;
    QWidget* verbs_ = nullptr;
    QPushButton* useForAll_ = nullptr;
    QLabel* note_ = nullptr;
    std::vector<Row> rows_;
    std::optional<FileUrl> shownPhoto_;
    QPointer<QWidget> returnFocus_;
};

} // namespace ferrow
