// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Session/ExportSession.h"
#include "Session/PhotoSession.h"

#include <QAbstractListModel>

#include <optional>
#include <unordered_set>
#include <vector>

namespace ferrow {

/// The session's photos as rows. A change of the list becomes the one removal or insertion that it mostly is, so that
/// ten thousand rows keep their scroll position and their selection.
class PhotoListModel : public QAbstractListModel {
    Q_OBJECT

public:
    PhotoListModel(PhotoSession& session, ExportSession& exportSession, QObject* parent = nullptr);

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
    void setUnreadable(const FileUrl& photoID, bool isUnreadable);
    /// The row of a photo, or -1.
    [[nodiscard]] int rowOf(const std::optional<FileUrl>& photoID) const;

private:
    void followPhotos();
    void repaint(const FileUrl& photoID);
    void repaintAll();

    PhotoSession& session_;
    ExportSession& exportSession_;
    std::vector<FileUrl> rows_;
    std::unordered_set<FileUrl> unreadable_;
};

} // namespace ferrow
