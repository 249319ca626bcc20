// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoSidebar/PhotoSidebar.h"

#include "Features/PhotoSidebar/PhotoListView.h"
#include "Features/PhotoSidebar/SearchField.h"
#include "Platform/Base/Localization.h"
#include "Session/PhotoListModel.h"
#include "Session/ThumbnailCache.h"
#include "Session/WindowTexts.h"
#include "Widgets/BareCheckBox.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/HairLine.h"
#include "Widgets/Icons.h"
#include "Widgets/ProgressLine.h"
#include "Widgets/Theme.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ferrow {

namespace {

QHBoxLayout* insetRow(QWidget* host, int height)
{
    host->setFixedHeight(Theme::current().scaled(height));
    auto* row = new QHBoxLayout(host);
    row->setContentsMargins(Space::sidebar, 0, Space::group, 0);
    row->setSpacing(Space::group);
    return row;
}

} // namespace

PhotoSidebar::PhotoSidebar(PhotoListModel& model, PhotoSession& session, EditHistory& history,
                           ExportSession& exportSession, QWidget* parent)
    : QWidget(parent), model_(model), session_(session), history_(history), exportSession_(exportSession)
{
    setObjectName(QStringLiteral("photoSidebar"));
    setGround(this, &ThemeColors::sidebar);
    buildList();
    empty_ = makeLabel({}, TextRole::body, &ThemeColors::text2);
    empty_->setContentsMargins(Space::sidebar, Space::group, Space::sidebar, 0);
    empty_->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildHeader());
    column->addWidget(buildSearch());
    column->addWidget(empty_, 1);
    column->addWidget(list_, 1);
    column->addWidget(buildImportBlock());
    column->addWidget(buildFooter());
    // The list was there first, but lies below.
    setTabOrder(includeAll_, clearAll_);
    setTabOrder(clearAll_, search_);
    setTabOrder(search_, sort_);
    setTabOrder(sort_, list_);

    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &PhotoSidebar::followSelection);
    connect(&session_, &PhotoSession::photosChanged, this, &PhotoSidebar::updateCounts);
    connect(&session_, &PhotoSession::excludedPhotoIDsChanged, this, &PhotoSidebar::updateCounts);
    connect(&session_, &PhotoSession::isImportingChanged, this, &PhotoSidebar::followImport);
    connect(&session_, &PhotoSession::importProgressed, this, [this](std::size_t read, std::size_t total) {
        importCount_->setText(WindowTexts::outOf(std::int64_t(read), std::int64_t(total)));
        importBar_->setRange(0, int(total));
        importBar_->setValue(int(read));
    });
    for (const auto signal : {&ExportSession::progressChanged, &ExportSession::isPlanningChanged})
        connect(&exportSession_, signal, this, &PhotoSidebar::updateCounts);
    connect(&model_, &PhotoListModel::filterChanged, this, &PhotoSidebar::followFilter);
    connect(&model_, &PhotoListModel::shownChanged, this, &PhotoSidebar::updateCounts);
    updateCounts();
    followImport();
    followSelection();
}

void PhotoSidebar::buildList()
{
    thumbnails_ = new ThumbnailCache(session_, this);
    list_ = new PhotoListView(model_, *thumbnails_);
    connect(list_, &PhotoListView::rowSelected, this,
            [this](int row) { session_.setSelectedPhotoID(model_.photoID(row)); });
    connect(list_, &PhotoListView::rowChosen, this, &PhotoSidebar::photoChosen);
    connect(list_, &PhotoListView::cullRequested, this, &PhotoSidebar::cullRequested);
    connect(list_, &PhotoListView::toggleRequested, this,
            [this](int row) { history_.toggleIncluded(model_.photoID(row)); });
    connect(list_, &PhotoListView::rangeToggleRequested, this, &PhotoSidebar::toggleRange);
    connect(list_, &PhotoListView::removeRequested, this, [this](int row) { history_.remove({model_.photoID(row)}); });
    connect(list_, &PhotoListView::contextMenuRequestedAt, this,
            [this](int row, const QPoint& place) { showMenu(model_.photoID(row), place); });
}

QWidget* PhotoSidebar::buildHeader()
{
    auto* header = new QWidget;
    QHBoxLayout* row = insetRow(header, Measure::sectionHeader);
    includeAll_ = new BareCheckBox(QStringLiteral("Include all photos"));
    includeAll_->setObjectName(QStringLiteral("includeAllBox"));
    includeAll_->setToolTip(QStringLiteral("Include all photos, or none"));
    connect(includeAll_, &QCheckBox::clicked, this,
            [this] { history_.setAllIncluded(session_.includedCount() < session_.photos().size()); });
    count_ = makeLabel({}, TextRole::body, &ThemeColors::text2);
    clearAll_ = new QPushButton(QStringLiteral("Clear All"));
    clearAll_->setObjectName(QStringLiteral("clearAllButton"));
    clearAll_->setToolTip(QStringLiteral("Take all photos off the list; the files stay where they are"));
    setButtonRole(clearAll_, ButtonRole::flat);
    setSmallControl(clearAll_);
    connect(clearAll_, &QPushButton::clicked, this, &PhotoSidebar::clearAllRequested);
    row->addWidget(includeAll_);
    row->addWidget(makeLabel(QStringLiteral("Photos"), TextRole::section));
    row->addWidget(count_);
    row->addStretch();
    row->addWidget(clearAll_);
    return header;
}

QWidget* PhotoSidebar::buildSearch()
{
    searchRow_ = new QWidget;
    auto* row = new QHBoxLayout(searchRow_);
    row->setContentsMargins(Space::sidebar, 0, Space::group, Space::group);
    row->setSpacing(Space::iconEdge);
    search_ = new SearchField;
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        PhotoFilter filter = model_.filter();
        filter.search = text.trimmed();
        model_.setFilter(filter);
    });
    connect(search_, &SearchField::left, this, [this] { list_->setFocus(Qt::TabFocusReason); });
    sort_ = makeIconButton(IconName::sort, QStringLiteral("Sort Photos"));
    sort_->setObjectName(QStringLiteral("sortButton"));
    connect(sort_, &QPushButton::clicked, this, &PhotoSidebar::showSortMenu);
    row->addWidget(search_, 1);
    row->addWidget(sort_);
    return searchRow_;
}

void PhotoSidebar::followFilter()
{
    if (search_->text().trimmed() != model_.filter().search)
        search_->setText(model_.filter().search);
    updateCounts();
}

void PhotoSidebar::showSortMenu()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const PhotoOrder now = session_.order();
    auto* keys = new QActionGroup(menu);
    auto* ways = new QActionGroup(menu);
    const auto add = [&](QActionGroup* group, const QString& text, const PhotoOrder& order) {
        QAction* action = menu->addAction(text, this, [this, order] { session_.setOrder(order); });
        action->setCheckable(true);
        action->setChecked(order == now);
        group->addAction(action);
    };
    add(keys, QStringLiteral("Name"), {PhotoOrder::Key::name, now.isDescending});
    add(keys, QStringLiteral("Capture Date"), {PhotoOrder::Key::captureDate, now.isDescending});
    add(keys, QStringLiteral("Added"), {PhotoOrder::Key::added, now.isDescending});
    menu->addSeparator();
    add(ways, QStringLiteral("Ascending"), {now.key, false});
    add(ways, QStringLiteral("Descending"), {now.key, true});
    menu->popup(sort_->mapToGlobal(QPoint(0, sort_->height() + Space::rowGap)));
}

QWidget* PhotoSidebar::buildImportBlock()
{
    importBlock_ = new QWidget;
    auto* column = new QVBoxLayout(importBlock_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(new HairLine);
    auto* content = new QVBoxLayout;
    content->setContentsMargins(Space::sidebar, Space::row, Space::sidebar, Space::row);
    content->setSpacing(Space::group);
    auto* row = new QHBoxLayout;
    importCount_ = makeLabel({}, TextRole::small, &ThemeColors::text2);
    auto* stop = makeIconButton(IconName::close, QStringLiteral("Stop Adding Photos"));
    stop->setObjectName(QStringLiteral("cancelImportButton"));
    setSmallControl(stop);
    connect(stop, &QPushButton::clicked, &session_, &PhotoSession::cancelImport);
    row->addWidget(makeLabel(QStringLiteral("Adding photos…"), TextRole::body), 1);
    row->addWidget(importCount_);
    row->addWidget(stop);
    importBar_ = new ProgressLine(QStringLiteral("Photos read"));
    content->addLayout(row);
    content->addWidget(importBar_);
    column->addLayout(content);
    return importBlock_;
}

QWidget* PhotoSidebar::buildFooter()
{
    footer_ = new QWidget;
    auto* column = new QVBoxLayout(footer_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(new HairLine);
    auto* line = new QWidget;
    QHBoxLayout* row = insetRow(line, Measure::footer);
    status_ = makeLabel({}, TextRole::small, &ThemeColors::text2);
    status_->setObjectName(QStringLiteral("includedCount"));
    row->addWidget(status_);
    column->addWidget(line);
    return footer_;
}

void PhotoSidebar::followSelection()
{
    list_->showSelected(model_.rowOf(session_.selectedPhotoID()));
}

void PhotoSidebar::followImport()
{
    importBlock_->setVisible(session_.isImporting());
    empty_->setText(session_.isImporting() ? QString() : QStringLiteral("No photos yet"));
    importCount_->clear();
    importBar_->setRange(0, 0);
}

void PhotoSidebar::toggleRange(int from, int to)
{
    std::vector<FileUrl> range;
    for (int row = std::min(from, to); row <= std::max(from, to); ++row)
        range.push_back(model_.photoID(row));
    history_.setIncluded(range, !model_.isIncluded(to));
}

void PhotoSidebar::updateCounts()
{
    const auto total = std::int64_t(session_.photos().size());
    const auto included = std::int64_t(session_.includedCount());
    const bool locked = exportSession_.isBusy();
    empty_->setVisible(model_.rowCount() == 0);
    if (total > 0)
        empty_->setText(QStringLiteral("No photo matches"));
    else if (!session_.isImporting())
        empty_->setText(QStringLiteral("No photos yet"));
    list_->setVisible(model_.rowCount() > 0);
    searchRow_->setVisible(total > 0);
    sort_->setEnabled(!locked);
    footer_->setVisible(total > 0);
    list_->setLocked(locked);
    includeAll_->setVisible(total > 0);
    includeAll_->setEnabled(!locked);
    includeAll_->setCheckState(included == 0 ? Qt::Unchecked : included == total ? Qt::Checked : Qt::PartiallyChecked);
    const std::int64_t shown = model_.rowCount();
    count_->setText(total == 0       ? QString()
                    : shown == total ? Localization::number(total)
                                     : WindowTexts::outOf(shown, total));
    clearAll_->setVisible(total > 0);
    clearAll_->setEnabled(!locked);
    if (exportSession_.isRunning()) {
        const ExportProgress& progress = *exportSession_.progress();
        status_->setText(WindowTexts::exported(progress.exported, progress.counts.total));
    } else {
        status_->setText(WindowTexts::willBeExported(included, total));
    }
    followSelection();
}

void PhotoSidebar::showMenu(const FileUrl& photoID, const QPoint& place)
{
    const bool locked = exportSession_.isBusy();
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const QString& text, bool enabled, const std::function<void()>& verb) {
        menu->addAction(text, this, verb)->setEnabled(enabled);
    };
    add(session_.isIncluded(photoID) ? QStringLiteral("Leave Out of Export") : QStringLiteral("Include in Export"),
        !locked, [this, photoID] { history_.toggleIncluded(photoID); });
    menu->addSeparator();
    add(QStringLiteral("Copy Framing"), true, [this, photoID] { history_.copyFraming(photoID); });
    add(QStringLiteral("Paste Framing"), !locked && history_.canPasteFraming(),
        [this, photoID] { history_.pasteFraming({photoID}); });
    add(QStringLiteral("Use Batch Framing"), !locked && session_.hasOwnRecipe(photoID),
        [this, photoID] { history_.useBatch(photoID); });
    menu->addSeparator();
    add(QStringLiteral("Photo Details…"), true, [this, photoID] { emit detailsRequested(photoID); });
    add(QStringLiteral("Show in Folder"), true, [this, photoID] { emit showInFolderRequested(photoID); });
    add(QStringLiteral("Remove from List"), !locked, [this, photoID] { history_.remove({photoID}); });
    menu->popup(place);
}

} // namespace ferrow
