// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/WindowParts/MainToolBar.h"

#include "Features/WindowParts/WindowActions.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/FocusRing.h"
#include "Widgets/Fold.h"
#include "Widgets/HairLine.h"
#include "Widgets/Icons.h"
#include "Widgets/MenuButton.h"
#include "Widgets/SegmentedControl.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int zoomWidth = 56;
constexpr int dividerHeight = 20;
/// Below this width the views are told apart by icons, also where there is room for their names.
constexpr int fullWidth = 1'200;
/// Below this one minus and plus are hidden likewise.
constexpr int zoomButtonsWidth = 1'040;

QPushButton* iconButton(IconName name, QAction* action, const QString& objectName)
{
    QPushButton* button = makeIconButton(name, action->text().remove(u'…'));
    button->setObjectName(objectName);
    bindButton(button, action);
    return button;
}

HairLine* divider()
{
    auto* line = new HairLine(Qt::Vertical);
    line->setFixedHeight(dividerHeight);
    return line;
}

/// Whoever opens a menu by a key goes on with keys.
void popUp(QMenu* menu, const QPoint& place)
{
    menu->popup(place);
    const QList<QAction*> actions = menu->actions();
    const auto first = std::ranges::find_if(actions, &QAction::isEnabled);
    if (FocusRing::isKeyboardFocus() && first != actions.end())
        menu->setActiveAction(*first);
}

QHBoxLayout* rowOf(QWidget* host)
{
    auto* row = new QHBoxLayout(host);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(Space::iconEdge);
    return row;
}

} // namespace

MainToolBar::MainToolBar(WindowActions& actions, QWidget* parent) : QWidget(parent), actions_(actions)
{
    setObjectName(QStringLiteral("mainToolBar"));
    setGround(this, &ThemeColors::window);
    verbs_ = buildVerbs();
    view_ = buildView();
    result_ = buildResult();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Space::row, 0, Space::row, 0);
    row->addWidget(verbs_);
    // The middle group lies over the free space, centered in the window and not between groups of unequal width. The
    // Tab key goes through the groups in the order in which they get their parent.
    view_->setParent(this);
    row->addStretch();
    row->addWidget(result_);
    measure();
    connect(&Theme::current(), &Theme::changed, this, [this] {
        measure();
        placeView();
    });
}

QWidget* MainToolBar::buildVerbs()
{
    auto* host = new QWidget;
    QHBoxLayout* row = rowOf(host);
    sidebar_ = new ExpanderButton(icon(IconName::sidebar), QString());
    sidebar_->setObjectName(QStringLiteral("sidebarButton"));
    setButtonRole(sidebar_, ButtonRole::flat);
    bindButton(sidebar_, actions_.toggleSidebar);
    row->addWidget(sidebar_);
    row->addSpacing(Space::iconEdge);

    add_ = new MenuButton(IconName::add, QStringLiteral("Add"));
    add_->setObjectName(QStringLiteral("addPhotosMenu"));
    const QString help = QStringLiteral("Add individual photos or recursively add a folder");
    add_->setToolTip(help);
    add_->setAccessibleDescription(help);
    auto* menu = new QMenu(add_);
    menu->setToolTipsVisible(true);
    menu->addAction(actions_.addPhotos);
    menu->addAction(actions_.addFolder);
    actions_.addPhotos->setToolTip(QStringLiteral("Add individual photos"));
    actions_.addFolder->setToolTip(QStringLiteral("Recursively add a folder"));
    add_->setMenu(menu);
    row->addWidget(add_);
    row->addSpacing(Space::iconEdge);

    presets_ = new QPushButton(icon(IconName::presets), QStringLiteral("Presets"));
    presets_->setObjectName(QStringLiteral("presetsButton"));
    presets_->setAccessibleName(QStringLiteral("Presets"));
    bindButton(presets_, actions_.presets, QStringLiteral("Save and apply reusable Ferrow settings"));
    row->addWidget(presets_);
    row->addSpacing(Space::group);
    row->addWidget(divider());
    row->addSpacing(Space::group);
    row->addWidget(iconButton(IconName::undo, actions_.undo, QStringLiteral("undoButton")));
    row->addWidget(iconButton(IconName::redo, actions_.redo, QStringLiteral("redoButton")));
    return host;
}

QWidget* MainToolBar::buildView()
{
    auto* host = new QWidget;
    QHBoxLayout* row = rowOf(host);
    buildViews(host);
    zoomOut_ = iconButton(IconName::zoomOut, actions_.zoomOut, QStringLiteral("zoomOutButton"));
    zoom_ = new QPushButton;
    zoom_->setObjectName(QStringLiteral("zoomButton"));
    zoom_->setFixedWidth(Theme::current().scaled(zoomWidth));
    setButtonRole(zoom_, ButtonRole::flat);
    connect(zoom_, &QPushButton::clicked, this,
            [this] { popUp(zoomMenu(), zoom_->mapToGlobal(QPoint(0, zoom_->height() + Space::rowGap))); });
    zoomIn_ = iconButton(IconName::zoomIn, actions_.zoomIn, QStringLiteral("zoomInButton"));
    compare_ = makeIconButton(IconName::compare, QStringLiteral("Hold to Compare"));
    compare_->setObjectName(QStringLiteral("compareButton"));
    compare_->setToolTip(QStringLiteral("Hold to see the bare photo (\\)"));
    connect(compare_, &QPushButton::pressed, this, [this] { emit compareHeld(true); });
    connect(compare_, &QPushButton::released, this, [this] { emit compareHeld(false); });

    for (QWidget* button :
         {static_cast<QWidget*>(zoomOut_), static_cast<QWidget*>(zoom_), static_cast<QWidget*>(zoomIn_)})
        row->addWidget(button);
    row->addSpacing(Space::group);
    fit_ = iconButton(IconName::zoomFit, actions_.zoomToFit, QStringLiteral("zoomFitButton"));
    actualPixels_ = iconButton(IconName::zoom100, actions_.zoomToActualPixels, QStringLiteral("zoom100Button"));
    row->addWidget(fit_);
    row->addWidget(actualPixels_);
    row->addSpacing(Space::group);
    row->addWidget(divider());
    row->addSpacing(Space::group);
    row->addWidget(compare_);
    return host;
}

void MainToolBar::buildViews(QWidget* host)
{
    views_ = new SegmentedControl(QStringLiteral("View"), {QStringLiteral("Single"), QStringLiteral("Contact Sheet")});
    views_->setObjectName(QStringLiteral("viewSegments"));
    views_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    views_->setToolTip(QStringLiteral("%1 (%2)").arg(
        actions_.contactSheet->text(), actions_.contactSheet->shortcut().toString(QKeySequence::NativeText)));
    connect(views_, &SegmentedControl::chosen, actions_.contactSheet, &QAction::trigger);
    views_->setIcons({IconName::photo, IconName::tilesSmall});
    host->layout()->addWidget(views_);
    auto* surroundings = new QWidget;
    auto* around = new QHBoxLayout(surroundings);
    around->setContentsMargins(Space::group, 0, Space::group, 0);
    around->addWidget(divider());
    host->layout()->addWidget(surroundings);
    viewsDivider_ = surroundings;
}

QWidget* MainToolBar::buildResult()
{
    auto* host = new QWidget;
    QHBoxLayout* row = rowOf(host);
    auto* more = makeIconButton(IconName::more, QStringLiteral("Main Menu"));
    more->setObjectName(QStringLiteral("mainMenuButton"));
    more->setShortcut(Qt::Key_F10);
    more->setToolTip(QStringLiteral("Main Menu (F10)"));
    connect(more, &QPushButton::clicked, this, [this, more] {
        QMenu* menu = mainMenu();
        const QPoint corner = more->mapToGlobal(QPoint(more->width(), more->height() + Space::rowGap));
        popUp(menu, corner - QPoint(menu->sizeHint().width(), 0));
    });
    row->addWidget(more);
    row->addWidget(iconButton(IconName::settings, actions_.settings, QStringLiteral("settingsButton")));
    row->addSpacing(Space::group);
    export_ = new QPushButton(icon(IconName::exportPhotos, &ThemeColors::onInk), QStringLiteral("Export Batch"));
    export_->setObjectName(QStringLiteral("exportButton"));
    export_->setAccessibleName(QStringLiteral("Export Batch"));
    setButtonRole(export_, ButtonRole::main);
    bindButton(export_, actions_.exportBatch,
               QStringLiteral("Review export settings and start exporting included photos"));
    row->addWidget(export_);
    return host;
}

QMenu* MainToolBar::zoomMenu()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(actions_.zoomToFit);
    menu->addSeparator();
    for (const int percent : {25, 50, 100, 200, 400})
        menu->addAction(QStringLiteral("%1%").arg(percent), this,
                        [this, percent] { emit zoomChosen(percent / 100.0); });
    return menu;
}

QMenu* MainToolBar::mainMenu()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* action : {actions_.addPhotos,
                            actions_.addFolder,
                            actions_.search,
                            actions_.invertIncluded,
                            actions_.photoDetails,
                            actions_.showInFolder,
                            actions_.clearAll,
                            actions_.exportBatch,
                            static_cast<QAction*>(nullptr),
                            actions_.undo,
                            actions_.redo,
                            actions_.copyFraming,
                            actions_.pasteFraming,
                            actions_.presets,
                            static_cast<QAction*>(nullptr),
                            actions_.zoomIn,
                            actions_.zoomOut,
                            actions_.zoomToFit,
                            actions_.zoomToActualPixels,
                            actions_.contactSheet,
                            actions_.toggleSidebar,
                            static_cast<QAction*>(nullptr),
                            actions_.settings,
                            actions_.shortcuts,
                            actions_.quit})
        if (action)
            menu->addAction(action);
        else
            menu->addSeparator();
    return menu;
}

void MainToolBar::setZoom(double zoom, bool isFit)
{
    const bool shown = zoom > 0 && !isSheetShown_;
    zoom_->setText(shown ? QStringLiteral("%1%").arg(qRound(zoom * 100)) : QStringLiteral("–"));
    zoom_->setToolTip(QStringLiteral("Zoom"));
    zoom_->setAccessibleName(shown ? QStringLiteral("Zoom, %1").arg(zoom_->text()) : QStringLiteral("Zoom"));
    zoom_->setEnabled(shown);
    for (QAction* action : {actions_.zoomIn, actions_.zoomOut, actions_.zoomToFit, actions_.zoomToActualPixels})
        action->setEnabled(shown);
    if (isSheetShown_)
        for (QAction* action : {actions_.zoomIn, actions_.zoomOut})
            action->setEnabled(true);
    actions_.zoomToFit->setChecked(shown && isFit);
    actions_.zoomToActualPixels->setChecked(shown && qRound(zoom * 100) == 100);
}

void MainToolBar::setComparable(bool comparable)
{
    compare_->setEnabled(comparable && !isSheetShown_);
}

void MainToolBar::setSheetShown(bool isShown)
{
    isSheetShown_ = isShown;
    actions_.contactSheet->setChecked(isShown);
    views_->setCurrentIndex(isShown ? 1 : 0);
}

void MainToolBar::setSidebarShown(bool shown)
{
    sidebar_->setOpen(shown);
}

void MainToolBar::setAddEnabled(bool enabled)
{
    add_->setEnabled(enabled);
}

/// Hides the first so many parts, the least missed first: keys, wheel, menus and the list of percentages do the same.
void MainToolBar::giveWay(int steps)
{
    waysGiven_ = steps;
    views_->setIconsShown(steps >= 1);
    zoomOut_->setVisible(steps < 2);
    zoomIn_->setVisible(steps < 2);
    presets_->setText(steps < 3 ? QStringLiteral("Presets") : QString());
    add_->setText(steps < 4 ? QStringLiteral("Add") : QString());
    fit_->setVisible(steps < 5);
    actualPixels_->setVisible(steps < 5);
    export_->setText(steps < 6 ? QStringLiteral("Export Batch") : QString());
    views_->setVisible(steps < 7);
    viewsDivider_->setVisible(steps < 7);
}

/// What each step needs, so that a window being resized only has to look it up.
void MainToolBar::measure()
{
    setFixedHeight(Theme::current().scaled(Measure::toolBar));
    for (int steps = 0; steps < int(needed_.size()); ++steps) {
        giveWay(steps);
        int& needed = needed_[std::size_t(steps)];
        needed = (int(groups().size()) + 1) * Space::row;
        for (const QWidget* group : groups())
            needed += group->sizeHint().width();
    }
    needed_[0] = std::max(needed_[0], fullWidth);
    needed_[1] = std::max(needed_[1], zoomButtonsWidth);
}

void MainToolBar::placeView()
{
    const auto fitting = std::ranges::find_if(needed_, [this](int needed) { return needed <= width(); });
    const int steps = std::min(int(fitting - needed_.begin()), int(needed_.size()) - 1);
    if (steps != waysGiven_) {
        giveWay(steps);
        // Now, not with the next round of events: nothing is to flash over its neighbor meanwhile.
        for (QWidget* group : groups())
            group->layout()->activate();
        layout()->activate();
    }
    const QSize size = view_->sizeHint();
    const int centered = (width() - size.width()) / 2;
    const int least = Space::row + verbs_->sizeHint().width() + Space::row;
    const int most = width() - Space::row - result_->sizeHint().width() - Space::row - size.width();
    view_->setGeometry(std::max(least, std::min(centered, most)), 0, size.width(), height());
}

void MainToolBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeView();
}

} // namespace ferrow
