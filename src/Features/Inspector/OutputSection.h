// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorContext.h"
#include "Widgets/Section.h"

class QComboBox;

namespace ferrow {

/// The color profile of what is exported. Format and quality are chosen on export.
class OutputSection : public Section {
    Q_OBJECT

public:
    explicit OutputSection(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    InspectorContext context_;
    QComboBox* profile_ = nullptr;
};

} // namespace ferrow
