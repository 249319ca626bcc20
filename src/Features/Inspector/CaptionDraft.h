// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/EditHistory.h"
#include "Session/PhotoSession.h"

#include <optional>
#include <vector>

namespace ferrow {

/// Shows a caption that is still in the user's hand, dragged or typed: the recipe has it meanwhile, the history only
/// what comes of it in the end, as one step.
class CaptionDraft {
public:
    CaptionDraft(PhotoSession& session, EditHistory& history) : session_(session), history_(history) {}

    /// The segments as they were before the first preview end the draft without a step.
    void preview(const std::vector<CaptionSegment>& segments);
    void commit(const QString& stepName, const std::vector<CaptionSegment>& segments);
    /// Another caption is shown now, after undo for example. Ends the draft: a recipe that still has what was previewed
    /// gets back what it had, one that was changed meanwhile stays as it is.
    void interrupt();

private:
    struct Before {
        std::optional<FileUrl> photoID; ///< The photo whose own recipe is edited; absent for the batch's.
        bool hadOwnRecipe = false;
        std::vector<CaptionSegment> segments;
    };

    [[nodiscard]] const RenderRecipe* draftedRecipe() const;
    void putBack();

    PhotoSession& session_;
    EditHistory& history_;
    std::optional<Before> before_;
    std::vector<CaptionSegment> previewed_;
};

} // namespace ferrow
