// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetLibrary.h"
#include "Widgets/Sheet.h"

#include <QUuid>

#include <functional>

namespace ferrow {

class MessageLine;
class PresetList;

/// The sheet of presets. It follows the library and owns the selection alone: names are asked for, questions put and
/// failures told by whoever gives the actions.
class PresetManagerView : public Sheet {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> saveCurrent;
        /// Saves the starter frames; offered while there is no preset.
        std::function<void()> addStarters;
        std::function<void(const QUuid&)> apply;
        /// Typed in the row itself; never blank.
        std::function<void(const QUuid&, const QString& newName)> renameInPlace;
        std::function<void(const QUuid&)> rename, duplicate, remove;
    };

    /// `library` must outlive it.
    PresetManagerView(PresetLibrary& library, Actions actions, QWidget* window);

    /// With the focus on the list, or on the button that saves while there is no list.
    void open();

private:
    void buildBody();
    QWidget* makeEmptyState();
    QWidget* makeRowActions();
    void buildFoot();
    void callForSelected(const std::function<void(const QUuid&)>& action);
    void showLibrary();
    void updateActions();

    PresetLibrary& library_;
    Actions actions_;
    MessageLine* warning_ = nullptr;
    QWidget* empty_ = nullptr;
    PresetList* list_ = nullptr;
    QWidget* rowActions_ = nullptr;
    QPushButton* save_ = nullptr;
};

} // namespace ferrow
