// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Persistence/PresetModels.h"
#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QUndoCommand>

#include <cstdint>
#include <optional>
#include <vector>

/// The steps that EditHistory is made of. A step that would change nothing is obsolete from the start. Each does its
/// change in redo(), also for the first time.
namespace ferrow {

/// Number of the gesture an edit belongs to; 0 for none.
using GestureNumber = std::int64_t;

/// Whose framing is edited.
struct Framing {
    RecipeScope scope = RecipeScope::batch;
    std::optional<FileUrl> photoID; ///< Whose own recipe it is; none for the batch's.

    [[nodiscard]] static Framing active(const PhotoSession& session);
    /// Absent for a photo that shows the batch's.
    [[nodiscard]] std::optional<RenderRecipe> stored(const PhotoSession& session) const;
    void put(PhotoSession& session, const std::optional<RenderRecipe>& recipe) const;
    /// Stores `recipe`, and shows scope and photo.
    void store(PhotoSession& session, const std::optional<RenderRecipe>& recipe) const;

    bool operator==(const Framing&) const = default;
};

/// One recipe, before and after.
class FramingStep : public QUndoCommand {
public:
    FramingStep(PhotoSession& session, const QString& name, Framing framing, RenderRecipe after, GestureNumber gesture);

    void undo() override { framing_.store(session_, before_); }
    void redo() override { framing_.store(session_, after_); }
    [[nodiscard]] int id() const override { return 1; }
    bool mergeWith(const QUndoCommand* other) override;

    [[nodiscard]] const Framing& framing() const { return framing_; }
    /// Whether the framing is still as the step left it.
    [[nodiscard]] bool isInPlace() const { return framing_.stored(session_) == after_; }
    /// Leads to another recipe from now on. Obsolete where that is the one it came from.
    void goOnTo(const std::optional<RenderRecipe>& after);
    /// As undo, without showing where.
    void takeBack() const { framing_.put(session_, before_); }

private:
    PhotoSession& session_;
    Framing framing_;
    std::optional<RenderRecipe> before_;
    std::optional<RenderRecipe> after_;
    GestureNumber gesture_;
};

/// Photos get a framing of their own, or give it up; the scope shows it.
class OwnFramingStep : public QUndoCommand {
public:
    /// Without `recipe` the photos show the batch's again.
    OwnFramingStep(PhotoSession& session, const QString& name, std::vector<FileUrl> photoIDs,
                   std::optional<RenderRecipe> recipe);

    void undo() override;
    void redo() override;

private:
    /// The scope, and one of the photos where another is selected.
    void show(RecipeScope scope);

    PhotoSession& session_;
    std::vector<FileUrl> photoIDs_;
    std::vector<std::optional<RenderRecipe>> before_; ///< One a photo.
    std::optional<RenderRecipe> recipe_;
    RecipeScope scopeBefore_;
    RecipeScope scopeAfter_;
};

class CorrectionStep : public QUndoCommand {
public:
    /// `after` has those photos alone whose corrections change; all are in the list.
    CorrectionStep(PhotoSession& session, const QString& name, std::vector<PhotoCorrections> after);

    void undo() override { store(before_); }
    void redo() override { store(after_); }

private:
    void store(const std::vector<PhotoCorrections>& corrections);

    PhotoSession& session_;
    std::vector<PhotoCorrections> before_;
    std::vector<PhotoCorrections> after_;
};

class InclusionStep : public QUndoCommand {
public:
    /// `photoIDs` are those whose state changes.
    InclusionStep(PhotoSession& session, std::vector<FileUrl> photoIDs, bool included);

    void undo() override { session_.setIncluded(photoIDs_, !included_); }
    void redo() override { session_.setIncluded(photoIDs_, included_); }

private:
    PhotoSession& session_;
    std::vector<FileUrl> photoIDs_;
    bool included_;
};

/// One photo is decided on, and the next is shown.
class CullingStep : public QUndoCommand {
public:
    CullingStep(PhotoSession& session, FileUrl photoID, bool included, FileUrl next);

    void undo() override { apply(!included_, photoID_); }
    void redo() override { apply(included_, next_); }

private:
    void apply(bool included, const FileUrl& selected);

    PhotoSession& session_;
    FileUrl photoID_;
    bool included_;
    FileUrl next_;
};

class InversionStep : public QUndoCommand {
public:
    InversionStep(PhotoSession& session, std::vector<FileUrl> photoIDs);

    void undo() override { session_.toggleIncluded(photoIDs_); }
    void redo() override { session_.toggleIncluded(photoIDs_); }

private:
    PhotoSession& session_;
    std::vector<FileUrl> photoIDs_;
};

class RemovalStep : public QUndoCommand {
public:
    RemovalStep(PhotoSession& session, std::vector<FileUrl> photoIDs);

    void undo() override { session_.restore(removed_); }
    void redo() override { removed_ = session_.remove(photoIDs_); }

private:
    PhotoSession& session_;
    std::vector<FileUrl> photoIDs_;
    RemovedPhotos removed_;
};

/// The whole list goes. Batch recipe and scope are no part of it.
class ClearStep : public QUndoCommand {
public:
    explicit ClearStep(PhotoSession& session) : QUndoCommand(QStringLiteral("Clear All")), session_(session) {}

    void undo() override { session_.restore(removed_); }
    void redo() override { removed_ = session_.clearAll(); }

private:
    PhotoSession& session_;
    RemovedPhotos removed_;
};

/// All that a preset sets. Export settings are edited without steps: those that were changed since the preset, or since
/// its undo, stay as they are, and so does the chosen folder, which is no part of presets.
class PresetStep : public QUndoCommand {
public:
    PresetStep(PhotoSession& session, ExportSession& exportSession, PresetPayload payload);

    void undo() override;
    void redo() override;

private:
    void exchangeExport(PresetPayload& from, PresetPayload& to);

    PhotoSession& session_;
    ExportSession& exportSession_;
    RenderRecipe recipe_; ///< The payload's, made once: its caption's identifiers are fresh at each making.
    RenderRecipe recipeBefore_;
    RecipeScope scopeBefore_;
    PresetPayload exportBefore_; ///< Its export fields count, as they were at the last undo or redo.
    PresetPayload exportAfter_;  ///< The same.
};

} // namespace ferrow
