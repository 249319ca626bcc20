// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/FileUrl.h"

#include "Support/TestSupport.h"

#include <QDir>

namespace ferrow::test {

TEST(FileUrl, takesNamesApart)
{
    using Row = std::pair<QByteArray, QByteArray>;
    for (const auto& [path, parts] : {Row("/a/b.jpg", "b.jpg b jpg /a"), Row("/a/b/", "b b  /a"), Row("/a", "a a  /"),
                                      Row("//", "/ /  /"), Row("/a//b", "b b  /a"), Row("/x/.h", ".h .h  /x"),
                                      Row("/x/.h.tif", ".h.tif .h tif /x"), Row("/a.b.JPEG", "a.b.JPEG a.b JPEG /"),
                                      Row("/dot.", "dot. dot.  /"), Row("/x.y/plain", "plain plain  /x.y")}) {
        const FileUrl url = FileUrl::fromPath(path);
        const QByteArray names = url.lastPathComponentBytes() + ' ' + url.stem() + ' ' + url.pathExtension();
        EXPECT_EQ(names + ' ' + url.deletingLastPathComponent().path(), parts);
    }
}

TEST(FileUrl, collapsesByTextAlone)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"/a/./b//c/../d/", "/a/b/d"}, {"/../../a", "/a"}, {"/..", "/"}, {"//", "/"}, {"/a/...", "/a/..."}, {"", ""}};
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(FileUrl::fromPath(path).standardized().path(), expected) << path.toStdString();
    EXPECT_EQ(FileUrl::fromPath(QByteArray("/")).appending("a").path(), QByteArray("/a"));
    EXPECT_EQ(FileUrl::fromPath(QByteArray("x/y")).path(), QFile::encodeName(QDir::currentPath()) + "/x/y");
}

TEST(FileUrl, keepsEveryByteOnTheWayThroughAUrl)
{
    QByteArray all("/");
    for (int byte = 1; byte < 256; ++byte)
        all.append(char(byte));
    for (const QByteArray& path : {all, QByteArray("/a b/100%#?.jpg"), QByteArray("//double")})
        EXPECT_EQ(FileUrl::fromUrl(FileUrl::fromPath(path).toUrl()), FileUrl::fromPath(path));
    EXPECT_EQ(FileUrl::fromPath(QByteArray("/\xE9t\xC3\xA9")).displayPath(), QStringLiteral("/\uFFFDté"));
}

TEST(FileUrl, takesOnlyPlacesOfThisMachine)
{
    const auto isTaken = [](const char* text) { return FileUrl::fromUrl(QUrl(QString::fromLatin1(text))).has_value(); };
    for (const char* text : {"file:///a/b.jpg", "file://localhost/a", "file:/a"})
        EXPECT_TRUE(isTaken(text)) << text;
    for (const char* text : {"https://host/a.jpg", "file://other.example/a", "file:", "file:relative", ""})
        EXPECT_FALSE(isTaken(text)) << text;
    EXPECT_FALSE(FileUrl::fromPath(QByteArray("/a\0b", 4)).hasFileSystemRepresentation());
}

} // namespace ferrow::test
