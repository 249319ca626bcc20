// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/FerrowStorage.h"

#include "Platform/Files/FilePlacement.h"
#include "Support/TestSupport.h"

namespace ferrow {

TEST(FerrowStorage, takesOverTheFolderOfAnOlderName)
{
    const struct {
        const char* name;
        QList<QByteArray> there;
        QByteArray answer;
        QList<QByteArray> thereAfter;
        QByteArray cameFrom; ///< What the answered folder was called before.
    } rows[] = {
        {"nothing yet", {}, "Ferrow", {}, {}},
        {"current", {"Ferrow"}, "Ferrow", {"Ferrow"}, "Ferrow"},
        {"current beside an older one", {"Ferrow", "Quillmark"}, "Ferrow", {"Ferrow", "Quillmark"}, "Ferrow"},
        {"older", {"Quillmark"}, "Ferrow", {"Ferrow"}, "Quillmark"},
        {"oldest", {"Ambrelite"}, "Ferrow", {"Ferrow"}, "Ambrelite"},
        {"both older", {"Ambrelite", "Quillmark"}, "Ferrow", {"Ambrelite", "Ferrow"}, "Quillmark"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::TemporaryFolder base;
        for (const QByteArray& name : row.there) {
            createFolder(base.file(name));
            base.write(name + "/presets.json", name);
        }
        FerrowStorage::Operations operations = FerrowStorage::Operations::system();
        operations.userDataFolder = [&] { return base.url(); };
        EXPECT_EQ(FerrowStorage::applicationSupportDirectory(operations), base.file(row.answer));
        for (const QByteArray name : {"Ferrow", "Quillmark", "Ambrelite"}) {
            EXPECT_EQ(operations.exists(base.file(name)), row.thereAfter.contains(name)) << name.toStdString();
        }
        EXPECT_EQ(test::readFile(base.file("Ferrow/presets.json")), row.cameFrom);
    }
}

TEST(FerrowStorage, usesTheOlderFolderWhereItCannotBeMoved)
{
    const FileUrl base = FileUrl::fromPath(QByteArray("/base"));
    for (const bool isMadeMeanwhile : {false, true}) {
        SCOPED_TRACE(isMadeMeanwhile);
        int askedForCurrent = 0;
        const FerrowStorage::Operations operations{[&] { return base; },
                                                   [&](const FileUrl& url) {
                                                       return url.stem() == "Ferrow"
                                                                  ? askedForCurrent++ > 0 && isMadeMeanwhile
                                                                  : url.stem() == "Ambrelite";
                                                   },
                                                   [](const FileUrl&, const FileUrl&) { return false; }};
        EXPECT_EQ(FerrowStorage::applicationSupportDirectory(operations),
                  base.appending(isMadeMeanwhile ? "Ferrow" : "Ambrelite"));
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
