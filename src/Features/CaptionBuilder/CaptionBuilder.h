// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <vector>

class QLabel;

namespace ferrow {

class CaptionEditing;
class CaptionWell;
class MessageLine;
class PaletteButton;

/// The caption as chips, what adds to them, and what it reads for the shown photo.
class CaptionBuilder : public QWidget {
    Q_OBJECT

public:
    /// `editing` must outlive it.
    explicit CaptionBuilder(CaptionEditing& editing, QWidget* parent = nullptr);

    /// What popovers lie over, so that the photo stays in sight.
    void setPane(QWidget* pane);
    /// What is lost of the caption on the shown photo; empty for nothing.
    void setCutNote(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildPalette();
    QWidget* makeNote(MessageLine*& line, const QString& objectName);
    static void showNote(MessageLine* line, const QString& text);
    void connectPalette();
    void fitPalette();
    void read();

    CaptionEditing& editing_;
    CaptionWell* well_ = nullptr;
    QWidget* palette_ = nullptr;
    std::vector<PaletteButton*> buttons_;
    QLabel* reading_ = nullptr;
    MessageLine* cut_ = nullptr;
    MessageLine* missing_ = nullptr;
};

} // namespace ferrow
