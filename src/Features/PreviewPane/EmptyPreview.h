// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <cstddef>

class QLabel;
class QPushButton;

namespace ferrow {

class PhotoSession;

/// What the pane shows while there are no photos: what to do, and two ways of doing it. While the first ones are read:
/// how far that is, and a way to stop.
class EmptyPreview : public QWidget {
    Q_OBJECT

public:
    explicit EmptyPreview(PhotoSession& session, QWidget* parent = nullptr);

signals:
    void addPhotosRequested();
    void addFolderRequested();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void followImport();
    void showProgress(std::size_t read, std::size_t total);

    PhotoSession& session_;
    QLabel* title_ = nullptr;
    QLabel* sentence_ = nullptr;
    QPushButton* addPhotos_ = nullptr;
    QPushButton* addFolder_ = nullptr;
    QPushButton* stop_ = nullptr;
};

} // namespace ferrow
