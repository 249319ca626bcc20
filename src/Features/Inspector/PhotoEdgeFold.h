// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/Disclosure.h"
#include "Features/Inspector/InspectorContext.h"

namespace ferrow {

class SliderField;

/// How the photo ends where the border begins.
class PhotoEdgeFold : public Disclosure {
    Q_OBJECT

public:
    explicit PhotoEdgeFold(const InspectorContext& context, QWidget* parent = nullptr);
    /// Shows what the models say now.
    void refresh();

private:
    InspectorContext context_;
    SliderField* corners_ = nullptr;
    ToggleSwitch* shadow_ = nullptr;
};

} // namespace ferrow
