// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <cstddef>

class QLabel;
class QPushButton;

namespace ferrow {

class DropArea;
class EditHistory;
class PhotoSession;

/// What the pane shows while there are no photos: what to do, two ways of doing it, and frames to begin with. While the
/// first photos are read: how far that is, and a way to stop.
class EmptyPreview : public QWidget {
    Q_OBJECT

public:
    EmptyPreview(PhotoSession& session, EditHistory& history, QWidget* parent = nullptr);

    /// Whether a drop would be taken now.
    void setDropTarget(bool isDropTarget);

signals:
    void addPhotosRequested();
    void addFolderRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildDropArea();
    [[nodiscard]] QWidget* makeStarters(EditHistory& history);
    void followImport();
    void showProgress(std::size_t read, std::size_t total);

    PhotoSession& session_;
    DropArea* dropArea_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* sentence_ = nullptr;
    QPushButton* addPhotos_ = nullptr;
    QPushButton* addFolder_ = nullptr;
    QPushButton* stop_ = nullptr;
    QWidget* starters_ = nullptr;
};

} // namespace ferrow
