// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/EditRun.h"

namespace ferrow {

namespace {

/// As long as the kit's sliders wait for the next key.
constexpr int pauseMilliseconds = 500;

} // namespace

EditRun::EditRun(QObject* parent) : QObject(parent)
{
    pause_.setSingleShot(true);
    pause_.setInterval(pauseMilliseconds);
    connect(&pause_, &QTimer::timeout, this, &EditRun::finish);
}

void EditRun::beginDrag()
{
    finish();
    isDragging_ = true;
}

void EditRun::endDrag()
{
    finish();
}

void EditRun::noteEdit()
{
    if (!isOpen_) {
        isOpen_ = true;
        emit gestureStarted();
    }
    if (!isDragging_)
        pause_.start();
}

void EditRun::finish()
{
    pause_.stop();
    isDragging_ = false;
    if (!isOpen_)
        return;
    isOpen_ = false;
    emit gestureEnded();
}

} // namespace ferrow
