// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QKeySequence>
#include <QObject>

#include <vector>

class QAbstractButton;
class QUndoStack;
class QWidget;

namespace ferrow {

/// One line of the list of keyboard shortcuts.
struct ListedShortcut {
    QString group;
    QString text;
    QList<QKeySequence> keys;
};

/// The window's commands, each with its text and keys in one place: toolbar, menu and the list of shortcuts show them,
/// the window connects what they do.
class WindowActions : public QObject {
    Q_OBJECT

public:
    /// The actions are added to `window`, so that their keys work everywhere in it.
    WindowActions(QWidget& window, QUndoStack& stack);

    QAction* addPhotos = nullptr;
    QAction* addFolder = nullptr;
    QAction* clearAll = nullptr;
    QAction* exportBatch = nullptr;
    QAction* quit = nullptr;
    QAction* undo = nullptr;
    QAction* redo = nullptr;
    QAction* copyFraming = nullptr;
    QAction* invertIncluded = nullptr;
    QAction* search = nullptr;
    QAction* pasteFraming = nullptr;
    QAction* photoDetails = nullptr;
    QAction* showInFolder = nullptr;
    QAction* presets = nullptr;
    QAction* settings = nullptr;
    QAction* zoomIn = nullptr;
    QAction* zoomOut = nullptr;
    QAction* zoomToFit = nullptr;
    QAction* zoomToActualPixels = nullptr;
    QAction* toggleSidebar = nullptr;
    QAction* contactSheet = nullptr;
    QAction* previousCaption = nullptr;
    QAction* nextCaption = nullptr;
    QAction* moveCaptionLeft = nullptr;
    QAction* moveCaptionRight = nullptr;
    QAction* nextArea = nullptr;
    QAction* previousArea = nullptr;
    QAction* shortcuts = nullptr;

    /// Those with keys, and the keys that single views handle themselves.
    [[nodiscard]] std::vector<ListedShortcut> listedShortcuts() const;

private:
    QAction* add(QWidget& window, const QString& group, const QString& text, const QList<QKeySequence>& keys);

    std::vector<std::pair<QString, QAction*>> listed_; ///< Group and action, in the order they are shown.
};

/// A press triggers the action; enabled state follows it, and the tooltip names it with its keys. The button keeps its
/// own text and icon.
void bindButton(QAbstractButton* button, QAction* action, const QString& help = QString());

} // namespace ferrow
