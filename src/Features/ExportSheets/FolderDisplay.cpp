// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/ExportSheets/FolderDisplay.h"

#include "Features/ExportSheets/ExportTexts.h"
#include "Session/WindowTexts.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

namespace ferrow {

FolderDisplay::FolderDisplay(QWidget* parent) : QWidget(parent)
{
    setTextRole(this, TextRole::body);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFolder(std::nullopt);
}

void FolderDisplay::setFolder(const std::optional<FileUrl>& folder)
{
    isChosen_ = folder.has_value();
    text_ = folder ? ExportTexts::folder(*folder) : QStringLiteral("No folder chosen");
    setToolTip(folder ? WindowTexts::place(*folder) : QString());
    setAccessibleName(QStringLiteral("Export folder: %1").arg(text_));
    update();
}

QSize FolderDisplay::sizeHint() const
{
    return {160, Theme::current().scaled(Measure::control)};
}

void FolderDisplay::paintEvent(QPaintEvent*)
{
    const auto& colors = Theme::current().colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.setBrush(colors.surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Radius::control, Radius::control);

    const QRect inner = rect().adjusted(Space::row, 0, -Space::row, 0);
    const QRect iconRect(inner.left(), 0, Measure::fieldIcon, height());
    paintIcon(painter, IconName::folder, iconRect, Measure::fieldIcon, colors.text2);
    const QRect textRect = inner.adjusted(Measure::fieldIcon + Space::group, 0, 0, 0);
    painter.setPen(isChosen_ ? colors.text : colors.text2);
    painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text_, Qt::ElideMiddle, textRect.width()));
}

void FolderDisplay::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        emit pressed();
}

} // namespace ferrow
