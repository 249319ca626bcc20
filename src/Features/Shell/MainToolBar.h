// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QMenu;
class QPushButton;

namespace ferrow {

class MenuButton;
class WindowActions;

/// Verbs on the left, the view in the middle, the result on the right.
class MainToolBar : public QWidget {
    Q_OBJECT

public:
    explicit MainToolBar(WindowActions& actions, QWidget* parent = nullptr);

    /// The zoom as the preview has it; 0 while nothing is shown.
    void setZoom(double zoom, bool isFit);
    void setComparable(bool comparable);
    /// While photos are being added or exported.
    void setAddEnabled(bool enabled);

signals:
    void zoomChosen(double zoom);
    /// The bare photo is wanted while the button is held.
    void compareHeld(bool held);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* buildVerbs();
    QWidget* buildView();
    QWidget* buildResult();
    QMenu* zoomMenu();
    QMenu* mainMenu();
    void placeView();

    WindowActions& actions_;
    MenuButton* add_ = nullptr;
    QPushButton* zoom_ = nullptr;
    QPushButton* zoomOut_ = nullptr;
    QPushButton* zoomIn_ = nullptr;
    QPushButton* compare_ = nullptr;
    QWidget* verbs_ = nullptr;
    QWidget* view_ = nullptr;
    QWidget* result_ = nullptr;
};

} // namespace ferrow
