// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/SystemErrors.h"

#include "Support/TestSupport.h"

#include <cstring>

namespace ferrow::test {
namespace {

TEST(SystemErrors, nameTheFileInASentenceOfOurOwn)
{
    const FileUrl file = FileUrl::fromPath(QByteArray("/photos/caf\xE9.jpg"));
    for (int number = 1; number < 134; ++number) {
        SCOPED_TRACE(number);
        const QString text = SystemError{number, file}.description();
        EXPECT_TRUE(text.startsWith(QStringLiteral("“caf\uFFFD.jpg” "))) << text.toStdString();
        EXPECT_TRUE(text.endsWith(u'.'));
        EXPECT_FALSE(text.contains(QString::fromUtf8(std::strerror(number)))) << text.toStdString();
    }
    EXPECT_EQ((SystemError{ENOSPC, file}.description().contains(QStringLiteral("no space left"))), true);
    EXPECT_EQ((SystemError{EEXIST, {}}.description()), QStringLiteral("The file already exists."));
}

} // namespace
} // namespace ferrow::test
