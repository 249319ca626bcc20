// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Widgets/Section.h"

#include <QPointer>

class QLabel;
class QPushButton;

namespace ferrow {

class ElidedLabel;
class FormRow;
class LogoThumbnail;
class MessageLine;
class PositionButton;
class PositionPopover;
class SliderField;

/// The logo's file, its size and where it lies.
class LogoSection : public Section {
    Q_OBJECT

public:
    explicit LogoSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();
    /// A logo is on its way: another can't be asked for meanwhile.
    void setImporting(bool isImporting);
    /// What shows the logo's file, for files that are dropped on it.
    [[nodiscard]] const QWidget* well() const { return well_; }
    void setDropTarget(bool isDropTarget);

signals:
    /// Import or Replace was pressed, or the switch turned on without a logo.
    void importRequested();
    /// Of the logo's picture, by which its proportion is known; empty without one.
    void logoSizeChanged(ferrow::PixelSize size);

private:
    void buildSwitch();
    void buildFile();
    void buildLook();
    void toggle(bool on);
    void openPosition();
    void refreshFile(const RenderRecipe& recipe);
    void refreshPosition(const RenderRecipe& recipe);

    InspectorContext context_;
    bool isImporting_ = false;
    QPointer<QWidget> focusMeanwhile_; ///< Took the focus from the import button, which is disabled during an import.
    QWidget* well_ = nullptr;
    LogoThumbnail* thumbnail_ = nullptr;
    ElidedLabel* name_ = nullptr;
    QLabel* kind_ = nullptr;
    QPushButton* import_ = nullptr;
    QPushButton* remove_ = nullptr;
    MessageLine* error_ = nullptr;
    QWidget* group_ = nullptr; ///< The rows below the file: hidden without a logo, disabled while it is off.
    SliderField* width_ = nullptr;
    SliderField* opacity_ = nullptr;
    PositionButton* position_ = nullptr;
    FormRow* positionRow_ = nullptr;
    SliderField* sideInset_ = nullptr;
    SliderField* edgeInset_ = nullptr;
    QPointer<PositionPopover> popover_;
};

} // namespace ferrow
