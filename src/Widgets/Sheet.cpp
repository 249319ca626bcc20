// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/Sheet.h"

#include "Widgets/FerrowStyle.h"
#include "Widgets/HairLine.h"
#include "Widgets/ScrollPane.h"
#include "Widgets/Shadow.h"
#include "Widgets/StyleDrawing.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ferrow {

namespace {

constexpr int headTop = 20;
constexpr int headBottom = 12;
constexpr int bodyTop = 4; ///< Room for the focus ring of the first row.
constexpr int bodyBottom = 20;
constexpr int windowMargins = 96; ///< Above and below a sheet, together at least.
constexpr int sideMargin = 16;
constexpr int topShare = 9;

int heightOf(const QWidget* part, int width)
{
    const QLayout* layout = part->layout();
    return layout->hasHeightForWidth() ? layout->totalHeightForWidth(width) : layout->totalSizeHint().height();
}

} // namespace

Sheet::Sheet(QWidget* window, const QString& title) : Overlay(window, title)
{
    auto* layout = new QVBoxLayout(card());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetNoConstraint);

    buildHead(title);
    layout->addWidget(head_);

    page_ = new QWidget;
    body_ = new QVBoxLayout(page_);
    body_->setSpacing(Space::row);
    setBodyInset(Space::sheet);
    scroll_ = new ScrollPane(card());
    scroll_->setPage(page_);
    layout->addWidget(scroll_, 1);

    layout->addWidget(new HairLine(Qt::Horizontal, card()));
    buildFoot();
    layout->addWidget(foot_);
}

void Sheet::buildHead(const QString& title)
{
    head_ = new QWidget(card());
    title_ = makeLabel(title, TextRole::title);
    title_->setWordWrap(true);
    title_->setMinimumHeight(Theme::current().lineHeight(TextRole::title));
    subtitle_ = makeLabel(QString(), TextRole::body, &ThemeColors::text2);
    subtitle_->setWordWrap(true);
    subtitle_->hide();
    auto* layout = new QVBoxLayout(head_);
    layout->setContentsMargins(Space::sheet, headTop, Space::sheet, headBottom);
    layout->setSpacing(2);
    layout->addWidget(title_);
    layout->addWidget(subtitle_);
}

void Sheet::buildFoot()
{
    foot_ = new QWidget(card());
    const int inset = (Measure::sheetFoot - Measure::control) / 2;
    auto* layout = new QHBoxLayout(foot_);
    layout->setContentsMargins(Space::sheet, inset, Space::sheet, inset);
    layout->setSpacing(Space::group);
    helpers_ = new QHBoxLayout;
    helpers_->setSpacing(Space::group);
    verbs_ = new QHBoxLayout;
    verbs_->setSpacing(Space::group);
    layout->addLayout(helpers_);
    layout->addStretch(1);
    layout->addLayout(verbs_);
}

void Sheet::setSubtitle(const QString& subtitle)
{
    subtitle_->setText(subtitle);
    subtitle_->setVisible(!subtitle.isEmpty());
}

void Sheet::setCardWidth(int width)
{
    width_ = width;
    relayout();
}

void Sheet::setBodyInset(int inset)
{
    body_->setContentsMargins(inset, bodyTop, inset, bodyBottom);
}

QPushButton* Sheet::addHelperButton(const QString& text)
{
    auto* button = new QPushButton(text, foot_);
    helpers_->addWidget(button);
    return button;
}

QPushButton* Sheet::setLeaveButton(const QString& text)
{
    if (!leave_) {
        leave_ = new QPushButton(foot_);
        verbs_->insertWidget(0, leave_);
        connect(leave_, &QPushButton::clicked, this, &Sheet::dismiss);
    }
    leave_->setText(text);
    return leave_;
}

QPushButton* Sheet::setMainButton(const QString& text)
{
    if (!main_) {
        main_ = new QPushButton(foot_);
        setButtonRole(main_, ButtonRole::main);
        verbs_->addWidget(main_);
        connect(main_, &QPushButton::clicked, this, &Sheet::mainRequested);
    }
    main_->setText(text);
    return main_;
}

QRect Sheet::cardRect()
{
    const QSize window = parentWidget()->size();
    const int width = std::min(Theme::current().scaled(width_), window.width() - 2 * sideMargin);
    const int natural = heightOf(head_, width) + heightOf(page_, width) + 1 + heightOf(foot_, width);
    const int height = std::min(natural, window.height() - windowMargins);
    if (std::exchange(placedIn_, window) != window)
        top_ = window.height() / topShare;
    // What has moved up stays there: with lines that come and go it would dance.
    top_ = std::max(sideMargin, std::min(top_, window.height() - windowMargins / 2 - height));
    return QRect((window.width() - width) / 2, top_, width, height);
}

void Sheet::paintGround(QPainter& painter) const
{
    const QRectF rect = card()->geometry();
    painter.fillRect(this->rect(), themeColor(&ThemeColors::scrim));
    paintShadow(painter, rect, ShadowKind::sheet);
    StyleDrawing::paintBox(painter, rect, Radius::sheet, themeColor(&ThemeColors::raised),
                           themeColor(&ThemeColors::popoverEdge));
}

/// Tab goes through the body, then through the foot from left to right, in whichever order they were made.
void Sheet::aboutToOpen()
{
    placedIn_ = {};
    QWidget* last = nullptr;
    for (QWidget* widget = nextInFocusChain(); widget != this; widget = widget->nextInFocusChain())
        if (page_->isAncestorOf(widget))
            last = widget;
    for (QHBoxLayout* group : {helpers_, verbs_}) {
        for (int i = 0; i < group->count(); ++i) {
            QWidget* button = group->itemAt(i)->widget();
            if (last && button)
                setTabOrder(last, button);
            last = button ? button : last;
        }
    }
}

void Sheet::keyPressEvent(QKeyEvent* event)
{
    QScrollBar* bar = scroll_->verticalScrollBar();
    if (event->key() == Qt::Key_PageUp)
        bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    else if (event->key() == Qt::Key_PageDown)
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    Overlay::keyPressEvent(event);
}

bool Sheet::handleEnter()
{
    QPushButton* button = main_ ? main_ : leave_;
    if (!button || !button->isEnabled())
        return false;
    button->click();
    return true;
}

} // namespace ferrow
