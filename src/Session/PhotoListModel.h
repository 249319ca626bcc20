// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"
#include "Session/PhotoWarnings.h"

#include <QAbstractListModel>

#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ferrow {

/// Which photos of the session are shown as rows. The others are exported all the same.
struct PhotoFilter {
    enum class Kind { all, included, withWarnings };

    Kind kind = Kind::all;
    QString search; ///< Stands anywhere in the name, in capitals or not; empty for any name.

    bool operator==(const PhotoFilter&) const = default;
};

/// The session's photos as rows, for the list and the contact sheet alike. A change of the list becomes the one removal
/// or insertion that it mostly is, so that ten thousand rows keep their scroll position and their selection.
class PhotoListModel : public QAbstractListModel {
    Q_OBJECT

public:
    PhotoListModel(PhotoSession& session, ExportSession& exportSession, PhotoWarnings& warnings,
                   QObject* parent = nullptr);

    [[nodiscard]] const PhotoFilter& filter() const { return filter_; }
    void setFilter(const PhotoFilter& filter);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    /// DisplayRole: file name. CheckStateRole: inclusion. AccessibleTextRole: all that the row shows.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

    [[nodiscard]] const FileUrl& photoID(int row) const { return rows_[std::size_t(row)]; }
    [[nodiscard]] const ImportedPhoto* photo(int row) const;
    [[nodiscard]] bool isIncluded(int row) const { return session_.isIncluded(photoID(row)); }
    [[nodiscard]] bool hasOwnFraming(int row) const { return session_.hasOwnRecipe(photoID(row)); }
    [[nodiscard]] bool areOwnFramingsUsed() const { return session_.recipeScope() == RecipeScope::selected; }
    [[nodiscard]] std::optional<PhotoExportState> exportState(int row) const;
    /// Its preview could not be decoded when it was last looked at.
    [[nodiscard]] bool isUnreadable(int row) const { return unreadable_.contains(photoID(row)); }
    /// What the check before an export would say of it, in a few words each.
    [[nodiscard]] QStringList warnings(int row) const;
    void setUnreadable(const FileUrl& photoID, bool isUnreadable);
    /// The row of a photo, or -1.
    [[nodiscard]] int rowOf(const std::optional<FileUrl>& photoID) const;

signals:
    void filterChanged();
    /// Other rows than before, by whatever cause.
    void shownChanged();

private:
    void followPhotos();
    [[nodiscard]] bool passes(const ImportedPhoto& photo) const;
    void repaint(const FileUrl& photoID);
    void repaintAll();

    PhotoSession& session_;
    ExportSession& exportSession_;
    PhotoWarnings& warnings_;
    PhotoFilter filter_;
    std::vector<FileUrl> rows_;
    std::unordered_map<FileUrl, int> filteredRows_; ///< Where the rows are not the session's photos one for one.
    std::unordered_set<FileUrl> unreadable_;
};

} // namespace ferrow
