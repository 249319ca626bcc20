// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewCards.h"

#include "Platform/Base/Localization.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/IconLabel.h"
#include "Widgets/Icons.h"
#include "Widgets/Shadow.h"
#include "Widgets/Theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int errorCardWidth = 360;
constexpr int noticeCardWidth = 400;
constexpr int errorIcon = 32;
constexpr int loadingLineHeight = 2;

QMargins cardMargins(int horizontal, int vertical)
{
    const int room = FloatingCard::shadowRoom;
    return {room + horizontal, room + vertical, room + horizontal, room + vertical};
}

QLabel* centeredLabel(TextRole role, ColorRole color, QWidget* parent)
{
    QLabel* label = makeLabel({}, role, color, parent);
    label->setAlignment(Qt::AlignHCenter);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QPushButton* wayOut(const QString& text, const QString& objectName, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(objectName);
    return button;
}

QString dropText(int fileCount)
{
    if (fileCount < 1)
        return QStringLiteral("Drop to add photos");
    return fileCount == 1 ? QStringLiteral("Drop to add 1 photo")
                          : QStringLiteral("Drop to add %1 photos").arg(Localization::number(std::int64_t(fileCount)));
}

} // namespace

FloatingCard::FloatingCard(QWidget* parent, int cardWidth) : QWidget(parent), cardWidth_(cardWidth)
{
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

QSize FloatingCard::sizeHint() const
{
    if (cardWidth_ == 0)
        return QWidget::sizeHint();
    const int width = std::min(Theme::current().scaled(cardWidth_) + 2 * shadowRoom, parentWidget()->width());
    return {width, layout()->totalHeightForWidth(width)};
}

void FloatingCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect()).adjusted(shadowRoom, shadowRoom, -shadowRoom, -shadowRoom);
    paintShadow(painter, card, ShadowKind::popover);
    painter.setBrush(themeColor(&ThemeColors::raised));
    painter.setPen(QPen(themeColor(&ThemeColors::popoverEdge), 1));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), Radius::popover, Radius::popover);
}

ErrorCard::ErrorCard(QWidget* parent) : FloatingCard(parent, errorCardWidth)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(cardMargins(Space::sheet, Space::sheet));
    column->setSpacing(Space::group);
    column->addSpacing(errorIcon + Space::group);
    title_ = centeredLabel(TextRole::title, &ThemeColors::text, this);
    message_ = centeredLabel(TextRole::body, &ThemeColors::text2, this);
    column->addWidget(title_);
    column->addWidget(message_);

    buttons_ = new QWidget(this);
    auto* row = new QHBoxLayout(buttons_);
    row->setContentsMargins(0, Space::row, 0, 0);
    row->setSpacing(Space::group);
    QPushButton* retry = wayOut(QStringLiteral("Try Again"), QStringLiteral("retryPreviewButton"), buttons_);
    QPushButton* showInFolder =
        wayOut(QStringLiteral("Show in Folder"), QStringLiteral("showUnreadableButton"), buttons_);
    remove_ = wayOut(QStringLiteral("Remove"), QStringLiteral("removeUnreadableButton"), buttons_);
    remove_->setAccessibleName(QStringLiteral("Remove from List"));
    remove_->setToolTip(QStringLiteral("Remove from List"));
    row->addStretch();
    row->addWidget(retry);
    row->addWidget(showInFolder);
    row->addWidget(remove_);
    row->addStretch();
    column->addWidget(buttons_);
    connect(retry, &QPushButton::clicked, this, &ErrorCard::retryRequested);
    connect(showInFolder, &QPushButton::clicked, this, &ErrorCard::showInFolderRequested);
    connect(remove_, &QPushButton::clicked, this, &ErrorCard::removeRequested);
    hide();
}

void ErrorCard::show(const QString& title, const QString& message, WaysOut waysOut)
{
    title_->setText(title);
    message_->setText(message);
    message_->setVisible(!message.isEmpty());
    buttons_->setVisible(waysOut == WaysOut::all);
    updateGeometry();
    setAccessibleName(title);
    setAccessibleDescription(message);
    QWidget::show();
    raise();
}

void ErrorCard::setRemoveEnabled(bool enabled)
{
    remove_->setEnabled(enabled);
}

void ErrorCard::paintEvent(QPaintEvent* event)
{
    FloatingCard::paintEvent(event);
    QPainter painter(this);
    const QRectF place((width() - errorIcon) / 2.0, shadowRoom + Space::sheet, errorIcon, errorIcon);
    paintIcon(painter, IconName::error, place, errorIcon, themeColor(&ThemeColors::error));
}

NoticeCard::NoticeCard(QWidget* parent) : FloatingCard(parent, noticeCardWidth)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(cardMargins(Space::sidebar, Space::row));
    line_ = new MessageLine(Severity::warning, {}, MessageLine::Ground::none, this);
    QPushButton* close = makeIconButton(IconName::close, QStringLiteral("Dismiss"), this);
    close->setObjectName(QStringLiteral("dismissNoticeButton"));
    setSmallControl(close);
    row->setSpacing(Space::group);
    row->addWidget(line_, 1);
    row->addWidget(close, 0, Qt::AlignTop);
    connect(close, &QPushButton::clicked, this, &NoticeCard::dismissed);
    hide();
}

void NoticeCard::show(Severity severity, const QString& text)
{
    line_->setMessage(severity, QString(text).replace(QStringLiteral("\n\n"), QStringLiteral(" ")));
    updateGeometry();
    QWidget::show();
    raise();
}

LoadingLine::LoadingLine(QWidget* parent) : QWidget(parent), sweep_(new QVariantAnimation(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedHeight(loadingLineHeight);
    setAccessibleName(QStringLiteral("Loading photo"));
    sweep_->setStartValue(0.0);
    sweep_->setEndValue(1.0);
    sweep_->setLoopCount(-1);
    connect(sweep_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    hide();
}

void LoadingLine::paintEvent(QPaintEvent*)
{
    // A third of the edge wanders through; where motion is reduced it stands in the middle.
    const double part = width() / 3.0;
    const bool isStill = Theme::current().reducedMotion();
    const double left = isStill ? part : sweep_->currentValue().toDouble() * (width() + part) - part;
    QPainter(this).fillRect(QRectF(left, 0, part, height()), themeColor(&ThemeColors::accent));
}

void LoadingLine::showEvent(QShowEvent*)
{
    if (Theme::current().reducedMotion())
        return;
    sweep_->setDuration(Theme::current().duration(Motion::sweep));
    sweep_->start();
}

void LoadingLine::hideEvent(QHideEvent*)
{
    sweep_->stop();
}

DropOverlay::DropOverlay(QWidget* area) : QWidget(area), area_(area)
{
    setObjectName(QStringLiteral("dropOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    card_ = new FloatingCard(this);
    auto* row = new QHBoxLayout(card_);
    row->setContentsMargins(cardMargins(Space::sidebar, Space::row));
    row->setSpacing(Space::row);
    text_ = makeLabel({}, TextRole::strong, &ThemeColors::text, card_);
    row->addWidget(new IconLabel(IconName::add, Measure::icon, &ThemeColors::accent));
    row->addWidget(text_);
    hide();
}

void DropOverlay::show(int fileCount)
{
    text_->setText(dropText(fileCount));
    // The area has its window only once it is built into one.
    setParent(area_->window());
    area_->installEventFilter(this);
    place();
    QWidget::show();
    raise();
}

/// The area has been laid out anew whenever the window has.
bool DropOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize && isVisible())
        place();
    return QWidget::eventFilter(watched, event);
}

void DropOverlay::place()
{
    setGeometry(parentWidget()->rect());
    const QRect area(area_->mapTo(parentWidget(), QPoint()), area_->size());
    const QSize size = card_->sizeHint();
    // The card itself stands this far above the edge, not its shadow.
    const int bottom = area.top() + area.height() - Space::preview + FloatingCard::shadowRoom;
    card_->setGeometry(area.center().x() - size.width() / 2, bottom - size.height(), size.width(), size.height());
}

void DropOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double half = Measure::dropFrame / 2.0;
    painter.setPen(QPen(themeColor(&ThemeColors::accent), Measure::dropFrame));
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), Radius::sheet, Radius::sheet);
}

} // namespace ferrow
