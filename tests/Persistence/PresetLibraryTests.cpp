// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetLibrary.h"

#include "Files/OrdinaryUser.h"
#include "Persistence/Presets.h"
#include "Platform/Base/SystemErrors.h"
#include "Support/TestSupport.h"

#include <QDir>

#include <sys/stat.h>

namespace ferrow {

namespace {

class PresetLibraryTest : public testing::Test {
protected:
    [[nodiscard]] PresetLibrary::Clock clock()
    {
        return [this] { return now; };
    }
    [[nodiscard]] QStringList names(const PresetLibrary& library) const
    {
        QStringList names;
        for (const PhotoPreset& preset : library.presets())
            names += preset.name;
        return names;
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(folder.url().displayPath()).entryList(QDir::Files | QDir::Hidden);
    }

    test::TemporaryFolder folder;
    FileUrl file = folder.file("presets.json");
    QDateTime now{QDate(2026, 11, 21), QTime(9, 3, 7), Qt::UTC};
    PresetPayload payload = test::oddPayload();
};

} // namespace

TEST_F(PresetLibraryTest, startsEmptyAndMakesItsFolderAtTheFirstSave)
{
    const FileUrl deep = folder.file("data/Ferrow/presets.json");
    PresetLibrary library(deep, clock());
    EXPECT_TRUE(library.presets().empty());
    EXPECT_EQ(library.loadErrorMessage(), std::nullopt);

    const PhotoPreset saved = library.save(QStringLiteral(" \u2028Travel\t"), payload);
    EXPECT_EQ(saved.name, QStringLiteral("Travel"));
    EXPECT_EQ(saved.createdAt, now);
    EXPECT_EQ(saved.modifiedAt, now);
    EXPECT_EQ(PresetLibrary(deep).presets(), std::vector{saved});
}

TEST_F(PresetLibraryTest, sortsLikeAFileBrowserAndKeepsEqualNamesInOrder)
{
    PresetLibrary library(file, clock());
    std::vector<QUuid> equals;
    for (const char* name : {"Border 10", "border 2", "Same", "Border 1", "Same"})
        if (const PhotoPreset preset = library.save(QLatin1StringView(name), payload);
            preset.name == QStringLiteral("Same"))
            equals.push_back(preset.id);
    EXPECT_EQ(names(library).join(QLatin1Char(',')), QStringLiteral("Border 1,border 2,Border 10,Same,Same"));
    EXPECT_EQ(library.presets()[3].id, equals[0]);
    EXPECT_EQ(library.presets()[4].id, equals[1]);
}

TEST_F(PresetLibraryTest, renamesDuplicatesAndRemoves)
{
    PresetLibrary library(file, clock());
    const PhotoPreset travel = library.save(QStringLiteral("Travel"), payload);
    now = now.addSecs(60);
    EXPECT_EQ(library.duplicate(travel.id)->name, QStringLiteral("Travel Copy"));
    const PhotoPreset second = *library.duplicate(travel.id);
    EXPECT_EQ(second.name, QStringLiteral("Travel Copy 2"));
    EXPECT_EQ(second.createdAt, now);
    EXPECT_NE(second.id, travel.id);
    EXPECT_EQ(second.payload, payload);

    library.rename(travel.id, QStringLiteral(" Travel Copy "));
    EXPECT_EQ(names(library), (QStringList{QStringLiteral("Travel Copy"), QStringLiteral("Travel Copy"),
                                           QStringLiteral("Travel Copy 2")}));
    EXPECT_EQ(library.duplicate(travel.id)->name, QStringLiteral("Travel Copy Copy"));
    EXPECT_THROW(library.rename(travel.id, QStringLiteral("\u00a0\n")), PresetPersistenceError);
    EXPECT_THROW(library.save(QStringLiteral("  "), payload), PresetPersistenceError);

    library.remove(travel.id);
    EXPECT_EQ(library.presets().size(), 3u);
    EXPECT_EQ(PresetLibrary(file).presets(), library.presets());
    ASSERT_EQ(::unlink(file.path().constData()), 0);
    library.rename(travel.id, QStringLiteral("x"));
    EXPECT_EQ(library.duplicate(travel.id), std::nullopt);
    EXPECT_TRUE(files().isEmpty());
    library.remove(travel.id); // Writes also when nothing was removed.
    EXPECT_EQ(files().size(), 1);
}

TEST_F(PresetLibraryTest, tellsOfChangesAlone)
{
    PresetLibrary library(file, clock());
    int changes = 0;
    QObject::connect(&library, &PresetLibrary::presetsChanged, [&] { ++changes; });
    const PhotoPreset preset = library.save(QStringLiteral("One"), payload);
    EXPECT_EQ(changes, 1);
    library.load();
    library.rename(preset.id, QStringLiteral("One")); // At the same time: nothing differs.
    library.remove(QUuid::createUuid());
    EXPECT_EQ(changes, 1);
    library.remove(preset.id);
    EXPECT_EQ(changes, 2);
}

TEST_F(PresetLibraryTest, keepsTheBytesOfAFileItCouldNotLoad)
{
    const QByteArray newer = R"({"presets": [], "schemaVersion": 4294967298})";
    const struct {
        const char* name;
        QByteArray bytes;
        const char* message;
    } rows[] = {
        {"newer", newer, "format (version 4294967298).\n\nUpdate Ferrow"},
        {"damaged", "{", "damaged"},
        {"empty", "", "damaged"},
        {"too large", QByteArray(32'000'001, ' '), "too large"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::TemporaryFolder place;
        const FileUrl presets = place.write("presets.json", row.bytes);
        const FileUrl kept = place.file("presets (unreadable 2026-11-21 10.03.07).json");
        const FileUrl keptNext = place.file("presets (unreadable 2026-11-21 10.03.07) 2.json");
        place.write(kept.lastPathComponentBytes(), "someone's");

        PresetLibrary library(presets, clock());
        EXPECT_TRUE(library.presets().empty());
        EXPECT_TRUE(library.loadErrorMessage().value_or(QString()).contains(QLatin1StringView(row.message)))
            << library.loadErrorMessage().value_or(QString()).toStdString();
        EXPECT_EQ(test::readFile(presets), row.bytes);

        library.save(QStringLiteral("One"), payload);
        library.save(QStringLiteral("Two"), payload);
        EXPECT_EQ(test::readFile(kept), "someone's");
        EXPECT_EQ(test::readFile(keptNext), row.bytes);
        EXPECT_EQ(PresetLibrary(presets).presets().size(), 2u);
        EXPECT_EQ(QDir(place.url().displayPath()).entryList(QDir::Files | QDir::Hidden).size(), 3);
    }
}

TEST_F(PresetLibraryTest, movesAFileAsideThatItMayNotRead)
{
    PresetLibrary(file, clock()).save(QStringLiteral("Old"), payload);
    const QByteArray bytes = test::readFile(file);
    ASSERT_EQ(::chmod(file.path().constData(), 0), 0);
    {
        const test::OrdinaryUser user(folder.url());
        PresetLibrary library(file, clock());
        EXPECT_NE(library.loadErrorMessage(), std::nullopt);
        library.save(QStringLiteral("New"), payload);
    }
    const FileUrl kept = folder.file("presets (unreadable 2026-11-21 10.03.07).json");
    ASSERT_EQ(::chmod(kept.path().constData(), 0644), 0);
    EXPECT_EQ(test::readFile(kept), bytes);
    EXPECT_EQ(names(PresetLibrary(file)), QStringList{QStringLiteral("New")});
}

TEST_F(PresetLibraryTest, keepsAChangeInMemoryThatCouldNotBeWritten)
{
    PresetLibrary library(file, clock());
    library.save(QStringLiteral("Old"), payload);
    const QByteArray bytes = test::readFile(file);
    ASSERT_EQ(::chmod(folder.url().path().constData(), 0555), 0);
    {
        const test::OrdinaryUser user(file);
        EXPECT_THROW(library.save(QStringLiteral("New"), payload), SystemError);
    }
    EXPECT_EQ(library.presets().size(), 2u);
    EXPECT_EQ(test::readFile(file), bytes);

    ASSERT_EQ(::chmod(folder.url().path().constData(), 0755), 0);
    library.save(QStringLiteral("Newer"), payload);
    EXPECT_EQ(PresetLibrary(file).presets(), library.presets());
}

} // namespace ferrow
