// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/SystemErrors.h"

#include <cerrno>

namespace ferrow {

namespace {

/// What follows the file's name in the sentence.
QString statement(int errorNumber)
{
    switch (errorNumber) {
    case ENOENT:
        return QStringLiteral("could not be found. It may have been moved, renamed or deleted.");
    case EACCES:
        return QStringLiteral("could not be used because you do not have permission for it or for its folder.");
    case EPERM:
        return QStringLiteral("could not be used because the system does not allow it.");
    case EROFS:
        return QStringLiteral("could not be changed because its disk can only be read.");
    case ENOSPC:
        return QStringLiteral("could not be written because there is no space left on its disk.");
    case EDQUOT:
        return QStringLiteral("could not be written because your share of its disk is used up.");
    case EFBIG:
        return QStringLiteral("could not be written because it would be larger than its disk or your account allows.");
    case EIO:
        return QStringLiteral("could not be read or written because its disk reported an error.");
    case ENODEV:
    case ENXIO:
        return QStringLiteral("could not be used because its device is not there any more.");
    case ESTALE:
    case ENOTCONN:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case EHOSTUNREACH:
        return QStringLiteral("could not be used because its network disk does not answer.");
    case EMFILE:
        return QStringLiteral("could not be opened because Ferrow has too many files open.");
    case ENFILE:
        return QStringLiteral("could not be opened because the system has too many files open.");
    case ENOMEM:
        return QStringLiteral("could not be used because there is not enough memory.");
    case ENAMETOOLONG:
        return QStringLiteral("could not be used because its name or its path is too long.");
    case EILSEQ:
        return QStringLiteral("could not be used because its disk does not accept the name.");
    case EINVAL:
        return QStringLiteral("could not be used because its disk does not accept the name or the operation.");
    case EISDIR:
        return QStringLiteral("is a folder, not a file.");
    case ENOTDIR:
        return QStringLiteral("is not a folder, or lies below something that is not one.");
    case ENOTEMPTY:
        return QStringLiteral("is a folder that is not empty.");
    case EEXIST:
        return QStringLiteral("already exists.");
    case EXDEV:
        return QStringLiteral("could not be moved because the new place is on another disk.");
    case ELOOP:
        return QStringLiteral("could not be opened because it is a link, or because its links lead in a circle.");
    case EMLINK:
        return QStringLiteral("could not be placed because its disk does not allow more links.");
    case EBUSY:
    case ETXTBSY:
        return QStringLiteral("could not be used because another program is using it.");
    case ENOSYS:
    case EOPNOTSUPP:
        return QStringLiteral("could not be used because its disk does not offer the operation.");
    default:
        return QStringLiteral("could not be read or written (system error %1).").arg(errorNumber);
    }
}

} // namespace

QString SystemError::description() const
{
    const QString name = file.lastPathComponent();
    const QString subject = name.isEmpty() ? QStringLiteral("The file") : QStringLiteral("“%1”").arg(name);
    return subject + QLatin1Char(' ') + statement(errorNumber);
}

} // namespace ferrow
