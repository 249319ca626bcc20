// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/ContentView.h"

#include "Features/ContactSheet/ContactSheet.h"
#include "Features/ContactSheet/SheetGrid.h"
#include "Features/Inspector/InspectorView.h"
#include "Features/PhotoDetails/PhotoDetails.h"
#include "Features/PhotoSidebar/PhotoListView.h"
#include "Features/PhotoSidebar/PhotoSidebar.h"
#include "Features/PhotoSidebar/SearchField.h"
#include "Features/PreviewPane/PreviewPane.h"
#include "Features/SettingsView/SettingsView.h"
#include "Features/ShortcutsWindow/ShortcutsWindow.h"
#include "Features/WindowParts/MainToolBar.h"
#include "Features/WindowParts/WindowActions.h"
#include "Features/WindowParts/WindowColumns.h"
#include "Platform/Desktop/Portal.h"
#include "Platform/Files/ImageTypes.h"
#include "Session/EditSteps.h"
#include "Session/WindowTexts.h"
#include "Widgets/ConfirmSheet.h"
#include "Widgets/HairLine.h"
#include "Widgets/Overlay.h"
#include "Widgets/Theme.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

namespace ferrow {

namespace {

constexpr QSize leastSize(900, 684);
constexpr QSize idealSize(1'440, 900);

/// Judged by the names alone, which costs no disk; 0 where folders or other files are among them.
int carriedPhotoCount(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    const bool arePhotos = std::ranges::all_of(urls, [](const QUrl& url) {
        return ImageTypes::isImageExtension(url.fileName().section(u'.', -1).toLatin1());
    });
    return arePhotos ? carriedFileCount(data) : 0;
}

} // namespace

ContentView::ContentView(Preferences& preferences, WindowServices services)
    : preferences_(preferences), services_(std::move(services)), photoWarnings_(session_, exportSession_),
      photoList_(session_, exportSession_, photoWarnings_), history_(session_, exportSession_), alerts_(*this),
      presetFlow_(*this, presetLibrary_, session_, exportSession_, history_, alerts_),
      exportFlow_(*this, session_, exportSession_, preferences_, services_, alerts_)
{
    setObjectName(QStringLiteral("contentView"));
    setWindowTitle(QStringLiteral("Ferrow"));
    // Where the desktop enlarges everything, a small screen has less room than that.
    const QSize room = screen()->availableSize() - QSize(Space::emptyBlocks, Space::emptyBlocks);
    setMinimumSize(leastSize.boundedTo(room));
    resize(idealSize.boundedTo(room));
    setAcceptDrops(true);

    actions_ = new WindowActions(*this, history_.stack());
    buildViews();
    connectActions();
    connectModels();
    updateActions();
    qApp->installEventFilter(this);
}

ContentView::~ContentView()
{
    qApp->removeEventFilter(this);
    disconnect(&exportSession_, nullptr, this, nullptr);
    disconnect(&session_, nullptr, this, nullptr);
    // Views refer to the models, which go before the base class would delete its children.
    qDeleteAll(findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
}

void ContentView::buildViews()
{
    toolBar_ = new MainToolBar(*actions_);
    sidebar_ = new PhotoSidebar(photoList_, session_, history_, exportSession_);
    preview_ = new PreviewPane(session_, previewLoader_, renderQueue_, exportSession_, history_, preferences_);
    sheet_ = new ContactSheet(photoList_, session_, photoWarnings_, history_, exportSession_, preferences_);
    preview_->setList(photoList_);
    preview_->setSheet(sheet_, sheet_->sizeControl());
    inspector_ = new InspectorView(session_, history_, exportSession_);
    preview_->setObjectName(QStringLiteral("previewPane"));
    inspector_->setObjectName(QStringLiteral("inspector"));
    columns_ = new WindowColumns(sidebar_, preview_, inspector_);
    columns_->setDrawerFocus(sidebar_->list());
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(toolBar_);
    column->addWidget(new HairLine);
    column->addWidget(columns_, 1);
    details_ = new PhotoDetails(session_, history_, inspector_);

    connect(toolBar_, &MainToolBar::zoomChosen, preview_, &PreviewPane::setZoom);
    connect(toolBar_, &MainToolBar::compareHeld, this, &ContentView::setComparing);
    connect(preview_, &PreviewPane::zoomChanged, this, &ContentView::followZoom);
    connect(preview_, &PreviewPane::addPhotosRequested, this, &ContentView::choosePhotos);
    connect(preview_, &PreviewPane::addFolderRequested, this, &ContentView::chooseFolder);
    connect(preview_, &PreviewPane::cancelExportRequested, &exportFlow_, &ExportFlow::cancelExport);
    connect(preview_, &PreviewPane::retryRequested, this, &ContentView::loadSelectedPreview);
    connect(preview_, &PreviewPane::showInFolderRequested, actions_->showInFolder, &QAction::trigger);
    connect(preview_, &PreviewPane::focusHandedOn, this, [this] {
        if (sidebar_->list()->isVisible())
            sidebar_->list()->setFocus(Qt::OtherFocusReason);
    });
    connect(preview_, &PreviewPane::sheetRequested, this, [this] { showSheet(true); });
    connect(preview_, &PreviewPane::cullRequested, this, &ContentView::cull);
    connect(sidebar_, &PhotoSidebar::cullRequested, this, &ContentView::cull);
    connect(sheet_->grid(), &SheetGrid::cullRequested, this, &ContentView::cull);
    connect(sheet_->grid(), &SheetGrid::openRequested, this, [this] { showSheet(false); });
    connect(sheet_->grid(), &SheetGrid::contextMenuRequestedAt, sidebar_, &PhotoSidebar::showMenu);
    connect(inspector_, &InspectorView::importLogoRequested, this, &ContentView::importLogo);
    connect(&logoImporter_, &LogoImporter::isImportingChanged, inspector_,
            [this] { inspector_->setImportingLogo(logoImporter_.isImporting()); });
    connect(sidebar_, &PhotoSidebar::clearAllRequested, this, &ContentView::clearAll);
    connect(sidebar_, &PhotoSidebar::showInFolderRequested, this,
            [this](const FileUrl& photoID) { services_.showItems({photoID}); });
    connect(sidebar_, &PhotoSidebar::detailsRequested, this, [this](const FileUrl& photoID) {
        columns_->closeDrawer();
        session_.setSelectedPhotoID(photoID);
        details_->open();
    });
    connect(sidebar_, &PhotoSidebar::photoChosen, columns_, &WindowColumns::closeDrawer);
    connect(columns_, &WindowColumns::narrowChanged, preview_, &PreviewPane::setNarrow);
    connect(columns_, &WindowColumns::sidebarShownChanged, this, [this] {
        actions_->toggleSidebar->setChecked(columns_->isNarrow() && columns_->isSidebarShown());
        toolBar_->setSidebarShown(columns_->isSidebarShown());
    });
    toolBar_->setZoom(0, true);
}

void ContentView::connectActions()
{
    const auto on = [this](QAction* action, auto verb) { connect(action, &QAction::triggered, this, verb); };
    on(actions_->addPhotos, &ContentView::choosePhotos);
    on(actions_->addFolder, &ContentView::chooseFolder);
    on(actions_->clearAll, &ContentView::clearAll);
    on(actions_->exportBatch, [this] { exportFlow_.showExportOptions(); });
    on(actions_->quit, &QWidget::close);
    on(actions_->photoDetails, [this] { details_->toggle(); });
    on(actions_->showInFolder, [this] {
        if (const auto& photoID = session_.selectedPhotoID())
            services_.showItems({*photoID});
    });
    on(actions_->copyFraming, [this] {
        if (const auto& photoID = session_.selectedPhotoID())
            history_.copyFraming(*photoID);
    });
    on(actions_->pasteFraming, [this] {
        if (const auto& photoID = session_.selectedPhotoID())
            history_.pasteFraming({*photoID});
    });
    on(actions_->presets, [this] { presetFlow_.showPresets(); });
    on(actions_->settings, &ContentView::showSettings);
    on(actions_->shortcuts, &ContentView::showShortcuts);
    on(actions_->zoomIn, [this] { preview_->isSheetShown() ? sheet_->grid()->grow() : preview_->zoomIn(); });
    on(actions_->zoomOut, [this] { preview_->isSheetShown() ? sheet_->grid()->shrink() : preview_->zoomOut(); });
    on(actions_->search, &ContentView::searchPhotos);
    on(actions_->invertIncluded, [this] { history_.invertIncluded(); });
    on(actions_->contactSheet, [this] { showSheet(!preview_->isSheetShown()); });
    // A press takes the tick away, and where the zoom was there already nothing else gives it back.
    on(actions_->zoomToFit, [this] {
        preview_->zoomToFit();
        followZoom();
    });
    on(actions_->zoomToActualPixels, [this] {
        preview_->zoomToActualPixels();
        followZoom();
    });
    on(actions_->toggleSidebar, [this] { columns_->setSidebarShown(!columns_->isSidebarShown()); });
    on(actions_->previousCaption, [this] { inspector_->stepCaption(-1); });
    on(actions_->nextCaption, [this] { inspector_->stepCaption(1); });
    on(actions_->moveCaptionLeft, [this] { inspector_->moveCaption(-1); });
    on(actions_->moveCaptionRight, [this] { inspector_->moveCaption(1); });
    on(actions_->nextArea, [this] { moveToArea(1); });
    on(actions_->previousArea, [this] { moveToArea(-1); });
}

void ContentView::connectModels()
{
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &ContentView::loadSelectedPreview);
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &ContentView::updateActions);
    connect(&session_, &PhotoSession::photosChanged, this, &ContentView::updateActions);
    connect(&session_, &PhotoSession::isImportingChanged, this, &ContentView::updateActions);
    // Later: whoever imported is told of that first.
    connect(&session_, &PhotoSession::isImportingChanged, this, &ContentView::importWaiting, Qt::QueuedConnection);
    connect(&exportSession_, &ExportSession::progressChanged, this, &ContentView::importWaiting, Qt::QueuedConnection);
    connect(&exportSession_, &ExportSession::isPlanningChanged, this, &ContentView::importWaiting,
            Qt::QueuedConnection);
    connect(&history_, &EditHistory::canPasteFramingChanged, this, &ContentView::updateActions);
    connect(&previewLoader_, &PreviewLoader::photoChanged, this, &ContentView::updateActions);
    connect(&previewLoader_, &PreviewLoader::isLoadingChanged, this, &ContentView::updateActions);
    connect(&previewLoader_, &PreviewLoader::photoChanged, this, [this] {
        if (previewLoader_.photo())
            photoList_.setUnreadable(previewLoader_.photo()->id(), false);
    });
    connect(&exportSession_, &ExportSession::progressChanged, this, &ContentView::updateActions);
    connect(&exportSession_, &ExportSession::isPlanningChanged, this, &ContentView::updateActions);
    connect(&exportSession_, &ExportSession::reportChanged, this, &ContentView::updateActions);
    connect(&exportFlow_, &ExportFlow::optionsOpening, preview_, &PreviewPane::endReview);
    connect(&exportFlow_, &ExportFlow::reviewRequested, preview_, &PreviewPane::review);
    connect(preview_, &PreviewPane::backToExportRequested, &exportFlow_, &ExportFlow::showExportOptions);
    connect(&exportFlow_, &ExportFlow::began, columns_, &WindowColumns::closeDrawer);
}

void ContentView::updateActions()
{
    const bool busy = exportSession_.isBusy();
    const bool hasPhotos = !session_.photos().empty();
    const bool hasSelection = session_.selectedPhoto() != nullptr;
    const bool mayAdd = !busy && !session_.isImporting();
    toolBar_->setAddEnabled(mayAdd);
    actions_->addPhotos->setEnabled(mayAdd);
    actions_->addFolder->setEnabled(mayAdd);
    actions_->clearAll->setEnabled(!busy && hasPhotos);
    actions_->search->setEnabled(hasPhotos);
    actions_->invertIncluded->setEnabled(!busy && hasPhotos);
    actions_->exportBatch->setEnabled(!busy && hasPhotos);
    actions_->presets->setEnabled(!busy);
    for (QAction* action :
         {actions_->previousCaption, actions_->nextCaption, actions_->moveCaptionLeft, actions_->moveCaptionRight})
        action->setEnabled(!busy);
    actions_->undo->setEnabled(!busy && history_.stack().canUndo());
    actions_->redo->setEnabled(!busy && history_.stack().canRedo());
    actions_->copyFraming->setEnabled(hasSelection);
    actions_->pasteFraming->setEnabled(!busy && hasSelection && history_.canPasteFraming());
    actions_->photoDetails->setEnabled(hasSelection);
    actions_->showInFolder->setEnabled(hasSelection);
    // The one before stays published while the next is on its way, and where that can't be read.
    const std::optional<ImportedPhoto>& loaded = previewLoader_.photo();
    toolBar_->setComparable(hasSelection &&
                            (previewLoader_.isLoading() || (loaded && loaded->id() == session_.selectedPhotoID())));
    inspector_->setLocked(busy);
    details_->setLocked(busy);
}

void ContentView::choosePhotos()
{
    services_.panels.open(this, {.kind = PanelRequest::Kind::photos, .title = QStringLiteral("Add Photos")},
                          [this](const std::vector<FileUrl>& urls) { importRoots(urls); });
}

void ContentView::chooseFolder()
{
    services_.panels.open(this,
                          {.kind = PanelRequest::Kind::folder,
                           .title = QStringLiteral("Add a Folder of Photos"),
                           .prompt = QStringLiteral("Add Folder")},
                          [this](const std::vector<FileUrl>& urls) { importRoots(urls); });
}

void ContentView::importRoots(const std::vector<FileUrl>& urls)
{
    // Chosen in a panel that was open before the import began.
    if (session_.isImporting() && !urls.empty()) {
        alerts_.present(QStringLiteral("Photos Are Still Being Added"),
                        QStringLiteral("Add these once the others have been read."));
        return;
    }
    session_.importPhotos(urls, [this](const ImportOutcome& outcome) {
        if (const std::optional<PresentedError> message = WindowTexts::importMessage(outcome))
            alerts_.present(*message);
    });
}

void ContentView::loadSelectedPreview()
{
    // The sheet has pictures of its own; the single photo is read when it comes back.
    if (preview_->isSheetShown())
        return;
    previewLoad_.request_stop();
    const ImportedPhoto* selected = session_.selectedPhoto();
    previewLoad_ = previewLoader_.load(selected ? std::optional(*selected) : std::nullopt,
                                       [this, photoID = session_.selectedPhotoID()](const std::exception_ptr& error) {
                                           preview_->showLoadError(ErrorAlerts::text(error));
                                           photoList_.setUnreadable(*photoID, true);
                                       });
}

void ContentView::importLogo()
{
    const QString title = session_.activeRecipe().logo ? QStringLiteral("Replace Logo") : QStringLiteral("Import Logo");
    services_.panels.open(this, {.kind = PanelRequest::Kind::logo, .title = title, .prompt = title},
                          [this, framing = Framing::active(session_)](const std::vector<FileUrl>& urls) {
                              importLogoFile(urls.front(), framing);
                          });
}

void ContentView::importLogoFile(const FileUrl& url, const Framing& framing)
{
    logoImporter_.importLogo(
        url, [this, framing](const LogoAssetReference& asset) { useLogo(asset, framing); },
        [this](const std::exception_ptr& error) { alerts_.present(QStringLiteral("Couldn’t Import Logo"), error); });
}

void ContentView::useLogo(const LogoAssetReference& asset, const Framing& framing)
{
    if (exportSession_.isBusy()) {
        alerts_.present(
            QStringLiteral("The Logo Wasn’t Added"),
            QStringLiteral("An export began before it had been read. Import it again when the export is done."));
        return;
    }
    if (framing.photoID && !session_.indexOf(*framing.photoID))
        return;
    // As undo does, the window shows where it happens.
    session_.setRecipeScope(framing.scope);
    if (framing.photoID)
        session_.setSelectedPhotoID(framing.photoID);
    history_.setLogoAsset(asset);
}

void ContentView::clearAll()
{
    history_.clearAll();
    previewLoader_.clear();
}

void ContentView::stopAllAccess()
{
    exportSession_.cancel();
    session_.accessBroker().stopAllAccess();
}

void ContentView::showSettings()
{
    if (!settings_) {
        settings_ = new SettingsView(preferences_, this);
        settings_->setAttribute(Qt::WA_DeleteOnClose);
        if (services_.missingWallsNote)
            settings_->setSystemNote(services_.missingWallsNote());
    }
    settings_->show();
    settings_->raise();
    settings_->activateWindow();
}

void ContentView::showShortcuts()
{
    std::vector<ShortcutGroup> groups;
    for (const ListedShortcut& shortcut : actions_->listedShortcuts()) {
        if (groups.empty() || groups.back().title != shortcut.group)
            groups.push_back({shortcut.group, {}});
        groups.back().shortcuts.push_back({shortcut.text, shortcut.keys});
    }
    auto* window = new ShortcutsWindow(groups, this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
}

void ContentView::showSheet(bool isShown)
{
    preview_->setSheetShown(isShown);
    toolBar_->setSheetShown(isShown);
    followZoom();
    updateActions();
    const std::optional<ImportedPhoto>& loaded = previewLoader_.photo();
    if (isShown)
        previewLoad_.request_stop();
    else if (!loaded || loaded->id() != session_.selectedPhotoID() || previewLoader_.isLoading())
        loadSelectedPreview();
}

void ContentView::searchPhotos()
{
    if (!columns_->isSidebarShown())
        columns_->setSidebarShown(true);
    sidebar_->searchField()->setFocus(Qt::ShortcutFocusReason);
    sidebar_->searchField()->selectAll();
}

void ContentView::cull(bool included)
{
    const std::optional<FileUrl> selected = session_.selectedPhotoID();
    if (!selected || !session_.photo(*selected) || exportSession_.isBusy())
        return;
    const int next = photoList_.rowOf(selected) + 1;
    history_.setIncludedAndGoOn(*selected, included,
                                next > 0 && next < photoList_.rowCount() ? std::optional(photoList_.photoID(next))
                                                                         : std::nullopt);
}

void ContentView::followZoom()
{
    toolBar_->setZoom(preview_->zoom(), preview_->isFit());
}

void ContentView::setComparing(bool comparing)
{
    preview_->setComparing(comparing);
}

void ContentView::moveToArea(int direction)
{
    // The details lie over the inspector.
    const std::array<QWidget*, 4> areas{toolBar_, sidebar_, preview_,
                                        details_->isVisible() ? static_cast<QWidget*>(details_) : inspector_};
    const QWidget* focused = QApplication::focusWidget();
    const auto present =
        std::ranges::find_if(areas, [&](const QWidget* area) { return focused && area->isAncestorOf(focused); });
    const auto count = int(areas.size());
    int position = present == areas.end() ? (direction > 0 ? -1 : 0) : int(present - areas.begin());
    for (int tries = 0; tries < count; ++tries) {
        position = (position + direction + count) % count;
        QWidget* area = areas[std::size_t(position)];
        QWidget* list = area == sidebar_   ? static_cast<QWidget*>(sidebar_->list())
                        : area == preview_ ? static_cast<QWidget*>(sheet_->grid())
                                           : nullptr;
        if (list && list->isVisible()) {
            list->setFocus(Qt::TabFocusReason);
            return;
        }
        const QList<QWidget*> inside = area->findChildren<QWidget*>();
        const auto first = std::ranges::find_if(inside, [](const QWidget* child) {
            return child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus);
        });
        if (area->isVisible() && first != inside.end()) {
            (*first)->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

/// One file over the logo's well is a logo, all else is for the list.
ContentView::DropTarget ContentView::dropTargetAt(const QPoint& globalPosition, const QMimeData& mime) const
{
    if (Overlay::topmost(this) || exportSession_.isBusy())
        return DropTarget::none;
    if (inspector_->isLogoWellAt(globalPosition) && carriedFileCount(mime) == 1)
        return logoImporter_.isImporting() ? DropTarget::none : DropTarget::logo;
    return session_.isImporting() ? DropTarget::none : DropTarget::photos;
}

void ContentView::showDropTarget(DropTarget target, const QMimeData* mime)
{
    if (std::exchange(dropTarget_, target) == target)
        return;
    preview_->setDropTarget(target == DropTarget::photos ? std::optional(carriedPhotoCount(*mime)) : std::nullopt);
    inspector_->setLogoDropTarget(target == DropTarget::logo);
}

bool ContentView::handleDrag(const QWidget& widget, QEvent* event)
{
    if (event->type() == QEvent::DragLeave) {
        showDropTarget(DropTarget::none, nullptr);
        return false;
    }
    auto* drag = static_cast<QDropEvent*>(event);
    const QMimeData& mime = *drag->mimeData();
    if (!carriesFiles(mime))
        return false;
    if (event->type() == QEvent::DragEnter)
        showDropTarget(DropTarget::none, nullptr); // Others may have been dragged before, and lost without a word.
    const DropTarget target = dropTargetAt(widget.mapToGlobal(drag->position()).toPoint(), mime);
    showDropTarget(event->type() == QEvent::Drop ? DropTarget::none : target, &mime);
    if (target == DropTarget::none) {
        drag->ignore();
        return true;
    }
    drag->setDropAction(Qt::CopyAction);
    drag->accept();
    if (event->type() != QEvent::Drop)
        return true;
    const std::vector<FileUrl> files = droppedFiles(mime);
    if (target == DropTarget::photos)
        importRoots(files);
    else if (!files.empty())
        importLogoFile(files.front(), Framing::active(session_));
    return true;
}

bool ContentView::handleCompareKey(const QEvent& event)
{
    const auto& key = static_cast<const QKeyEvent&>(event);
    if (key.key() != Qt::Key_Backslash || key.modifiers() != Qt::NoModifier ||
        qobject_cast<QLineEdit*>(QApplication::focusWidget()))
        return false;
    if (!key.isAutoRepeat())
        setComparing(event.type() == QEvent::KeyPress && !Overlay::topmost(this));
    return true;
}

bool ContentView::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    // Files are for the window, whichever field they are over.
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::DragLeave:
    case QEvent::Drop: {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->window() == this && handleDrag(*widget, event))
            return true;
        break;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->window() == this && handleCompareKey(*event))
            return true;
        break;
    }
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void ContentView::closeEvent(QCloseEvent* event)
{
    if (exportSession_.isBusy() && !mayClose_ && !qApp->isSavingSession()) {
        event->ignore();
        askBeforeClosing();
        return;
    }
    session_.cancelImport();
    stopAllAccess();
    event->accept();
}

void ContentView::askBeforeClosing()
{
    if (closingQuestion_)
        return;
    const Question question{
        .title = QStringLiteral("Stop the Export and Quit?"),
        .message = QStringLiteral("Photos that are finished stay. The others are not exported."),
        .accept = QStringLiteral("Stop and Quit"),
        .leave = QStringLiteral("Keep Exporting"),
    };
    closingQuestion_ = ConfirmSheet::ask(this, question, this, [this](const Answer& answer) {
        if (answer.accepted)
            closeAtOnce();
    });
}

void ContentView::closeAtOnce()
{
    mayClose_ = true;
    close();
}

void ContentView::present(const QByteArray& activationToken)
{
    // Where the toolkit's plugin looks for it.
    if (!activationToken.isEmpty() && QGuiApplication::platformName().startsWith(QLatin1StringView("wayland")))
        qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void ContentView::importWhenFree(const std::vector<FileUrl>& urls)
{
    waitingRoots_.insert(waitingRoots_.end(), urls.begin(), urls.end());
    importWaiting();
}

void ContentView::importWaiting()
{
    if (!waitingRoots_.empty() && !session_.isImporting() && !exportSession_.isBusy())
        importRoots(std::exchange(waitingRoots_, {}));
}

} // namespace ferrow
