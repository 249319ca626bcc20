// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/ExportSheets/ExportTexts.h"
#include "Session/ThumbnailCache.h"
#include "Widgets/SheetList.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

#include <vector>

namespace ferrow {

/// The rows of a report; headings can't be chosen.
class ReportModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit ReportModel(std::vector<ExportTexts::ReportRow> rows, QObject* parent = nullptr);

    [[nodiscard]] const ExportTexts::ReportRow& row(int index) const { return rows_[std::size_t(index)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    void renew(const FileUrl& photo);

private:
    std::vector<ExportTexts::ReportRow> rows_;
};

/// Thumbnail, name and reason, with a button that shows the photo in its folder.
class ReportRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    ReportRowDelegate(const ReportModel& model, ThumbnailCache& thumbnails, QObject* parent = nullptr);

    /// Where the button of a row lies, given the row's rectangle.
    [[nodiscard]] static QRect folderButton(const QRect& row);
    /// The row whose button the pointer is on; -1 for none.
    void setHoveredButton(int row) { hoveredButton_ = row; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void paintHeading(QPainter& painter, const QRect& rect, const QString& title) const;
    void paintThumbnail(QPainter& painter, const QRect& box, const FileUrl& photo) const;
    void paintButton(QPainter& painter, const QRect& button, bool hovered) const;
    [[nodiscard]] int mostReasonLines() const;

    const ReportModel& model_;
    ThumbnailCache& thumbnails_;
    int hoveredButton_ = -1;
};

/// What failed and what was skipped. Space shows the chosen row's photo in its folder; the context menu too.
class ReportList : public SheetList {
    Q_OBJECT

public:
    ReportList(std::vector<ExportTexts::ReportRow> rows, PhotoSession& session, QWidget* parent = nullptr);

signals:
    void showInFolderRequested(const ferrow::FileUrl& file);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    [[nodiscard]] int buttonAt(const QPoint& position) const;
    void hoverButton(int row);
    void showInFolder(int row);

    ThumbnailCache thumbnails_;
    ReportModel model_;
    ReportRowDelegate delegate_;
    int hoveredButton_ = -1;
};

} // namespace ferrow
