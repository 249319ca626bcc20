// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/FileUrl.h"

#include "Support/TestSupport.h"

#include <QDir>

namespace ferrow::test {
namespace {

TEST(FileUrl, takesNamesApart)
{
    struct Row {
        QByteArray path, name, stem, extension, parent;
    };
    const Row rows[] = {
        {"/a/b.jpg", "b.jpg", "b", "jpg", "/a"},
        {"/a/b/", "b", "b", "", "/a"},
        {"/a", "a", "a", "", "/"},
        {"/", "/", "/", "", "/"},
        {"//", "/", "/", "", "/"},
        {"/a//b", "b", "b", "", "/a"},
        {"/x/.hidden", ".hidden", ".hidden", "", "/x"},
        {"/x/.hidden.tif", ".hidden.tif", ".hidden", "tif", "/x"},
        {"/x/a.b.JPEG", "a.b.JPEG", "a.b", "JPEG", "/x"},
        {"/x/dot.", "dot.", "dot.", "", "/x"},
        {"/x.y/plain", "plain", "plain", "", "/x.y"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        const FileUrl url = FileUrl::fromPath(row.path);
        EXPECT_EQ(url.lastPathComponentBytes(), row.name);
        EXPECT_EQ(url.stem(), row.stem);
        EXPECT_EQ(url.pathExtension(), row.extension);
        EXPECT_EQ(url.deletingLastPathComponent().path(), row.parent);
    }
}

TEST(FileUrl, collapsesByTextAlone)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"/a/./b//c/../d/", "/a/b/d"}, {"/../../a", "/a"}, {"/..", "/"}, {"//", "/"}, {"/a/...", "/a/..."}, {"/", "/"},
    };
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(FileUrl::fromPath(path).standardized().path(), expected) << path.toStdString();
    EXPECT_TRUE(FileUrl().standardized().isEmpty());
    EXPECT_EQ(FileUrl::fromPath(QByteArray("/")).appending("a").path(), QByteArray("/a"));
    EXPECT_EQ(FileUrl::fromPath(QByteArray("x/y")).path(), QFile::encodeName(QDir::currentPath()) + "/x/y");
    EXPECT_TRUE(FileUrl::fromPath(QByteArray()).isEmpty());
}

TEST(FileUrl, keepsEveryByteOnTheWayThroughAUrl)
{
    QByteArray path("/");
    for (int byte = 1; byte < 256; ++byte)
        path.append(char(byte));
    for (const QByteArray& each :
         {path, QByteArray("/a b/100%#?.jpg"), QByteArray("//double"), QByteArray("/\xE9t\xC3\xA9")}) {
        const FileUrl url = FileUrl::fromPath(each);
        ASSERT_TRUE(url.toUrl().isValid());
        const auto back = FileUrl::fromUrl(url.toUrl());
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, url);
    }
    EXPECT_EQ(FileUrl::fromPath(QByteArray("/\xE9t\xC3\xA9")).displayPath(), QStringLiteral("/\uFFFDté"));
}

TEST(FileUrl, takesOnlyPlacesOfThisMachine)
{
    const std::pair<const char*, bool> rows[] = {
        {"file:///a/b.jpg", true},
        {"file://localhost/a", true},
        {"file:/a", true},
        {"https://host/a.jpg", false},
        {"file://other.example/a", false},
        {"file:", false},
        {"file:relative", false},
        {"", false},
    };
    for (const auto& [text, taken] : rows)
        EXPECT_EQ(FileUrl::fromUrl(QUrl(QString::fromLatin1(text))).has_value(), taken) << text;
    const auto withNul = FileUrl::fromUrl(QUrl(QStringLiteral("file:///a%00b")));
    EXPECT_TRUE(!withNul || !withNul->hasFileSystemRepresentation());
    EXPECT_FALSE(FileUrl::fromPath(QByteArray("/a\0b", 4)).hasFileSystemRepresentation());
}

} // namespace
} // namespace ferrow::test
