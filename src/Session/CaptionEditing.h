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

namespace ferrow {

/// The caption of the active recipe while it is edited as a row of chips: which chip is current, the text that is typed
/// and the chip that is carried. What is in hand shows in the recipe at once, and is one step in the history once it is
/// finished. Lives on the main thread; session and history must outlive it.
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

    /// Which of a recipe's captions it is about.
    [[nodiscard]] static Caption& captionOf(RenderRecipe& recipe) { return recipe.captions.front(); }
    [[nodiscard]] static const Caption& captionOf(const RenderRecipe& recipe) { return recipe.captions.front(); }

    /// Without what is in hand.
    [[nodiscard]] const Segments& segments() const { return segments_; }
    /// The chips that there are to see: with the text in hand, be it still empty.
    [[nodiscard]] const Segments& shown() const { return shown_; }
    /// What would come of it if all in hand were finished now.
    [[nodiscard]] const Segments& drafted() const { return drafted_; }
    /// Of the selected photo; absent where none is selected.
    [[nodiscard]] const std::optional<PhotoMetadata>& metadata() const { return metadata_; }

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
    void update();
    void show(const QString& name, const Segments& drafted);
    void apply(const QString& name, const Segments& segments, int current);
    void openText(TextInHand text);
    [[nodiscard]] int clampedToRow(int index) const;

    PhotoSession& session_;
    EditHistory& history_;
    Framing framing_; ///< Whose caption it is.
    std::optional<PhotoMetadata> metadata_;
    Segments segments_;
    Segments shown_;
    Segments drafted_;
    int current_ = 0;
    std::optional<TextInHand> text_;
    std::optional<int> carried_;
    std::optional<int> gap_; ///< Where the carried chip is shown.
};

} // namespace ferrow
