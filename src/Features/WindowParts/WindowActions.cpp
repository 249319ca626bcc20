// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/WindowParts/WindowActions.h"

#include <QAbstractButton>
#include <QUndoStack>
#include <QWidget>

namespace ferrow {

WindowActions::WindowActions(QWidget& window, QUndoStack& stack) : QObject(&window)
{
    const QString photos = QStringLiteral("Photos");
    addPhotos = add(window, photos, QStringLiteral("Add Photos…"), {QKeySequence::Open});
    addFolder = add(window, photos, QStringLiteral("Add Folder…"), {Qt::CTRL | Qt::SHIFT | Qt::Key_O});
    photoDetails = add(window, photos, QStringLiteral("Photo Details…"), {Qt::CTRL | Qt::Key_I});
    showInFolder = add(window, photos, QStringLiteral("Show in Folder"), {Qt::CTRL | Qt::ALT | Qt::Key_O});
    search = add(window, photos, QStringLiteral("Search"), {Qt::CTRL | Qt::Key_F});
    invertIncluded = add(window, photos, QStringLiteral("Invert Included Photos"), {Qt::CTRL | Qt::SHIFT | Qt::Key_I});
    clearAll = add(window, photos, QStringLiteral("Clear All Photos"), {});
    exportBatch = add(window, photos, QStringLiteral("Export Batch…"), {Qt::CTRL | Qt::Key_E});

    const QString edit = QStringLiteral("Edit");
    undo = stack.createUndoAction(&window, QStringLiteral("Undo"));
    redo = stack.createRedoAction(&window, QStringLiteral("Redo"));
    undo->setShortcut(Qt::CTRL | Qt::Key_Z);
    redo->setShortcuts({Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y});
    for (QAction* action : {undo, redo}) {
        window.addAction(action);
        listed_.emplace_back(edit, action);
    }
    copyFraming = add(window, edit, QStringLiteral("Copy Framing"), {Qt::CTRL | Qt::SHIFT | Qt::Key_C});
    pasteFraming = add(window, edit, QStringLiteral("Paste Framing"), {Qt::CTRL | Qt::SHIFT | Qt::Key_V});
    presets = add(window, edit, QStringLiteral("Presets…"), {Qt::CTRL | Qt::SHIFT | Qt::Key_P});
    settings = add(window, edit, QStringLiteral("Settings…"), {Qt::CTRL | Qt::Key_Comma});

    const QString view = QStringLiteral("View");
    zoomIn = add(window, view, QStringLiteral("Zoom In"), {Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal});
    zoomOut = add(window, view, QStringLiteral("Zoom Out"), {Qt::CTRL | Qt::Key_Minus});
    zoomToFit = add(window, view, QStringLiteral("Zoom to Fit"), {Qt::CTRL | Qt::Key_0});
    zoomToActualPixels = add(window, view, QStringLiteral("Zoom to 100 %"), {Qt::CTRL | Qt::Key_1});
    contactSheet = add(window, view, QStringLiteral("Contact Sheet"), {Qt::CTRL | Qt::SHIFT | Qt::Key_G});
    toggleSidebar = add(window, view, QStringLiteral("Show or Hide Photos"), {Qt::Key_F9});
    nextArea = add(window, view, QStringLiteral("Next Part of the Window"), {Qt::Key_F6});
    previousArea = add(window, view, QStringLiteral("Previous Part of the Window"), {Qt::SHIFT | Qt::Key_F6});

    const QString caption = QStringLiteral("Caption");
    previousCaption = add(window, caption, QStringLiteral("Previous Caption"), {Qt::CTRL | Qt::Key_PageUp});
    nextCaption = add(window, caption, QStringLiteral("Next Caption"), {Qt::CTRL | Qt::Key_PageDown});
    moveCaptionLeft =
        add(window, caption, QStringLiteral("Move Caption Left"), {Qt::CTRL | Qt::SHIFT | Qt::Key_PageUp});
    moveCaptionRight =
        add(window, caption, QStringLiteral("Move Caption Right"), {Qt::CTRL | Qt::SHIFT | Qt::Key_PageDown});

    const QString program = QStringLiteral("Ferrow");
    shortcuts = add(window, program, QStringLiteral("Keyboard Shortcuts"),
                    {Qt::CTRL | Qt::Key_Question, Qt::CTRL | Qt::Key_Slash, Qt::Key_F1});
    quit = add(window, program, QStringLiteral("Quit"), {Qt::CTRL | Qt::Key_Q, Qt::CTRL | Qt::Key_W});
    for (QAction* toggle : {zoomToFit, zoomToActualPixels, contactSheet, toggleSidebar})
        toggle->setCheckable(true);
}

QAction* WindowActions::add(QWidget& window, const QString& group, const QString& text, const QList<QKeySequence>& keys)
{
    auto* action = new QAction(text, &window);
    action->setShortcuts(keys);
    window.addAction(action);
    if (!keys.isEmpty())
        listed_.emplace_back(group, action);
    return action;
}

std::vector<ListedShortcut> WindowActions::listedShortcuts() const
{
    std::vector<ListedShortcut> list;
    for (const auto& [group, action] : listed_) {
        // The stack names its next step behind these two words.
        const QString text = action == undo   ? QStringLiteral("Undo")
                             : action == redo ? QStringLiteral("Redo")
                                              : action->text().remove(u'…');
        list.push_back({group, text, action->shortcuts()});
    }
    list.push_back({QStringLiteral("Ferrow"), QStringLiteral("Main menu"), {Qt::Key_F10}});
    const QString photoList = QStringLiteral("Photo list");
    list.push_back({photoList, QStringLiteral("Include or leave out"), {Qt::Key_Space}});
    const QString cullText = QStringLiteral("Leave out, or include, and show the next");
    const QList<QKeySequence> cullKeys{Qt::Key_Minus, Qt::Key_Plus};
    list.push_back({photoList, cullText, cullKeys});
    list.push_back({photoList, QStringLiteral("Remove from the list"), {Qt::Key_Delete}});
    list.push_back({photoList, QStringLiteral("Menu of the photo"), {Qt::Key_Menu}});
    list.push_back({photoList, QStringLiteral("Type a name to find it"), {}});
    const QString preview = QStringLiteral("Preview");
    list.push_back({preview, QStringLiteral("Show the bare photo while held"), {Qt::Key_Backslash}});
    list.push_back({preview, cullText, cullKeys});
    list.push_back({preview, QStringLiteral("Previous or next photo"), {Qt::Key_Left, Qt::Key_Right}});
    const QString sheet = QStringLiteral("Contact sheet");
    list.push_back({sheet, QStringLiteral("Include or leave out"), {Qt::Key_Space}});
    list.push_back({sheet, cullText, cullKeys});
    list.push_back({sheet,
                    QStringLiteral("Select a range to include, leave out or remove"),
                    {Qt::SHIFT | Qt::Key_Left, Qt::SHIFT | Qt::Key_Right}});
    list.push_back({sheet, QStringLiteral("Show the photo alone, and the sheet again"), {Qt::Key_Return}});
    list.push_back({sheet, QStringLiteral("Remove from the list"), {Qt::Key_Delete}});
    list.push_back({sheet, QStringLiteral("Type a name to find it"), {}});
    const QString caption = QStringLiteral("Caption");
    list.push_back({caption, QStringLiteral("Move the chip"), {Qt::ALT | Qt::Key_Left, Qt::ALT | Qt::Key_Right}});
    list.push_back({caption, QStringLiteral("Edit the chip"), {Qt::Key_Return, Qt::Key_F2}});
    list.push_back({caption, QStringLiteral("Remove the chip"), {Qt::Key_Delete}});
    const QString presetList = QStringLiteral("Presets");
    list.push_back({presetList, QStringLiteral("Rename the preset"), {Qt::Key_F2}});
    list.push_back({presetList, QStringLiteral("Duplicate the preset"), {Qt::CTRL | Qt::Key_D}});
    list.push_back({presetList, QStringLiteral("Delete the preset"), {Qt::Key_Delete}});
    return list;
}

void bindButton(QAbstractButton* button, QAction* action, const QString& help)
{
    const auto follow = [button, action, help] {
        button->setEnabled(action->isEnabled());
        const QString what = help.isEmpty() ? action->text().remove(u'…') : help;
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        button->setToolTip(keys.isEmpty() ? what : QStringLiteral("%1 (%2)").arg(what, keys));
        if (button->text().isEmpty())
            button->setAccessibleName(action->text().remove(u'…'));
        if (action->isCheckable()) {
            button->setCheckable(true);
            button->setChecked(action->isChecked());
        }
    };
    follow();
    QObject::connect(action, &QAction::changed, button, follow);
    QObject::connect(button, &QAbstractButton::clicked, action, &QAction::trigger);
}

} // namespace ferrow
