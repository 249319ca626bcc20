// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/ReportList.h"

#include "Widgets/Icons.h"
#include "Widgets/ListRow.h"
#include "Widgets/Theme.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace ferrow {

namespace {

using Row = ExportTexts::ReportRow;

constexpr int headingHeight = 40;
constexpr int thumbnailWidth = 56;
constexpr int thumbnailHeight = 42;
constexpr int rowPadding = 11;    ///< Above and below the thumbnail.
constexpr int measuredRows = 300; ///< Reasons of more rows than these are not measured: it would take too long.

QRect content(const QRect& row)
{
    return row.adjusted(Space::row, 0, -Space::row, 0);
}

QRect thumbnailBox(const QRect& row)
{
    return {content(row).left(), row.center().y() - thumbnailHeight / 2 + 1, thumbnailWidth, thumbnailHeight};
}

int textWidth(int rowWidth)
{
    const int taken = thumbnailWidth + Space::row + Space::group + Measure::control;
    return std::max(1, rowWidth - 2 * Space::row - taken);
}

/// Breaks a reason into the lines that a row has; the last one is elided.
QStringList reasonLines(const QString& reason, int width, int mostLines)
{
    const auto font = Theme::current().font(TextRole::small);
    QTextLayout layout(reason, font);
    QTextOption wrap;
    wrap.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(wrap);
    QStringList lines;
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.size() == mostLines - 1) {
            lines << QFontMetrics(font).elidedText(reason.mid(line.textStart()), Qt::ElideRight, width);
            break;
        }
        lines << reason.mid(line.textStart(), line.textLength());
    }
    layout.endLayout();
    return lines;
}

int textHeight(qsizetype lines)
{
    const auto& theme = Theme::current();
    return theme.lineHeight(TextRole::body) + int(lines) * theme.lineHeight(TextRole::small);
}

} // namespace

ReportModel::ReportModel(std::vector<Row> rows, QObject* parent) : QAbstractListModel(parent), rows_(std::move(rows)) {}

int ReportModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(rows_.size());
}

QVariant ReportModel::data(const QModelIndex& index, int role) const
{
    const auto& entry = row(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return entry.title;
    case Qt::AccessibleTextRole:
        return entry.detail.isEmpty() ? entry.title : QStringLiteral("%1: %2").arg(entry.title, entry.detail);
    case Qt::AccessibleDescriptionRole:
        return entry.photo.isEmpty() ? QString() : QStringLiteral("Space shows it in its folder");
    default:
        return {};
    }
}

Qt::ItemFlags ReportModel::flags(const QModelIndex& index) const
{
    if (row(index.row()).kind == Row::Kind::heading)
        return Qt::ItemNeverHasChildren;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

void ReportModel::renew(const FileUrl& photo)
{
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].photo == photo)
            emit dataChanged(index(int(i)), index(int(i)), {Qt::DecorationRole});
}

ReportRowDelegate::ReportRowDelegate(const ReportModel& model, ThumbnailCache& thumbnails, QObject* parent)
    : QStyledItemDelegate(parent), model_(model), thumbnails_(thumbnails)
{
}

QRect ReportRowDelegate::folderButton(const QRect& row)
{
    const QRect inner = content(row);
    return {inner.right() + 1 - Measure::control, inner.center().y() - Measure::control / 2 + 1, Measure::control,
            Measure::control};
}

QSize ReportRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& row = model_.row(index.row());
    if (row.kind == Row::Kind::heading)
        return {0, Theme::current().scaled(headingHeight)};
    const auto width = option.widget ? option.widget->width() : option.rect.width();
    const auto lines = model_.rowCount() > measuredRows
                           ? mostReasonLines()
                           : reasonLines(row.detail, textWidth(width), mostReasonLines()).size();
    return {0, std::max(thumbnailHeight, textHeight(lines)) + 2 * rowPadding};
}

int ReportRowDelegate::mostReasonLines() const
{
    return model_.rowCount() > measuredRows ? 2 : 3;
}

void ReportRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& row = model_.row(index.row());
    const auto& colors = Theme::current().colors();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (row.kind == Row::Kind::heading) {
        paintHeading(*painter, option.rect, row.title);
        painter->restore();
        return;
    }
    if (model_.row(index.row() - 1).kind == row.kind) {
        painter->fillRect(QRect(content(option.rect).left(), option.rect.top(), content(option.rect).width(), 1),
                          colors.line);
    }
    QStyleOption focus(option);
    focus.state.setFlag(QStyle::State_Selected, false);
    paintListRow(*painter, QRectF(option.rect).adjusted(0, 1, 0, -1), focus, false);
    paintThumbnail(*painter, thumbnailBox(option.rect), row.photo);

    const auto lines = reasonLines(row.detail, textWidth(option.rect.width()), mostReasonLines());
    const auto& theme = Theme::current();
    QRect line(thumbnailBox(option.rect).right() + 1 + Space::row,
               option.rect.center().y() - textHeight(lines.size()) / 2, textWidth(option.rect.width()),
               theme.lineHeight(TextRole::body));
    painter->setFont(theme.font(TextRole::body));
    painter->setPen(colors.text);
    painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                      painter->fontMetrics().elidedText(row.title, Qt::ElideMiddle, line.width()));
    painter->setFont(theme.font(TextRole::small));
    painter->setPen(colors.text2);
    line.translate(0, line.height());
    line.setHeight(theme.lineHeight(TextRole::small));
    for (const auto& text : lines) {
        painter->drawText(line, Qt::AlignVCenter | Qt::AlignLeft, text);
        line.translate(0, line.height());
    }
    if (!row.photo.isEmpty())
        paintButton(*painter, folderButton(option.rect), hoveredButton_ == index.row());
    painter->restore();
}

void ReportRowDelegate::paintHeading(QPainter& painter, const QRect& rect, const QString& title) const
{
    painter.setFont(Theme::current().font(TextRole::strong));
    painter.setPen(themeColor(&ThemeColors::text));
    painter.drawText(content(rect).adjusted(0, 0, 0, -Space::iconEdge), Qt::AlignBottom | Qt::AlignLeft, title);
}

void ReportRowDelegate::paintThumbnail(QPainter& painter, const QRect& box, const FileUrl& photo) const
{
    const auto ratio = painter.device()->devicePixelRatioF();
    auto image = photo.isEmpty() ? QImage() : thumbnails_.image(photo, box.size() * ratio);
    if (image.isNull()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::fill));
        painter.drawRoundedRect(box, Radius::box, Radius::box);
        paintIcon(painter, IconName::photo, box, Measure::fieldIcon, themeColor(&ThemeColors::text2));
        return;
    }
    image.setDevicePixelRatio(ratio);
    const QSizeF size = image.deviceIndependentSize();
    painter.drawImage(
        QPointF(box.left() + (box.width() - size.width()) / 2, box.top() + (box.height() - size.height()) / 2), image);
}

void ReportRowDelegate::paintButton(QPainter& painter, const QRect& button, bool hovered) const
{
    if (hovered) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(themeColor(&ThemeColors::fill));
        painter.drawRoundedRect(button, Radius::control, Radius::control);
    }
    paintIcon(painter, IconName::showInFolder, button, Measure::icon, themeColor(&ThemeColors::text));
}

ReportList::ReportList(std::vector<Row> rows, PhotoSession& session, QWidget* parent)
    : SheetList(QStringLiteral("Photos not exported"), parent), thumbnails_(session), model_(std::move(rows)),
      delegate_(model_, thumbnails_)
{
    setObjectName(QStringLiteral("reportList"));
    setModel(&model_);
    setItemDelegate(&delegate_);
    connect(&thumbnails_, &ThumbnailCache::ready, &model_, &ReportModel::renew);
}

int ReportList::buttonAt(const QPoint& position) const
{
    const auto index = indexAt(position);
    if (!index.isValid() || model_.row(index.row()).photo.isEmpty())
        return -1;
    return ReportRowDelegate::folderButton(visualRect(index)).contains(position) ? index.row() : -1;
}

void ReportList::hoverButton(int row)
{
    if (row == hoveredButton_)
        return;
    hoveredButton_ = row;
    delegate_.setHoveredButton(row);
    viewport()->update();
}

void ReportList::showInFolder(int row)
{
    if (row >= 0 && !model_.row(row).photo.isEmpty())
        emit showInFolderRequested(model_.row(row).photo);
}

void ReportList::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space)
        showInFolder(currentIndex().row());
    else
        SheetList::keyPressEvent(event);
}

void ReportList::mouseMoveEvent(QMouseEvent* event)
{
    SheetList::mouseMoveEvent(event);
    hoverButton(buttonAt(event->position().toPoint()));
}

void ReportList::mouseReleaseEvent(QMouseEvent* event)
{
    SheetList::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton)
        showInFolder(buttonAt(event->position().toPoint()));
}

void ReportList::leaveEvent(QEvent* event)
{
    SheetList::leaveEvent(event);
    hoverButton(-1);
}

void ReportList::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const auto index = byKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid() || model_.row(index.row()).photo.isEmpty())
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon(IconName::showInFolder), QStringLiteral("Show in Folder"), this,
                    [this, row = index.row()] { showInFolder(row); });
    menu->popup(byKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos());
}

bool ReportList::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return SheetList::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const auto index = indexAt(help->pos());
    if (!index.isValid())
        return true;
    const auto text = buttonAt(help->pos()) >= 0 ? QStringLiteral("Show in Folder") : model_.row(index.row()).detail;
    QToolTip::showText(help->globalPos(), text, viewport());
    return true;
}

} // namespace ferrow
