// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoListModel.h"

#include "Session/WindowTexts.h"

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

QString stateText(PhotoExportState state)
{
    switch (state) {
    case PhotoExportState::waiting:
        return QStringLiteral("waiting");
    case PhotoExportState::exporting:
        return QStringLiteral("being exported");
    case PhotoExportState::exported:
        return QStringLiteral("exported");
    case PhotoExportState::skipped:
        return QStringLiteral("skipped");
    case PhotoExportState::failed:
        return QStringLiteral("failed");
    case PhotoExportState::canceled:
        break;
    }
    return QStringLiteral("canceled");
}

} // namespace

PhotoListModel::PhotoListModel(PhotoSession& session, ExportSession& exportSession, PhotoWarnings& warnings,
                               QObject* parent)
    : QAbstractListModel(parent), session_(session), exportSession_(exportSession), warnings_(warnings)
{
    followPhotos();
    connect(&session, &PhotoSession::photosChanged, this, &PhotoListModel::followPhotos);
    connect(&session, &PhotoSession::excludedPhotoIDsChanged, this, [this] {
        if (filter_.kind != PhotoFilter::Kind::all)
            followPhotos();
        repaintAll();
    });
    connect(&warnings, &PhotoWarnings::changed, this, [this] {
        if (filter_.kind == PhotoFilter::Kind::withWarnings)
            followPhotos();
        repaintAll();
    });
    connect(&session, &PhotoSession::photoRecipesChanged, this, &PhotoListModel::repaintAll);
    connect(&session, &PhotoSession::recipeScopeChanged, this, &PhotoListModel::repaintAll);
    connect(&exportSession, &ExportSession::progressChanged, this, &PhotoListModel::repaintAll);
    connect(&exportSession, &ExportSession::reportChanged, this, &PhotoListModel::repaintAll);
    connect(&exportSession, &ExportSession::photoStarted, this, &PhotoListModel::repaint);
}

int PhotoListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(rows_.size());
}

const ImportedPhoto* PhotoListModel::photo(int row) const
{
    return session_.photo(photoID(row));
}

std::optional<PhotoExportState> PhotoListModel::exportState(int row) const
{
    return exportSession_.photoState(photoID(row));
}

int PhotoListModel::rowOf(const std::optional<FileUrl>& photoID) const
{
    if (!photoID)
        return -1;
    if (filter_ != PhotoFilter()) {
        const auto found = filteredRows_.find(*photoID);
        return found == filteredRows_.end() ? -1 : found->second;
    }
    const std::optional<std::size_t> position = session_.indexOf(*photoID);
    return position && *position < rows_.size() ? int(*position) : -1;
}

QVariant PhotoListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const ImportedPhoto* shown = photo(index.row());
    if (!shown)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return shown->filename();
    case Qt::ToolTipRole:
        return WindowTexts::place(shown->url);
    case Qt::CheckStateRole:
        return isIncluded(index.row()) ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole: {
        QStringList parts{shown->filename(), shown->pixelSize.formatted()};
        if (isUnreadable(index.row()))
            parts << QStringLiteral("not readable");
        parts << warnings(index.row());
        if (hasOwnFraming(index.row()))
            parts << (areOwnFramingsUsed() ? QStringLiteral("own framing") : QStringLiteral("own framing, not used"));
        if (const std::optional<PhotoExportState> state = exportState(index.row()))
            parts << stateText(*state);
        return parts.join(QStringLiteral(", "));
    }
    default:
        return {};
    }
}

Qt::ItemFlags PhotoListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

void PhotoListModel::followPhotos()
{
    std::vector<FileUrl> now;
    now.reserve(session_.photos().size());
    for (const ImportedPhoto& photo : session_.photos())
        if (passes(photo))
            now.push_back(photo.id());
    filteredRows_.clear();
    if (filter_ != PhotoFilter())
        for (std::size_t row = 0; row < now.size(); ++row)
            filteredRows_.try_emplace(now[row], int(row));

    // Whoever adds a file again may have mended it.
    std::erase_if(unreadable_, [this](const FileUrl& photoID) { return !session_.indexOf(photoID); });

    const auto [oldBegin, newBegin] = std::ranges::mismatch(rows_, now);
    const auto first = int(oldBegin - rows_.begin());
    const auto [oldEnd, newEnd] = std::mismatch(rows_.rbegin(), std::make_reverse_iterator(oldBegin), now.rbegin(),
                                                std::make_reverse_iterator(newBegin));
    const int removed = int(oldEnd.base() - oldBegin);
    const int added = int(newEnd.base() - newBegin);

    if (removed > 0 && added > 0) {
        beginResetModel();
        rows_ = std::move(now);
        endResetModel();
    } else if (removed > 0) {
        beginRemoveRows({}, first, first + removed - 1);
        rows_ = std::move(now);
        endRemoveRows();
    } else if (added > 0) {
        beginInsertRows({}, first, first + added - 1);
        rows_ = std::move(now);
        endInsertRows();
    }
    if (removed > 0 || added > 0)
        emit shownChanged();
}

bool PhotoListModel::passes(const ImportedPhoto& photo) const
{
    if (!filter_.search.isEmpty() && !photo.filename().contains(filter_.search, Qt::CaseInsensitive))
        return false;
    const FileUrl& photoID = photo.id();
    switch (filter_.kind) {
    case PhotoFilter::Kind::all:
        return true;
    case PhotoFilter::Kind::included:
        return session_.isIncluded(photoID);
    case PhotoFilter::Kind::withWarnings:
        break;
    }
    return !warnings_.of(photoID).isEmpty();
}

void PhotoListModel::setFilter(const PhotoFilter& filter)
{
    if (std::exchange(filter_, filter) == filter)
        return;
    followPhotos();
    emit filterChanged();
}

QStringList PhotoListModel::warnings(int row) const
{
    return warnings_.of(photoID(row));
}

void PhotoListModel::setUnreadable(const FileUrl& photoID, bool isUnreadable)
{
    const bool changes = isUnreadable ? unreadable_.insert(photoID).second : unreadable_.erase(photoID) > 0;
    if (changes)
        repaint(photoID);
}

void PhotoListModel::repaint(const FileUrl& photoID)
{
    if (const int row = rowOf(photoID); row >= 0)
        emit dataChanged(index(row), index(row));
}

void PhotoListModel::repaintAll()
{
    if (!rows_.empty())
        emit dataChanged(index(0), index(rowCount() - 1));
}

} // namespace ferrow
