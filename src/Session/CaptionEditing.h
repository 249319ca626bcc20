// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Session/CaptionChips.h"
#include "Session/EditHistory.h"
#include "Session/EditSteps.h"
#include "Session/PhotoSession.h"

#include <QObject>
#include <QString>
#include <QUuid>

#include <optional>
#include <variant>
#include <vector>

namespace ferrow {

/// The captions of the active recipe while they are edited: which of them is chosen, and its row of chips: which chip
/// is current, the text that is typed and the chip that is carried. What is in hand shows in the recipe at once, and is
/// one step in the history once it is finished. Lives on the main thread; session and history must outlive it.
class CaptionEditing : public QObject {
    Q_OBJECT

public:
    using Segments = CaptionChips::Segments;

    /// A text chip whose text is typed.
    struct TextInHand {
        int index = 0;       ///< In shown().
        CaptionSegment chip; ///< With the text as typed so far.
        bool isNew = false;

        [[nodiscard]] const QString& text() const { return std::get<QString>(chip.content); }
    };
    enum class End { keep, giveUp };

    CaptionEditing(PhotoSession& session, EditHistory& history, QObject* parent = nullptr);

    /// Which of the recipe's captions is chosen.
    [[nodiscard]] int chosen() const { return chosen_; }
    /// That one, of the active recipe as it is in the middle of an edit; the last of a recipe that has fewer.
    [[nodiscard]] Caption& captionOf(RenderRecipe& recipe) const;
    [[nodiscard]] const Caption& captionOf(const RenderRecipe& recipe) const;
    /// Chooses another. A text in hand is kept. Passes over what is no caption.
    void choose(int index);

    // One step each. The caption that was added or moved is chosen, or the one that takes the place of what was
    // removed.
    /// Where there may be one more.
    void addCaption();
    /// Never the last one.
    void removeCaption();
    /// To the place so many before (below 0) or behind its own, at most to either end.
    void moveCaption(int by);

    /// Without what is in hand.
    [[nodiscard]] const Segments& segments() const { return segments_; }
    /// The chips that there are to see: with the text in hand, be it still empty.
    [[nodiscard]] const Segments& shown() const { return shown_; }
    /// What would come of it if all in hand were finished now.
    [[nodiscard]] const Segments& drafted() const { return drafted_; }
    /// Of the selected photo; absent where none is selected.
    [[nodiscard]] const std::optional<PhotoMetadata>& metadata() const { return metadata_; }

    /// What the caption says for a photo if all in hand were finished now, in capitals where it is drawn in them.
    [[nodiscard]] CaptionChips::Reading reading(const std::optional<PhotoMetadata>& metadata) const;
    /// What the photos of the batch have of a token.
    struct Survey {
        std::size_t photos = 0;
        std::size_t lacking = 0;
        std::optional<PhotoMetadata> firstWith; ///< With a value.
        std::optional<PhotoMetadata> firstWithout;
    };
    [[nodiscard]] Survey survey(MetadataToken token) const;

    /// The chip that keys act on; 0 where there is none.
    [[nodiscard]] int current() const { return current_; }
    /// Passes over what is no chip.
    void setCurrent(int index);
    [[nodiscard]] std::optional<int> indexOf(const QUuid& chip) const;
    /// The gap after the last chip.
    [[nodiscard]] int endGap() const { return int(segments_.size()); }

    // One step each.
    void remove(int index);
    void move(int index, int gap);
    /// A gap beyond the last is the last.
    void add(const CaptionSegment::Content& content, int gap);
    /// Does nothing for a chip that has gone meanwhile.
    void change(const QUuid& chip, const CaptionSegment::Content& content);

    // A text: one step in the end. A text that is in hand already is kept.
    [[nodiscard]] const std::optional<TextInHand>& textInHand() const { return text_; }
    void startText(int gap, const QString& text = QString());
    void editText(int index);
    void setText(const QString& typed);
    /// A chip whose text has become empty goes.
    void endText(End end);

    // A chip that is carried about: one step in the end, where it comes to another place.
    [[nodiscard]] const std::optional<int>& carriedChip() const { return carried_; }
    void carry(int index);
    /// Without a gap it is shown where it was.
    void carryTo(const std::optional<int>& gap);
    void letGo();
    void putBack();

signals:
    /// Another caption is chosen, or there are other captions.
    void chosenChanged();
    /// Chips, what is known of them, or what is in hand.
    void changed();
    /// The current chip is to be in sight.
    void revealRequested();
    /// Another chip is current, without the focus having gone anywhere else.
    void currentMoved();
    /// A chip was moved, and is there now.
    void moved(int index);
    /// Other chips have come from elsewhere: after undo, or of another photo. What was in hand has come to nothing.
    void replaced();

private:
    void follow();
    void followCaptions();
    void editCaptions(const QString& name, int chosen, const EditHistory::RecipeEdit& edit);
    void update();
    void show(const QString& name, const Segments& drafted);
    void apply(const QString& name, const Segments& segments, int current);
    void openText(TextInHand text);
    [[nodiscard]] int clampedToRow(int index) const;

    PhotoSession& session_;
    EditHistory& history_;
    Framing framing_;               ///< Whose captions they are.
    std::vector<Caption> captions_; ///< As they were last.
    int chosen_ = 0;
    std::optional<PhotoMetadata> metadata_;
    bool isUppercase_ = false; ///< The chosen one.
    Segments segments_;
    Segments shown_;
    Segments drafted_;
    int current_ = 0;
    std::optional<TextInHand> text_;
    std::optional<int> carried_;
    std::optional<int> gap_; ///< Where the carried chip is shown.
};

} // namespace ferrow
