// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <array>

class QMenu;
class QPushButton;

namespace ferrow {

class ExpanderButton;
class MenuButton;
class SegmentedControl;
class WindowActions;

/// Verbs on the left, the view in the middle, the result on the right. Where they don't fit, labels and then buttons
/// are hidden.
class MainToolBar : public QWidget {
    Q_OBJECT

public:
    explicit MainToolBar(WindowActions& actions, QWidget* parent = nullptr);

    /// The zoom as the preview has it; 0 while nothing is shown.
    void setZoom(double zoom, bool isFit);
    void setComparable(bool comparable);
    /// Which of the two views is shown. With the sheet, in and out change the size of its cells, and nothing else of
    /// the single photo's view can be used.
    void setSheetShown(bool isShown);
    /// The button that shows and hides it tells this to assistive technology.
    void setSidebarShown(bool shown);
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
    void buildViews(QWidget* host);
    QWidget* buildResult();
    QMenu* zoomMenu();
    QMenu* mainMenu();
    void giveWay(int steps);
    void measure();
    void placeView();
    [[nodiscard]] std::array<QWidget*, 3> groups() const { return {verbs_, view_, result_}; }

    WindowActions& actions_;
    std::array<int, 8> needed_{}; ///< Width of the bar by how many of the steps that hide something it has taken.
    int waysGiven_ = 0;
    bool isSheetShown_ = false;
    SegmentedControl* views_ = nullptr;
    QWidget* viewsDivider_ = nullptr;
    ExpanderButton* sidebar_ = nullptr;
    MenuButton* add_ = nullptr;
    QPushButton* presets_ = nullptr;
    QPushButton* zoom_ = nullptr;
    QPushButton* zoomOut_ = nullptr;
    QPushButton* zoomIn_ = nullptr;
    QPushButton* fit_ = nullptr;
    QPushButton* actualPixels_ = nullptr;
    QPushButton* compare_ = nullptr;
    QPushButton* export_ = nullptr;
    QWidget* verbs_ = nullptr;
    QWidget* view_ = nullptr;
    QWidget* result_ = nullptr;
};

} // namespace ferrow
