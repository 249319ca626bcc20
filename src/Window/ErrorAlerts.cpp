// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/ErrorAlerts.h"

#include "Persistence/PresetModels.h"
#include "Widgets/ConfirmSheet.h"

namespace ferrow {

QString ErrorAlerts::text(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const PresetCodingError& presetError) {
        return UserFacingError::message(presetError);
    } catch (...) {
        return UserFacingError::message(std::current_exception());
    }
}

void ErrorAlerts::attempt(const QString& failureTitle, const std::function<void()>& operation)
{
    try {
        operation();
    } catch (...) {
        present(failureTitle, std::current_exception());
    }
}

void ErrorAlerts::present(const QString& title, const QString& message)
{
    PresentedError error;
    error.title = title;
    error.message = message;
    present(error);
}

void ErrorAlerts::present(const PresentedError& error)
{
    errors_.push_back(error);
    presentNext();
}

void ErrorAlerts::presentNext()
{
    if (alert_ || errors_.empty())
        return;
    const PresentedError error = errors_.front();
    errors_.pop_front();
    std::vector<Question::Item> items;
    for (const PresentedError::File& file : error.files)
        items.push_back({file.name, file.cause, file.remedy});
    const auto left = [this] {
        alert_ = nullptr;
        presentNext();
    };
    alert_ = ConfirmSheet::alert(&window_, error.title, error.message, this, left, std::move(items));
}

} // namespace ferrow
