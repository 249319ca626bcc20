// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/InspectorView.h"

#include "Features/Inspector/BorderSection.h"
#include "Features/Inspector/CaptionSection.h"
#include "Features/Inspector/LogoSection.h"
#include "Features/Inspector/OutputSection.h"
#include "Features/Inspector/ScopeBlock.h"
#include "Platform/Desktop/ScreenColorPicker.h"
#include "Widgets/HairLine.h"
#include "Widgets/Popover.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Theme.h"

#include <QVBoxLayout>

namespace ferrow {

InspectorView::InspectorView(PhotoSession& session, EditHistory& history, ExportSession& exportSession, QWidget* parent)
    : QWidget(parent)
{
    auto* picker = new ScreenColorPicker(this);
    const InspectorContext context{session, history, exportSession, *picker, this};
    scope_ = new ScopeBlock(context);
    border_ = new BorderSection(context);
    caption_ = new CaptionSection(context);
    logo_ = new LogoSection(context);
    output_ = new OutputSection(context);
    connect(logo_, &LogoSection::logoSizeChanged, caption_, &CaptionSection::setLogoSize);
    connect(logo_, &LogoSection::importRequested, this, &InspectorView::importLogoRequested);
    logo_->setExpanded(false);
    output_->setExpanded(false);

    page_ = new QWidget;
    auto* sections = new QVBoxLayout(page_);
    sections->setContentsMargins(0, 0, 0, 0);
    sections->setSpacing(0);
    for (Section* section : std::initializer_list<Section*>{border_, caption_, logo_, output_}) {
        // Text that wraps needs more than the hint, which is made for its longest line.
        section->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        sections->addWidget(section);
    }
    sections->addStretch();
    auto* scroll = new ScrollPane;
    scroll->setPage(page_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(scope_);
    column->addWidget(new HairLine);
    column->addWidget(scroll, 1);

    setAccessibleName(QStringLiteral("Inspector"));
    setGround(this, &ThemeColors::window);
    observe(session, exportSession);
    refresh();
}

void InspectorView::observe(PhotoSession& session, ExportSession& exportSession)
{
    connect(&session, &PhotoSession::photosChanged, this, &InspectorView::refresh);
    connect(&session, &PhotoSession::selectedPhotoIDChanged, this, &InspectorView::refresh);
    connect(&session, &PhotoSession::batchRecipeChanged, this, &InspectorView::refresh);
    connect(&session, &PhotoSession::photoRecipesChanged, this, &InspectorView::refresh);
    connect(&session, &PhotoSession::correctionsChanged, this, &InspectorView::refresh);
    connect(&session, &PhotoSession::recipeScopeChanged, this, &InspectorView::refresh);
    connect(&exportSession, &ExportSession::settingsChanged, output_, &OutputSection::refresh);
}

void InspectorView::refresh()
{
    scope_->refresh();
    border_->refresh();
    caption_->refresh();
    logo_->refresh();
    output_->refresh();
}

void InspectorView::setImportingLogo(bool isImporting)
{
    logo_->setImporting(isImporting);
}

void InspectorView::stepCaption(int by)
{
    caption_->stepCaption(by);
}

void InspectorView::moveCaption(int by)
{
    caption_->moveCaption(by);
}

bool InspectorView::isLogoWellAt(const QPoint& globalPosition) const
{
    const QWidget* well = logo_->well();
    // As far as it is not scrolled away or folded.
    return well->visibleRegion().contains(well->mapFromGlobal(globalPosition));
}

void InspectorView::setLogoDropTarget(bool isDropTarget)
{
    logo_->setDropTarget(isDropTarget);
}

void InspectorView::setLocked(bool locked)
{
    // Not the export's own sheet, which may be closing just now.
    auto* popover = qobject_cast<Popover*>(Overlay::topmost(this));
    if (locked && popover)
        popover->dismiss();
    scope_->setLocked(locked);
    page_->setEnabled(!locked);
}

} // namespace ferrow
