// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ferrow {

class BorderSection;
class CaptionSection;
class EditHistory;
class ExportSession;
class LogoSection;
class OutputSection;
class PhotoSession;
class ScopeBlock;
class ScreenColorPicker;

/// The pane on the right: which photos an edit changes, and the active recipe in four sections that fold. It shows the
/// models and sends edits to the history. The models outlive it.
class InspectorView : public QWidget {
    Q_OBJECT

public:
    InspectorView(PhotoSession& session, EditHistory& history, ExportSession& exportSession, QWidget* parent = nullptr);

    /// While an export runs nothing can be edited, and a line says why. The sections can still be scrolled.
    void setLocked(bool locked);
    void setImportingLogo(bool isImporting);
    /// Whether a file dropped there is meant as a logo.
    [[nodiscard]] bool isLogoWellAt(const QPoint& globalPosition) const;
    void setLogoDropTarget(bool isDropTarget);

    /// Goes on to the next caption (1) or the one before it (-1).
    void stepCaption(int by);
    /// Lets the chosen caption change places with the next one or the one before it.
    void moveCaption(int by);

signals:
    /// A logo is to be imported, or replaced by another.
    void importLogoRequested();

private:
    void observe(PhotoSession& session, ExportSession& exportSession);
    void refresh();

    ScopeBlock* scope_ = nullptr;
    QWidget* page_ = nullptr;
    BorderSection* border_ = nullptr;
    CaptionSection* caption_ = nullptr;
    LogoSection* logo_ = nullptr;
    OutputSection* output_ = nullptr;
};

} // namespace ferrow
