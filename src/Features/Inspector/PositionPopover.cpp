// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/PositionPopover.h"

#include "Features/Inspector/PositionGrid.h"
#include "Features/Inspector/PositionPicker.h"
#include "Widgets/MessageLine.h"
#include "Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace ferrow {

PositionPopover::PositionPopover(QWidget* opener, const QString& title, const PositionScene& scene, Thumbnail thumbnail)
    : Popover(opener, title), thumbnail_(std::move(thumbnail))
{
    setDeletedAfterClose(true);
    connect(&run_, &EditRun::gestureStarted, this, &PositionPopover::gestureStarted);
    connect(&run_, &EditRun::gestureEnded, this, &PositionPopover::gestureEnded);
    connect(this, &Overlay::closed, &run_, &EditRun::finish);

    picker_ = new PositionPicker(title);
    picker_->setObjectName(QStringLiteral("positionPicker"));
    connect(picker_, &PositionPicker::chosen, this, [this](CaptionPosition position) {
        run_.noteEdit();
        emit positionEdited(position);
    });
    body()->addWidget(picker_);

    auto* words = new QHBoxLayout;
    words->setSpacing(Space::group);
    title_ = makeLabel(QString(), TextRole::strong);
    place_ = makeLabel(QString(), TextRole::body, &ThemeColors::text2);
    words->addWidget(title_);
    words->addWidget(place_);
    words->addStretch();
    others_ = makeLabel(QString(), TextRole::small, &ThemeColors::text2);
    others_->setWordWrap(true);
    auto* lines = new QVBoxLayout;
    lines->setSpacing(Space::rowGap);
    lines->addLayout(words);
    lines->addWidget(others_);
    body()->addLayout(lines);

    warning_ = new MessageLine(Severity::warning, QString());
    warning_->setRole(TextRole::small);
    body()->addWidget(warning_);
    showScene(scene);
}

PositionPopover::~PositionPopover()
{
    run_.finish();
}

void PositionPopover::present()
{
    open(picker_);
}

void PositionPopover::setScene(const PositionScene& scene)
{
    showScene(scene);
    relayout();
}

void PositionPopover::showScene(const PositionScene& scene)
{
    if (scene.photoID != shownPhoto_) {
        shownPhoto_ = scene.photoID;
        picker_->setPhoto(shownPhoto_ ? thumbnail_(*shownPhoto_) : QImage());
    }
    picker_->setScene(scene);
    title_->setText(PositionGrid::title(scene.position));
    place_->setText(PositionGrid::place(scene.position));
    QStringList others;
    for (const PositionScene::Other& other : scene.others)
        if (other.number > 0)
            others.append(QStringLiteral("Caption %1: %2")
                              .arg(QString::number(other.number), PositionGrid::inWords(other.position)));
    others_->setText(others.join(u'\n'));
    others_->setVisible(!others.isEmpty());
    warning_->setMessage(Severity::warning, scene.warning);
    warning_->setVisible(!scene.warning.isEmpty());
}

} // namespace ferrow
