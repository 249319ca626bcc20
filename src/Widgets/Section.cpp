// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Section.h"

#include "Widgets/HairLine.h"
#include "Widgets/Icons.h"
#include "Widgets/Theme.h"
#include "Widgets/ToggleSwitch.h"

#include <QPainter>
#include <QVBoxLayout>

namespace ferrow {

namespace {

constexpr int chevron = 16;
constexpr int chevronLeft = 15;
constexpr int titleLeft = 38;
constexpr int ringInset = 8;

} // namespace

SectionHeader::SectionHeader(const QString& title, QWidget* parent) : FoldButton(title, parent)
{
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SectionHeader::setSummary(const QString& summary)
{
    summary_ = summary;
    update();
}

void SectionHeader::setReservedWidth(int width)
{
    reserved_ = width;
    update();
}

QSize SectionHeader::sizeHint() const
{
    return QSize(titleLeft + 2 * Space::inspector, Theme::current().scaled(Measure::sectionHeader));
}

QRectF SectionHeader::focusRect() const
{
    return rect().adjusted(ringInset, ringInset, -ringInset - reserved_, -ringInset);
}

void SectionHeader::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const ThemeColors& colors = Theme::current().colors();
    const QColor ink = isEnabled() ? colors.text : colors.disabled;
    const QRect mark(chevronLeft, 0, chevron, height());
    paintIcon(painter, isOpen() ? IconName::chevronDown : IconName::chevronRight, mark, chevron, ink);

    painter.setFont(Theme::current().font(TextRole::section));
    painter.setPen(ink);
    const int titleWidth = painter.fontMetrics().horizontalAdvance(text());
    painter.drawText(QRect(titleLeft, 0, titleWidth + 1, height()), Qt::AlignVCenter | Qt::AlignLeft, text());
    if (isOpen() || summary_.isEmpty())
        return;
    const int left = titleLeft + titleWidth + Space::row;
    const QRect room(left, 0, width() - Space::inspector - reserved_ - left, height());
    painter.setFont(Theme::current().font(TextRole::small));
    painter.setPen(isEnabled() ? colors.text2 : colors.disabled);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignRight,
                     painter.fontMetrics().elidedText(summary_, Qt::ElideRight, room.width()));
}

Section::Section(const QString& title, QWidget* parent)
    : QWidget(parent), header_(new SectionHeader(title, this)), fold_(new Fold(header_, this))
{
    body()->setContentsMargins(Space::inspector, 0, Space::inspector, Space::inspector);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(header_);
    layout->addWidget(fold_);
    layout->addWidget(new HairLine(Qt::Horizontal, this));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

ToggleSwitch* Section::addSwitch(const QString& name)
{
    if (!switch_) {
        switch_ = new ToggleSwitch(name, this);
        header_->setReservedWidth(Measure::switchWidth + Space::group);
        setTabOrder(header_, switch_);
        placeSwitch();
    }
    return switch_;
}

void Section::setSummary(const QString& summary)
{
    header_->setSummary(summary);
}

void Section::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeSwitch();
}

void Section::placeSwitch()
{
    if (!switch_)
        return;
    const QSize size = switch_->sizeHint();
    const int headerHeight = header_->sizeHint().height();
    switch_->setGeometry(width() - Space::inspector - size.width(), (headerHeight - size.height()) / 2, size.width(),
                         size.height());
    switch_->raise();
}

} // namespace ferrow
