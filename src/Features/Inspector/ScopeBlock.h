// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"

#include <QWidget>

class QPushButton;

namespace ferrow {

class ElidedLabel;
class IconLabel;
class MessageLine;
class SegmentedControl;

/// Whom edits hit, always in sight above the sections: the batch or the selected photo.
class ScopeBlock : public QWidget {
    Q_OBJECT

public:
    explicit ScopeBlock(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();
    /// Instead of whom edits hit, says that nothing can be edited.
    void setLocked(bool locked);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QWidget* makeUnused();
    void showHint();

    InspectorContext context_;
    SegmentedControl* scope_ = nullptr;
    IconLabel* mark_ = nullptr;
    ElidedLabel* hint_ = nullptr;
    QPushButton* useBatch_ = nullptr;
    MessageLine* unused_ = nullptr; ///< What the batch's framing passes over.
    bool isLocked_ = false;
};

} // namespace ferrow
