// SPDX-License-Identifier: GPL-3.0-or-later
#include "Shared/UserFacingError.h"

#include <QStringList>

#include <new>
#include <system_error>

namespace ferrow {

QString UserFacingError::message(const LocalizedErrorTexts& texts)
{
    QStringList parts;
    for (const auto& text : {texts.errorDescription, texts.failureReason, texts.recoverySuggestion}) {
        const QString trimmed = text.value_or(QString()).trimmed();
        if (!trimmed.isEmpty() && !parts.contains(trimmed))
            parts.append(trimmed);
    }
    return parts.isEmpty() ? texts.genericDescription : parts.join(QStringLiteral("\n\n"));
}

QString UserFacingError::message(const SystemError& error)
{
    return error.description();
}

QString UserFacingError::message(const InputOutputError& error)
{
    return SystemError{error.errorNumber, {}}.description();
}

QString UserFacingError::message(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const ImagePipelineError& known) {
        return message(known);
    } catch (const LogoAssetError& known) {
        return message(known);
    } catch (BatchPlanningError known) {
        return message(known);
    } catch (const PresetPersistenceError& known) {
        return message(known);
    } catch (const SystemError& known) {
        return message(known);
    } catch (const InputOutputError& known) {
        return message(known);
    } catch (const std::system_error& known) {
        return known.code() == std::errc::resource_unavailable_try_again
                   ? QStringLiteral("The system allows Ferrow no more threads. Close other programs, then try again.")
                   : QStringLiteral("Something unexpected went wrong.");
    } catch (const std::bad_alloc&) {
        return QStringLiteral("There is not enough memory for this. Close other programs or use a smaller image, then "
                              "try again.");
    } catch (...) {
        // What a library's exception says was written for programmers, and may name things that are nobody's business.
        return QStringLiteral("Something unexpected went wrong.");
    }
}

} // namespace ferrow
