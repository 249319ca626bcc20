// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"

#include <QString>
#include <QUuid>

#include <exception>

namespace ferrow {

/// An error as an alert shows it. Every presentation has its own identity: the same text raised twice is shown twice.
struct PresentedError {
    QUuid id = QUuid::createUuid();
    QString title;
    QString message;
};

/// The one conversion of any error into the text the user reads.
namespace UserFacingError {

[[nodiscard]] QString message(const LocalizedErrorTexts& texts);

/// For the error in flight or kept: every typed error of the program, SystemError, else a generic sentence. Must not be
/// given Cancelled: that is an outcome.
[[nodiscard]] QString message(const std::exception_ptr& error);

} // namespace UserFacingError
} // namespace ferrow
