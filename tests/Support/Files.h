// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Base/SystemErrors.h"
#include "Support/TestSupport.h"

#include <QDir>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <optional>

/// What tests that work on the file system do over and over.
namespace ferrow::test {

/// The error of that kind with which `steps` failed, if they did.
template <typename Error, typename Steps>
std::optional<Error> errorOf(const Steps& steps)
{
    try {
        static_cast<void>(steps());
    } catch (const Error& error) {
        return error;
    }
    return std::nullopt;
}

/// The system's number for why `steps` failed; 0 if they did not.
template <typename Steps>
int errnoOf(const Steps& steps)
{
    int number = 0;
    const auto read = errorOf<InputOutputError>([&] {
        if (const auto error = errorOf<SystemError>(steps))
            number = error->errorNumber;
    });
    return read ? read->errorNumber : number;
}

inline void makeLink(const FileUrl& place, const QByteArray& target)
{
    ASSERT_EQ(::symlink(target.constData(), place.path().constData()), 0);
}
inline void makePipe(const FileUrl& place)
{
    ASSERT_EQ(::mkfifo(place.path().constData(), 0644), 0);
}
inline void setMode(const FileUrl& place, mode_t mode)
{
    ASSERT_EQ(::chmod(place.path().constData(), mode), 0);
}

inline bool exists(const FileUrl& place)
{
    return ::access(place.path().constData(), F_OK) == 0;
}
/// Everything in the folder, hidden or not.
inline QStringList namesIn(const FileUrl& folder)
{
    return QDir(folder.displayPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Ends every write beyond `bytes` as a full disk does: short first, then refused.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int);
};

} // namespace ferrow::test
