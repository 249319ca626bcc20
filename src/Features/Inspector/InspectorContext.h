// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/EditHistory.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

class QWidget;

namespace ferrow {

class ScreenColorPicker;

/// What the sections of the inspector share; all of it outlives them.
struct InspectorContext {
    PhotoSession& session;
    EditHistory& history;
    ExportSession& exportSession;
    ScreenColorPicker& screenColorPicker;
    QWidget* pane = nullptr; ///< What popovers lie over, so that the photo stays in sight.

    [[nodiscard]] const RenderRecipe& recipe() const { return session.activeRecipe(); }
};

/// Sends what a control tells of its gestures and values to the active recipe: `apply` is called with the recipe and
/// the value. `step` names the edit for undo.
template <typename Source, typename Value, typename Apply>
void bindEdits(Source* source, void (Source::*edited)(Value), EditHistory& history, const QString& step, Apply apply)
{
    QObject::connect(source, &Source::gestureStarted, &history, &EditHistory::beginGesture);
    QObject::connect(source, edited, &history, [&history, step, apply](const auto& value) {
        history.editRecipe(step, [&](RenderRecipe& recipe) { apply(recipe, value); });
    });
    QObject::connect(source, &Source::gestureEnded, &history, &EditHistory::endGesture);
}

} // namespace ferrow
