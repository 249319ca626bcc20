// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/FerrowStorage.h"

#include "Platform/Files/FilePlacement.h"
#include "Support/Files.h"

namespace ferrow {

using namespace test;
using namespace Qt::StringLiterals;

TEST(FerrowStorage, takesOverTheFolderOfAnOlderName)
{
    // The folders found, those left afterwards, and what the answered one was called before.
    const std::tuple<QByteArrayList, QStringList, QByteArray> rows[] = {
        {{}, {}, {}},
        {{"Ferrow", "Quillmark"}, {u"Ferrow"_s, u"Quillmark"_s}, "Ferrow"},
        {{"Quillmark"}, {u"Ferrow"_s}, "Quillmark"},
        {{"Ambrelite"}, {u"Ferrow"_s}, "Ambrelite"},
        {{"Ambrelite", "Quillmark"}, {u"Ambrelite"_s, u"Ferrow"_s}, "Quillmark"},
    };
    for (const auto& [found, left, cameFrom] : rows) {
        const TemporaryFolder base;
        for (const QByteArray& name : found) {
            createFolder(base.file(name));
            base.write(name + "/presets.json", name);
        }
        FerrowStorage::Operations operations = FerrowStorage::Operations::system();
        operations.userDataFolder = [&] { return base.url(); };
        EXPECT_EQ(FerrowStorage::applicationSupportDirectory(operations), base.file("Ferrow"));
        EXPECT_EQ(namesIn(base.url()), left);
        EXPECT_EQ(readFile(base.file("Ferrow/presets.json")), cameFrom);
    }
}

TEST(FerrowStorage, usesTheOlderFolderWhereItCannotBeMoved)
{
    for (const bool isMadeMeanwhile : {false, true}) {
        bool isAskedAgain = false;
        const auto exists = [&](const FileUrl& url) {
            return url.stem() == "Ferrow" ? std::exchange(isAskedAgain, true) && isMadeMeanwhile
                                          : url.stem() == "Ambrelite";
        };
        const FerrowStorage::Operations operations{[] { return FileUrl::fromPath(QByteArray("/base")); }, exists,
                                                   [](const FileUrl&, const FileUrl&) { return false; }};
        EXPECT_EQ(FerrowStorage::applicationSupportDirectory(operations).stem(),
                  isMadeMeanwhile ? "Ferrow" : "Ambrelite");
    }
}

TEST(FerrowStorage, followsTheBaseDirectoryConvention)
{
    const QByteArray home = qgetenv("HOME");
    const QByteArray data = qgetenv("XDG_DATA_HOME");
    const auto folder = [] { return FerrowStorage::Operations::system().userDataFolder().path(); };
    qputenv("HOME", "/h");
    qputenv("XDG_DATA_HOME", "/d\xff");
    EXPECT_EQ(folder(), "/d\xff");
    qputenv("XDG_DATA_HOME", "relative");
    EXPECT_EQ(folder(), "/h/.local/share");
    qunsetenv("HOME");
    EXPECT_TRUE(folder().startsWith('/'));
    qputenv("HOME", home);
    data.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", data);
}

} // namespace ferrow
