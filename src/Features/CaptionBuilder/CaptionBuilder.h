// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/PhotoMetadata.h"
#include "Models/RenderRecipe.h"

#include <QWidget>

#include <optional>
#include <vector>

class QLabel;

namespace ferrow {

class CaptionWell;
class MessageLine;
class PaletteButton;

/// The caption as chips, what adds to them, and what it reads for the shown photo.
class CaptionBuilder : public QWidget {
    Q_OBJECT

public:
    explicit CaptionBuilder(QWidget* parent = nullptr);

    /// Ends what is typed or dragged, unless the segments are those that were told or those before; tells that alone.
    void setSegments(const std::vector<CaptionSegment>& segments);
    /// Of the selected photo; absent where none is selected.
    void setMetadata(const std::optional<PhotoMetadata>& metadata);
    /// What is lost of the caption on the shown photo; empty for nothing.
    void setCutNote(const QString& text);
    /// Without what is being typed or dragged.
    const std::vector<CaptionSegment>& segments() const;

signals:
    /// One finished edit, one step to take back.
    void segmentsEdited(const QString& stepName, const std::vector<ferrow::CaptionSegment>& segments);
    /// What a drag or a text in hand would come to. The finished edit follows; where it is given up, the segments as
    /// they were are told by this signal once more; where other segments are set meanwhile, `interrupted`.
    void segmentsPreviewed(const std::vector<ferrow::CaptionSegment>& segments);
    void interrupted();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildPalette();
    QWidget* makeNote(MessageLine*& line, const QString& objectName);
    static void showNote(MessageLine* line, const QString& text);
    void connectWell();
    void fitPalette();
    void read(const std::vector<CaptionSegment>& segments);

    CaptionWell* well_ = nullptr;
    QWidget* palette_ = nullptr;
    std::vector<PaletteButton*> buttons_;
    QLabel* reading_ = nullptr;
    MessageLine* cut_ = nullptr;
    MessageLine* missing_ = nullptr;
    std::optional<PhotoMetadata> metadata_;
    std::vector<CaptionSegment> read_; ///< What the line below the chips is about.
};

} // namespace ferrow
