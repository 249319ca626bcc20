// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/OutputSection.h"

#include "Features/Inspector/InspectorRows.h"
#include "Session/WindowTexts.h"
#include "Widgets/Theme.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

namespace ferrow {

OutputSection::OutputSection(const InspectorContext& context, QWidget* parent)
    : Section(QStringLiteral("Output"), parent), context_(context)
{
    profile_ = makeCombo(QStringLiteral("Output color profile"), choicesOf<OutputColorProfile>());
    profile_->setObjectName(QStringLiteral("outputProfileCombo"));
    connect(profile_, &QComboBox::activated, this, [this](int index) {
        const OutputColorProfile profile = allCases<OutputColorProfile>()[std::size_t(index)];
        context_.history.editRecipe(QStringLiteral("Output Profile"),
                                    [profile](RenderRecipe& recipe) { recipe.outputColorProfile = profile; });
    });
    addRow(body(), QStringLiteral("Profile"), profile_);

    QLabel* note = makeLabel(QStringLiteral("Format, size and quality are chosen when you export."), TextRole::small,
                             &ThemeColors::text2);
    note->setWordWrap(true);
    body()->addWidget(note);
}

void OutputSection::refresh()
{
    const RenderRecipe& recipe = context_.recipe();
    setSummary(WindowTexts::outputSummary(context_.exportSession.settings(), recipe));
    profile_->setCurrentIndex(int(recipe.outputColorProfile));
}

} // namespace ferrow
