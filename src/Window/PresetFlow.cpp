// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/PresetFlow.h"

#include "Features/PresetManager/PresetManagerView.h"
#include "Models/StarterFrames.h"
#include "Persistence/PresetLibrary.h"
#include "Session/EditHistory.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"
#include "Widgets/ConfirmSheet.h"
#include "Window/ErrorAlerts.h"

#include <algorithm>

namespace ferrow {

PresetFlow::PresetFlow(QWidget& window, PresetLibrary& library, const PhotoSession& session,
                       const ExportSession& exportSession, EditHistory& history, ErrorAlerts& alerts)
    : window_(window), library_(library), session_(session), exportSession_(exportSession), history_(history),
      alerts_(alerts)
{
}

void PresetFlow::showPresets()
{
    if (presets_)
        return;
    library_.refresh(); // Another window may have saved some.
    presets_ = new PresetManagerView(library_,
                                     {.saveCurrent = [this] { saveCurrentPreset(); },
                                      .addStarters = [this] { addStarters(); },
                                      .apply = [this](const QUuid& id) { applyPreset(id); },
                                      .renameInPlace =
                                          [this](const QUuid& id, const QString& name) {
                                              alerts_.attempt(QStringLiteral("Couldn’t Rename Preset"),
                                                              [&] { library_.rename(id, name); });
                                          },
                                      .rename = [this](const QUuid& id) { renamePreset(id); },
                                      .duplicate = [this](const QUuid& id) { duplicatePreset(id); },
                                      .remove = [this](const QUuid& id) { deletePreset(id); }},
                                     &window_);
    presets_->setDeletedAfterClose(true);
    presets_->open();
}

const PhotoPreset* PresetFlow::preset(const QUuid& id) const
{
    const auto found = std::ranges::find(library_.presets(), id, &PhotoPreset::id);
    return found == library_.presets().end() ? nullptr : &*found;
}

void PresetFlow::requestPresetName(const QString& title, const QString& prompt, const QString& defaultValue,
                                   const std::function<void(const QString&)>& named)
{
    const Question question{
        .title = title,
        .message = QStringLiteral("Enter a name for this reusable collection of settings."),
        .accept = prompt,
        .leave = QStringLiteral("Cancel"),
        .field = Question::Field{.name = QStringLiteral("Preset name"),
                                 .placeholder = QStringLiteral("Preset name"),
                                 .text = defaultValue},
    };
    ConfirmSheet::ask(&window_, question, this, [named](const Answer& answer) {
        if (answer.accepted)
            named(answer.text);
    });
}

void PresetFlow::saveCurrentPreset()
{
    requestPresetName(QStringLiteral("Save Preset"), QStringLiteral("Save"), {}, [this](const QString& name) {
        alerts_.attempt(QStringLiteral("Couldn’t Save Preset"), [&] {
            library_.save(name, PresetPayload::make(session_.batchRecipe(), exportSession_.settings(),
                                                    exportSession_.configuration()));
        });
    });
}

void PresetFlow::addStarters()
{
    alerts_.attempt(QStringLiteral("Couldn’t Save Preset"), [&] {
        std::vector<std::pair<QString, PresetPayload>> presets;
        for (const StarterFrame& frame : starterFrames())
            presets.emplace_back(frame.name, PresetPayload::make(frame.recipe, exportSession_.settings(),
                                                                 exportSession_.configuration()));
        library_.saveAll(presets);
    });
}

void PresetFlow::applyPreset(const QUuid& id)
{
    if (const PhotoPreset* chosen = preset(id))
        history_.applyPreset(*chosen);
    if (presets_)
        presets_->dismiss();
}

void PresetFlow::renamePreset(const QUuid& id)
{
    const PhotoPreset* chosen = preset(id);
    if (!chosen)
        return;
    requestPresetName(QStringLiteral("Rename Preset"), QStringLiteral("Rename"), chosen->name,
                      [this, id](const QString& name) {
                          alerts_.attempt(QStringLiteral("Couldn’t Rename Preset"), [&] { library_.rename(id, name); });
                      });
}

void PresetFlow::duplicatePreset(const QUuid& id)
{
    alerts_.attempt(QStringLiteral("Couldn’t Duplicate Preset"), [&] { library_.duplicate(id); });
}

void PresetFlow::deletePreset(const QUuid& id)
{
    const PhotoPreset* chosen = preset(id);
    if (!chosen)
        return;
    const Question question{
        .title = QStringLiteral("Delete “%1”?").arg(chosen->name),
        .message = QStringLiteral("This removes the saved preset. Imported logo assets and source photos are not "
                                  "changed."),
        .accept = QStringLiteral("Delete"),
        .leave = QStringLiteral("Cancel"),
        .kind = Question::Kind::destructive,
    };
    ConfirmSheet::ask(&window_, question, this, [this, id](const Answer& answer) {
        if (answer.accepted)
            alerts_.attempt(QStringLiteral("Couldn’t Delete Preset"), [&] { library_.remove(id); });
    });
}

} // namespace ferrow
