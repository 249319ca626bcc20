// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/SystemErrors.h"

#include "Support/TestSupport.h"

#include <cstring>

namespace ferrow::test {

TEST(SystemErrors, nameTheFileInASentenceOfOurOwn)
{
    for (int number = 1; number < 134; ++number) {
        const QString text = SystemError{number, FileUrl::fromPath(QByteArray("/photos/caf\xE9.jpg"))}.description();
        EXPECT_TRUE(text.startsWith(QStringLiteral("“caf\uFFFD.jpg” ")) && text.endsWith(u'.')) << text.toStdString();
        EXPECT_FALSE(text.contains(QString::fromUtf8(std::strerror(number)))) << text.toStdString();
    }
    EXPECT_EQ((SystemError{EEXIST, {}}.description()), QStringLiteral("The file already exists."));
}

} // namespace ferrow::test
