// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/EditRun.h"
#include "Features/Inspector/PositionScene.h"
#include "Widgets/Popover.h"

#include <QImage>

#include <functional>

class QLabel;

namespace ferrow {

class MessageLine;
class PositionPicker;

/// Picks the place of caption or logo on a picture of the framed photo. Applies at once; a run of arrow keys is one
/// gesture.
class PositionPopover : public Popover {
    Q_OBJECT

public:
    using Thumbnail = std::function<QImage(const FileUrl&)>;

    /// `thumbnail` is asked on the main thread when the scene comes to be about another photo.
    PositionPopover(QWidget* opener, const QString& title, const PositionScene& scene, Thumbnail thumbnail);
    ~PositionPopover() override;

    /// What the models say now. Emits nothing.
    void setScene(const PositionScene& scene);
    void present();

signals:
    void gestureStarted();
    void positionEdited(ferrow::CaptionPosition position);
    void gestureEnded();

private:
    void showScene(const PositionScene& scene);

    Thumbnail thumbnail_;
    std::optional<FileUrl> shownPhoto_;
    EditRun run_;
    PositionPicker* picker_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* place_ = nullptr;
    QLabel* others_ = nullptr; ///< Where further captions are.
    MessageLine* warning_ = nullptr;
};

} // namespace ferrow
