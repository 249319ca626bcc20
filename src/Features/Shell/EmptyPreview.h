// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QPushButton;

namespace ferrow {

/// What the pane shows while there are no photos: what to do, and two ways of doing it.
class EmptyPreview : public QWidget {
    Q_OBJECT

public:
    explicit EmptyPreview(QWidget* parent = nullptr);

signals:
    void addPhotosRequested();
    void addFolderRequested();

protected:
    void showEvent(QShowEvent* event) override;

private:
    QPushButton* addPhotos_ = nullptr;
};

} // namespace ferrow
