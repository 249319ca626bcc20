// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Shared/UserFacingError.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <deque>
#include <exception>
#include <functional>

class QWidget;

namespace ferrow {

class ConfirmSheet;

/// Messages over the window, one at a time.
class ErrorAlerts : public QObject {
    Q_OBJECT

public:
    explicit ErrorAlerts(QWidget& window) : window_(window) {}

    void present(const PresentedError& error);
    void present(const QString& title, const QString& message);
    void present(const QString& title, const std::exception_ptr& error) { present(title, text(error)); }
    /// Calls `operation`, and presents what that throws under `failureTitle`.
    void attempt(const QString& failureTitle, const std::function<void()>& operation);

    /// An error of whatever kind as the user is told of it.
    [[nodiscard]] static QString text(const std::exception_ptr& error);

private:
    void presentNext();

    QWidget& window_;
    QPointer<ConfirmSheet> alert_;
    std::deque<PresentedError> errors_; ///< Still to be shown.
};

} // namespace ferrow
