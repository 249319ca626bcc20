// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QObject>
#include <QUndoStack>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ferrow {

class FramingStep;

/// The way of every edit from a view into the models, as steps that can be taken back. Verbs that change nothing make
/// no step. Undo and redo of a framing show where it happens: they bring back the scope it was made in and select the
/// photo it was made on. Names of steps read after "Undo": "Border Width". Lives on the main thread; the two sessions
/// must outlive it.
class EditHistory : public QObject {
    Q_OBJECT

public:
    using RecipeEdit = std::function<void(RenderRecipe&)>;
    using CorrectionsEdit = std::function<void(MetadataCorrections&)>;

    EditHistory(PhotoSession& session, ExportSession& exportSession, QObject* parent = nullptr);
    ~EditHistory() override;

    /// For undo and redo actions; nothing is pushed from outside.
    [[nodiscard]] QUndoStack& stack() { return stack_; }

    /// Changes the active recipe: the batch's, or the selected photo's own.
    void editRecipe(const QString& name, const RecipeEdit& edit);
    /// Shows an edit that is still in hand, such as a text that is typed: the active recipe has it, the history does
    /// not yet. The next preview changes what this one has left. One that is back where the first began leaves nothing.
    void preview(const QString& name, const RecipeEdit& edit);
    /// What is in hand becomes a step. So it does before any other edit.
    void keepPreview();
    /// Puts back what was there before the first preview, unless the recipe has been changed by others since.
    void dropPreview();

    /// Between these two, edits of one name are one step: a slider drag, a burst of the wheel. They may nest.
    void beginGesture();
    void endGesture();

    /// Takes the photo's own framing away.
    void useBatch(const FileUrl& photoID);

    /// Changes what captions say of these photos in place of what their files say. Values that a file says already are
    /// no corrections afterwards. Undo and redo select one of the photos unless one is selected.
    void correct(const QString& name, const std::vector<FileUrl>& photoIDs, const CorrectionsEdit& edit);

    void setIncluded(const std::vector<FileUrl>& photoIDs, bool included);
    void toggleIncluded(const FileUrl& photoID);
    void setAllIncluded(bool included);
    /// Goes on to `next`, if there is one, in the same step: undo shows the photo again. A photo that is included, or
    /// left out, already is no step.
    void setIncludedAndGoOn(const FileUrl& photoID, bool included, const std::optional<FileUrl>& next);
    /// Leaves out what was included, and the other way round.
    void invertIncluded();

    void removeSelected();
    void remove(const std::vector<FileUrl>& photoIDs);
    /// Photos, ticks and own framings in one step; batch recipe and scope stay. An import that runs ends.
    void clearAll();

    /// Batch recipe, scope, export settings and configuration in one step; per-photo recipes stay for later.
    void applyPreset(const PhotoPreset& preset);

    /// Remembers the framing that this photo shows.
    void copyFraming(const FileUrl& photoID);
    [[nodiscard]] bool canPasteFraming() const { return copiedFraming_.has_value(); }
    /// Gives the remembered framing to these photos as their own, and edits go to the selected photo from then on:
    /// own framings show in that scope alone.
    void pasteFraming(const std::vector<FileUrl>& photoIDs);

    /// "Import Logo" or "Replace Logo": the active recipe's logo, with the settings it had, else the default ones.
    void setLogoAsset(const LogoAssetReference& asset);
    /// The managed file stays.
    void removeLogo();

signals:
    void canPasteFramingChanged();

private:
    void push(std::unique_ptr<QUndoCommand> step);
    [[nodiscard]] std::int64_t gesture() const { return gestureDepth_ > 0 ? gesture_ : 0; }

    PhotoSession& session_;
    ExportSession& exportSession_;
    std::optional<RenderRecipe> copiedFraming_;
    std::unique_ptr<FramingStep> preview_; ///< Done, and not on the stack.
    int gestureDepth_ = 0;
    std::int64_t gesture_ = 0; ///< Number of the present gesture.
    QUndoStack stack_;
};

} // namespace ferrow
