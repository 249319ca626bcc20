// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/ErrorTexts.h"
#include "Platform/Base/ByteSource.h"
#include "Platform/Base/SystemErrors.h"

#include <QString>
#include <QUuid>

#include <exception>
#include <vector>

namespace ferrow {

/// An error as an alert shows it. Every presentation has its own identity: the same text raised twice is shown twice.
struct PresentedError {
    QUuid id = QUuid::createUuid();
    /// One of the files that it is about: what happened to it, and what to do about that (may be empty).
    struct File {
        QString name;
        QString cause;
        QString remedy;
    };

    QString title;
    QString message;
    std::vector<File> files; ///< They stand above the message.
};

/// The one conversion of any error into the text the user reads.
namespace UserFacingError {

/// Description, reason and suggestion, trimmed, without empty and repeated ones, with a blank line between them; the
/// generic description where nothing is left.
[[nodiscard]] QString message(const LocalizedErrorTexts& texts);

/// Errors of the system have their generic sentence alone.
[[nodiscard]] QString message(const SystemError& error);
[[nodiscard]] QString message(const InputOutputError& error);

/// For the error in flight or kept: every typed error known here, else a generic sentence without anything from a
/// library. Must not be given Canceled: that is an outcome. Types of higher rooms are caught where they are known and
/// handed to the overload below.
[[nodiscard]] QString message(const std::exception_ptr& error);

template <LocalizedError Error>
[[nodiscard]] QString message(const Error& error)
{
    return message(localizedTexts(error));
}

} // namespace UserFacingError
} // namespace ferrow
