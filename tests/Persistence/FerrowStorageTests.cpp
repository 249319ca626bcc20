// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/FerrowStorage.h"

#include "Platform/Files/FilePlacement.h"
#include "Support/Files.h"

namespace ferrow {

using namespace test;

TEST(FerrowStorage, takesOverTheFolderOfAnOlderName)
{
    FerrowStorage::Operations operations = FerrowStorage::Operations::system();
    // The folders that are left, and what the current one was called before.
    const auto takenOver = [&](const QByteArrayList& found) {
        const TemporaryFolder base;
        for (const QByteArray& name : found) {
            createFolder(base.file(name));
            base.write(name + "/presets.json", name);
        }
        operations.userDataFolder = [&] { return base.url(); };
        EXPECT_EQ(FerrowStorage::applicationSupportDirectory(operations), base.file("Ferrow"));
        return namesIn(base.url()).join(u' ').toStdString() + ": " +
               readFile(base.file("Ferrow/presets.json")).toStdString();
    };
    EXPECT_EQ(takenOver({}), ": ");
    EXPECT_EQ(takenOver({"Ferrow", "Quillmark"}), "Ferrow Quillmark: Ferrow");
    EXPECT_EQ(takenOver({"Quillmark"}), "Ferrow: Quillmark");
    EXPECT_EQ(takenOver({"Ambrelite"}), "Ferrow: Ambrelite");
    EXPECT_EQ(takenOver({"Ambrelite", "Quillmark"}), "Ambrelite Ferrow: Quillmark");
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
    const auto folder = [](const char* data) {
        qputenv("XDG_DATA_HOME", data);
        return FerrowStorage::Operations::system().userDataFolder().path();
    };
    EXPECT_EQ(folder("/d\xff"), "/d\xff");
    EXPECT_EQ(folder("relative"), QFile::encodeName(QDir::homePath()) + "/.local/share");
    qunsetenv("XDG_DATA_HOME");
}

} // namespace ferrow
