// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewPane.h"

#include "Features/PreviewPane/EmptyPreview.h"
#include "Features/PreviewPane/ExportFollower.h"
#include "Features/PreviewPane/ExportFooter.h"
#include "Features/PreviewPane/PreviewCanvas.h"
#include "Features/PreviewPane/PreviewFooter.h"
#include "Features/PreviewPane/PreviewRequester.h"
#include "Features/PreviewPane/ReviewBar.h"
#include "Session/WindowTexts.h"
#include "Widgets/AccessibleEvents.h"
#include "Widgets/Theme.h"

#include <QGridLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ferrow {

namespace {

constexpr int minimumWidthOfPane = 440;
/// Most photos are there before anybody notices that they had to be loaded.
constexpr std::chrono::milliseconds loadingPatience{150};

bool isDark()
{
    return Theme::current().appearance() == Appearance::dark;
}

QString inPixels(PixelSize size)
{
    return size.formatted() + QStringLiteral(" px");
}

/// The same in ever fewer words.
std::vector<QString> sizeDetails(const ImportedPhoto& photo, const std::optional<PixelSize>& output)
{
    if (!output)
        return {inPixels(photo.pixelSize)};
    const QString sizes = WindowTexts::sizeChange(photo.pixelSize, *output);
    std::vector<QString> details{sizes, inPixels(*output)};
    if (!photo.colorProfileName.isEmpty())
        details.insert(details.begin(), sizes + QStringLiteral(" · ") + photo.colorProfileName);
    return details;
}

} // namespace

PreviewPane::PreviewPane(PhotoSession& session, PreviewLoader& loader, PreviewRenderQueue& queue,
                         ExportSession& exportSession, EditHistory& history, Preferences& preferences, QWidget* parent)
    : QWidget(parent), session_(session), loader_(loader), queue_(queue), exportSession_(exportSession),
      history_(history), preferences_(preferences)
{
    setMinimumWidth(minimumWidthOfPane);
    area_ = new QWidget(this);
    buildCanvas();
    empty_ = new EmptyPreview(session_, history_, area_);
    drop_ = new DropOverlay(area_);
    auto* layers = new QGridLayout(area_);
    layers->setContentsMargins(0, 0, 0, 0);
    layers->addWidget(canvas_, 0, 0);
    layers->addWidget(empty_, 0, 0);
    review_ = new ReviewBar(session_, this);
    footer_ = new PreviewFooter(this);
    exportFooter_ = new ExportFooter(exportSession_, this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(area_, 1);
    column->addWidget(review_);
    column->addWidget(footer_);
    column->addWidget(exportFooter_);

    loadingDelay_.setSingleShot(true);
    loadingDelay_.setInterval(loadingPatience);
    requester_ = new PreviewRequester(session_, exportSession_, loader_, queue_, this);
    new ExportFollower(session_, exportSession_, this);
    connectModels();
    connectParts();
    followBackdrop();
    followSelection();
    followExport();
}

PreviewPane::~PreviewPane()
{
    // What dies last loses its focus first, and would tell a pane that is gone already.
    canvas_->picture().disconnect(this);
    canvas_->disconnect(this);
}

void PreviewPane::buildCanvas()
{
    canvas_ = new PreviewCanvas(area_);
    canvas_->setObjectName(QStringLiteral("previewCanvas"));
    error_ = new ErrorCard(canvas_);
    notice_ = new NoticeCard(canvas_);
    loadingLine_ = new LoadingLine(canvas_);
    auto* layers = new QGridLayout(canvas_);
    layers->setSizeConstraint(QLayout::SetNoConstraint);
    // The notice stands as far above the edge as photos do, its shadow not counted.
    layers->setContentsMargins(0, 0, 0, Space::preview - FloatingCard::shadowRoom);
    layers->addWidget(error_, 0, 0, Qt::AlignCenter);
    layers->addWidget(notice_, 0, 0, Qt::AlignHCenter | Qt::AlignBottom);
    layers->addWidget(loadingLine_, 0, 0, Qt::AlignTop);
}

void PreviewPane::connectModels()
{
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &PreviewPane::followSelection);
    connect(&session_, &PhotoSession::photosChanged, this, &PreviewPane::followSelection);
    for (const auto signal :
         {&PhotoSession::batchRecipeChanged, &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged})
        connect(&session_, signal, this, &PreviewPane::followRecipe);
    connect(&session_, &PhotoSession::correctionsChanged, this, [this] {
        if (const ImportedPhoto* photo = session_.selectedPhoto())
            canvas_->picture().setCorrections(photo->corrections);
    });
    connect(&exportSession_, &ExportSession::settingsChanged, this, &PreviewPane::followRecipe);
    connect(&loader_, &PreviewLoader::photoChanged, this, &PreviewPane::followLoader);
    for (const auto signal : {&ExportSession::progressChanged, &ExportSession::isPlanningChanged})
        connect(&exportSession_, signal, this, &PreviewPane::followExport);
    connect(&preferences_, &Preferences::previewBackdropChanged, this, &PreviewPane::followBackdrop);
    connect(&Theme::current(), &Theme::changed, this, &PreviewPane::followBackdrop);

    connect(&queue_, &PreviewRenderQueue::rendered, this, [this](const PreviewResult& result) {
        if (shownPhoto_ != result.photoID)
            return;
        if (!hasLoadError_)
            hideErrors();
        canvas_->picture().showRendered(result);
    });
    connect(&queue_, &PreviewRenderQueue::failed, this, [this](const FileUrl& photoID, const QString& message) {
        if (shownPhoto_ == photoID)
            showError(QStringLiteral("This Frame Can’t Be Shown"), message, ErrorCard::WaysOut::none);
    });
    connect(&queue_, &PreviewRenderQueue::logoFailed, this, [this](const QString& message) {
        const ImportedPhoto* photo = session_.selectedPhoto();
        if (!photo || !session_.resolvedRecipe(photo->id()).logo)
            return;
        missingLogo_ = session_.resolvedRecipe(photo->id()).logo->asset;
        missingLogoText_ = message;
        if (missingLogo_ == dismissedLogo_)
            return;
        notice_->show(Severity::warning, message);
        announce(canvas_, message);
    });
    connect(&queue_, &PreviewRenderQueue::logoFound, this, [this] {
        missingLogo_.reset();
        dismissedLogo_.reset();
        renewNotice();
    });
}

void PreviewPane::connectParts()
{
    connect(canvas_, &PreviewCanvas::zoomChanged, this, &PreviewPane::zoomChanged);
    connect(canvas_, &PreviewCanvas::stepRequested, this, &PreviewPane::step);
    connect(canvas_, &PreviewCanvas::cullRequested, this, &PreviewPane::cullRequested);
    connect(canvas_, &PreviewCanvas::sheetRequested, this, &PreviewPane::sheetRequested);
    connect(canvas_, &PreviewCanvas::removeRequested, this, &PreviewPane::removeSelected);
    connect(&canvas_->picture(), &PreviewPicture::changed, this, &PreviewPane::renewLoading);
    connect(&loadingDelay_, &QTimer::timeout, this, [this] {
        loadingLine_->show();
        loadingLine_->raise();
        renewTexts();
    });
    connect(empty_, &EmptyPreview::addPhotosRequested, this, &PreviewPane::addPhotosRequested);
    connect(empty_, &EmptyPreview::addFolderRequested, this, &PreviewPane::addFolderRequested);
    connect(notice_, &NoticeCard::dismissed, this, [this] {
        dismissedLogo_ = missingLogo_;
        if (notice_->isAncestorOf(window()->focusWidget()))
            canvas_->setFocus(Qt::OtherFocusReason);
        notice_->hide();
    });
    connect(error_, &ErrorCard::removeRequested, this, &PreviewPane::removeSelected);
    connect(error_, &ErrorCard::showInFolderRequested, this, &PreviewPane::showInFolderRequested);
    connect(error_, &ErrorCard::retryRequested, this, [this] {
        hideErrors();
        showStandIn();
        emit retryRequested();
    });
    connect(review_, &ReviewBar::backRequested, this, &PreviewPane::backToExportRequested);
    connect(review_, &ReviewBar::focusHandedOn, this, [this] { canvas_->setFocus(Qt::OtherFocusReason); });
    connect(footer_, &PreviewFooter::stepRequested, this, &PreviewPane::step);
    connect(footer_, &PreviewFooter::backdropChosen, this, &PreviewPane::chooseBackdrop);
    connect(exportFooter_, &ExportFooter::cancelRequested, this, &PreviewPane::cancelExportRequested);
}

double PreviewPane::zoom() const
{
    return canvas_->picture().isShown() ? canvas_->viewport().zoom() : 0;
}

bool PreviewPane::isFit() const
{
    return canvas_->viewport().isFit();
}

void PreviewPane::zoomIn()
{
    canvas_->setZoom(canvas_->viewport().stepAbove());
}

void PreviewPane::zoomOut()
{
    canvas_->setZoom(canvas_->viewport().stepBelow());
}

void PreviewPane::zoomToFit()
{
    canvas_->fit();
}

void PreviewPane::zoomToActualPixels()
{
    canvas_->setZoom(1);
}

void PreviewPane::setZoom(double zoom)
{
    canvas_->setZoom(zoom);
}

void PreviewPane::setComparing(bool isComparing)
{
    canvas_->setComparing(isComparing);
}

void PreviewPane::setDropTarget(std::optional<int> fileCount)
{
    empty_->setDropTarget(fileCount.has_value());
    if (fileCount)
        drop_->show(*fileCount);
    else
        drop_->hide();
}

void PreviewPane::setSheet(QWidget* sheet, QWidget* control)
{
    sheet_ = sheet;
    auto* layers = static_cast<QGridLayout*>(area_->layout());
    layers->addWidget(sheet_, 0, 0);
    sheet_->hide();
    drop_->raise();
    footer_->setTool(control);
}

void PreviewPane::setSheetShown(bool isShown)
{
    if (!sheet_ || std::exchange(isSheetShown_, isShown) == isShown)
        return;
    const bool hadFocus = area_->isAncestorOf(window()->focusWidget());
    footer_->setToolShown(isShown);
    requester_->setPaused(isShown);
    followSelection();
    if (!hadFocus || session_.photos().empty())
        return;
    QWidget* next = isShown ? sheet_->focusProxy() : canvas_;
    next->setFocus(Qt::OtherFocusReason);
}

void PreviewPane::setNarrow(bool isNarrow)
{
    footer_->setPagerShown(isNarrow);
}

void PreviewPane::showLoadError(const QString& message)
{
    hasLoadError_ = true;
    canvas_->picture().clear();
    showError(QStringLiteral("Couldn’t Preview Photo"), message, ErrorCard::WaysOut::all);
    renewTexts();
}

void PreviewPane::review(const ExportFinding& finding)
{
    review_->begin(finding);
}

void PreviewPane::endReview()
{
    review_->end();
}

void PreviewPane::showError(const QString& title, const QString& message, ErrorCard::WaysOut waysOut)
{
    error_->show(title, message, waysOut);
    announce(canvas_, title + QStringLiteral(". ") + message);
}

void PreviewPane::followSelection()
{
    const bool isEmpty = session_.photos().empty();
    const bool handsFocusOn = !isEmpty && empty_->isAncestorOf(window()->focusWidget());
    if (handsFocusOn) {
        QWidget* next = isSheetShown_ ? sheet_ : canvas_;
        next->setVisible(true);
        next->setFocus(Qt::OtherFocusReason);
    }
    empty_->setVisible(isEmpty);
    canvas_->setVisible(!isEmpty && !isSheetShown_);
    if (sheet_)
        sheet_->setVisible(!isEmpty && isSheetShown_);
    if (handsFocusOn)
        emit focusHandedOn();
    footer_->setVisible(!isEmpty);

    const ImportedPhoto* photo = session_.selectedPhoto();
    const std::optional<FileUrl> selected = photo ? std::optional(photo->id()) : std::nullopt;
    // Nobody sees the single photo; coming back to it finds another selected.
    if (selected != shownPhoto_ && !isSheetShown_) {
        shownPhoto_ = selected;
        hideErrors();
        renewNotice();
        canvas_->fit();
        showStandIn();
    }
    renewTexts();
}

void PreviewPane::followRecipe()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    if (!photo)
        return;
    // A render follows by itself. A stand-in with the same framing stays, and with it the render on its way.
    const RenderRecipe& recipe = session_.resolvedRecipe(photo->id());
    const PreviewPicture& picture = canvas_->picture();
    if (!hasLoadError_ && !isSheetShown_ && (!picture.isShown() || (picture.isStandIn() && picture.recipe() != recipe)))
        showStandIn();
    renewNotice();
    renewTexts();
}

void PreviewPane::followLoader()
{
    const std::optional<ImportedPhoto>& loaded = loader_.photo();
    if (hasLoadError_ && loaded && shownPhoto_ == loaded->id()) {
        hideErrors();
        showStandIn();
    }
    giveBare();
}

void PreviewPane::giveBare()
{
    const std::optional<ImportedPhoto>& loaded = loader_.photo();
    if (loaded && shownPhoto_ == loaded->id())
        canvas_->picture().setBare(loaded->previewSource);
}

void PreviewPane::showStandIn()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    if (photo)
        canvas_->picture().showStandIn(*photo, session_.resolvedRecipe(photo->id()), exportSession_.settings().size,
                                       session_.thumbnail(photo->id()));
    else
        canvas_->picture().clear();
    giveBare();
}

void PreviewPane::hideErrors()
{
    hasLoadError_ = false;
    error_->hide();
    canvas_->setAccessibleDescription({});
}

/// The queue tells of a missing logo once: going to another photo and back has to show the notice again.
void PreviewPane::renewNotice()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    const std::optional<LogoConfiguration> logo =
        photo ? session_.resolvedRecipe(photo->id()).logo : std::optional<LogoConfiguration>();
    if (!logo || !logo->isEnabled || logo->asset != missingLogo_ || missingLogo_ == dismissedLogo_)
        notice_->hide();
    else if (notice_->isHidden())
        notice_->show(Severity::warning, missingLogoText_);
}

void PreviewPane::renewLoading()
{
    if (canvas_->picture().isStandIn()) {
        if (!loadingDelay_.isActive() && loadingLine_->isHidden())
            loadingDelay_.start();
        return;
    }
    loadingDelay_.stop();
    if (loadingLine_->isHidden())
        return;
    loadingLine_->hide();
    renewTexts();
}

void PreviewPane::followExport()
{
    const bool isBusy = exportSession_.isBusy();
    if (exportFooter_->isHidden() == !isBusy)
        return;
    const bool hadFocus = exportFooter_->isAncestorOf(window()->focusWidget());
    error_->setRemoveEnabled(!isBusy);
    exportFooter_->setVisible(isBusy);
    if (hadFocus && !isBusy)
        canvas_->setFocus(Qt::OtherFocusReason);
}

void PreviewPane::removeSelected()
{
    if (!exportSession_.isBusy())
        history_.removeSelected();
}

void PreviewPane::chooseBackdrop(PreviewBackdrop backdrop)
{
    preferences_.setPreviewBackdrop(isDark(), backdrop);
    const QString note = preferences_.unsavedNote();
    if (note.isEmpty() || std::exchange(hasToldUnsaved_, true))
        return;
    notice_->show(Severity::warning, note);
    announce(canvas_, note);
}

void PreviewPane::followBackdrop()
{
    const PreviewBackdrop backdrop = preferences_.previewBackdrop(isDark());
    canvas_->setBackdrop(backdropColor(backdrop));
    footer_->setBackdrop(backdrop);
}

void PreviewPane::setList(const PhotoListModel& list)
{
    list_ = &list;
    connect(list_, &PhotoListModel::shownChanged, this, &PreviewPane::renewTexts);
    renewTexts();
}

int PreviewPane::shownCount() const
{
    return list_ ? list_->rowCount() : int(session_.photos().size());
}

int PreviewPane::shownPosition() const
{
    const std::optional<FileUrl>& selected = session_.selectedPhotoID();
    if (list_)
        return list_->rowOf(selected);
    const std::optional<std::size_t> index = selected ? session_.indexOf(*selected) : std::nullopt;
    return index ? int(*index) : -1;
}

void PreviewPane::step(int places)
{
    const int position = shownPosition();
    if (shownCount() == 0 || (position < 0 && !list_))
        return;
    // From a photo that is not among those shown, to the first of them.
    const int next = position < 0 ? 0 : std::clamp(position + places, 0, shownCount() - 1);
    session_.setSelectedPhotoID(list_ ? list_->photoID(next) : session_.photos()[std::size_t(next)].id());
}

void PreviewPane::renewTexts()
{
    const ImportedPhoto* photo = session_.selectedPhoto();
    footer_->setPosition(photo ? shownPosition() : -1, shownCount());
    if (!photo) {
        footer_->setPhoto({}, {});
        canvas_->setAccessibleName(QStringLiteral("Preview, no photo selected"));
        return;
    }

    const QString name = photo->filename();
    if (hasLoadError_ && !isSheetShown_) {
        footer_->setPhoto(name, {QStringLiteral("Not readable")});
        canvas_->setAccessibleName(QStringLiteral("Preview of %1, not readable").arg(name));
        return;
    }
    const std::optional<PixelSize> output =
        framedSize(*photo, session_.resolvedRecipe(photo->id()), exportSession_.settings().size);
    if (loadingLine_->isHidden() || isSheetShown_)
        footer_->setPhoto(name, sizeDetails(*photo, output));
    else
        footer_->setPhoto(name, {QStringLiteral("Loading %1").arg(photo->pixelSize.formatted())});
    canvas_->setAccessibleName(
        QStringLiteral("Preview of %1, framed, %2").arg(name, inPixels(output.value_or(PixelSize()))));
}

} // namespace ferrow
