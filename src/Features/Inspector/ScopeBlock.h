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

/// Which photos an edit changes, the batch or the selected one: always in sight above the sections.
class ScopeBlock : public QWidget {
    Q_OBJECT

public:
    explicit ScopeBlock(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();
    /// Says that nothing can be edited, in place of which photos an edit changes.
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
