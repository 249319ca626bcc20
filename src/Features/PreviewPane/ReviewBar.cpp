// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/ReviewBar.h"

#include "Features/PreviewPane/StepButtons.h"
#include "Session/PhotoSession.h"
#include "Session/WindowTexts.h"
#include "Widgets/ElidedLabel.h"
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace ferrow {

namespace {

constexpr int barHeight = 56;

} // namespace

ReviewBar::ReviewBar(PhotoSession& session, QWidget* parent) : QWidget(parent), session_(session)
{
    setObjectName(QStringLiteral("reviewBar"));
    setGround(this, &ThemeColors::window);
    title_ = new ElidedLabel({});
    setTextRole(title_, TextRole::strong);
    steps_ = new StepButtons(QStringLiteral("Previous of these photos"), QStringLiteral("Next of these photos"));
    steps_->previous()->setObjectName(QStringLiteral("previousReviewedButton"));
    steps_->next()->setObjectName(QStringLiteral("nextReviewedButton"));
    back_ = new QPushButton(QStringLiteral("Back to Export"));
    back_->setObjectName(QStringLiteral("backToExportButton"));
    back_->setToolTip(QStringLiteral("Back to the check before the export (Esc)"));
    setSmallControl(back_);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Space::sidebar, 0, Space::sidebar, 0);
    row->setSpacing(Space::row);
    row->addWidget(title_, 1);
    row->addWidget(steps_);
    row->addWidget(back_);

    connect(steps_, &StepButtons::stepRequested, this, &ReviewBar::step);
    connect(back_, &QPushButton::clicked, this, &ReviewBar::backRequested);
    connect(&session_, &PhotoSession::photosChanged, this, &ReviewBar::followPhotos);
    connect(&session_, &PhotoSession::selectedPhotoIDChanged, this, &ReviewBar::showPosition);
    hide();
}

void ReviewBar::begin(const ExportFinding& finding)
{
    photos_ = finding.photos;
    title_->setText(finding.title);
    title_->setToolTip(finding.detail.simplified());
    setAccessibleName(finding.title);
    setAccessibleDescription(finding.detail.simplified());
    if (!session_.selectedPhotoID() || std::ranges::find(photos_, *session_.selectedPhotoID()) == photos_.end())
        session_.setSelectedPhotoID(photos_.front());
    show();
    followPhotos();
    (photos_.size() > 1 ? steps_->next() : back_)->setFocus(Qt::OtherFocusReason);
}

void ReviewBar::end()
{
    photos_.clear();
    if (isVisible() && isAncestorOf(window()->focusWidget()))
        emit focusHandedOn();
    hide();
}

void ReviewBar::followPhotos()
{
    if (photos_.empty())
        return;
    std::erase_if(photos_, [this](const FileUrl& photoID) { return !session_.indexOf(photoID); });
    if (photos_.empty())
        return end();
    steps_->setVisible(photos_.size() > 1);
    showPosition();
}

void ReviewBar::showPosition()
{
    const auto selected = session_.selectedPhotoID();
    const auto found = selected ? std::ranges::find(photos_, *selected) : photos_.end();
    const auto count = std::int64_t(photos_.size());
    // Another photo may be looked at meanwhile.
    steps_->setText(found == photos_.end() ? WindowTexts::photoCount(count)
                                           : WindowTexts::outOf(found - photos_.begin() + 1, count));
}

void ReviewBar::step(int direction)
{
    const auto& selected = session_.selectedPhotoID();
    const auto index = selected ? session_.indexOf(*selected) : std::nullopt;
    const auto place = [this](const FileUrl& photoID) { return *session_.indexOf(photoID); };
    const auto at = index ? std::ranges::lower_bound(photos_, *index, {}, place) : photos_.begin();
    const auto count = std::ptrdiff_t(photos_.size());
    // From a photo that is none of them, the one before or behind it.
    const bool isOneOfThem = at != photos_.end() && index && place(*at) == *index;
    const std::ptrdiff_t next = (at - photos_.begin()) + (direction > 0 && !isOneOfThem ? 0 : direction);
    session_.setSelectedPhotoID(photos_[std::size_t((next + count) % count)]);
}

QSize ReviewBar::sizeHint() const
{
    return {440, Theme::current().scaled(barHeight)};
}

QSize ReviewBar::minimumSizeHint() const
{
    return {240, sizeHint().height()};
}

void ReviewBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        emit backRequested();
    else
        QWidget::keyPressEvent(event);
}

void ReviewBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), themeColor(&ThemeColors::window));
    painter.fillRect(QRectF(0, 0, width(), 1), themeColor(&ThemeColors::line));
}

} // namespace ferrow
