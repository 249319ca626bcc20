// SPDX-License-Identifier: GPL-3.0-or-later
#include "Persistence/PresetLibrary.h"

#include "Files/OrdinaryUser.h"
#include "Persistence/Presets.h"
#include "Support/Files.h"

#include <QTimeZone>

#include <sys/wait.h>

#include <array>
#include <ranges>

namespace ferrow {

using namespace test;
using namespace Qt::StringLiterals;

namespace {

class PresetLibraryTest : public testing::Test {
protected:
    /// The names in their order, with commas between.
    [[nodiscard]] static QString names(const PresetLibrary& library)
    {
        QStringList names;
        for (const PhotoPreset& preset : library.presets())
            names += preset.name;
        return names.join(u',');
    }

    TemporaryFolder folder;
    FileUrl file = folder.file("presets.json");
    FileUrl kept = folder.file("presets (unreadable 2026-11-21 10.03.07).json");
    QDateTime now{QDate(2026, 11, 21), QTime(9, 3, 7), QTimeZone::utc()};
    PresetLibrary::Clock clock = [this] { return now; };
    PresetPayload payload = oddPayload();
};

} // namespace

TEST_F(PresetLibraryTest, startsEmptyAndSortsWhatIsSavedLikeAFileBrowser)
{
    const FileUrl deep = folder.file("data/Ferrow/presets.json");
    PresetLibrary library(deep, clock);
    EXPECT_TRUE(library.presets().empty());
    EXPECT_EQ(library.loadErrorMessage(), std::nullopt);
    const PhotoPreset first = library.save(u" \u2028Same\t"_s, payload);
    EXPECT_EQ(first.createdAt, now);
    EXPECT_EQ(first.modifiedAt, now);
    for (const QString& name : {u"Border 10"_s, u"border 2"_s, u"Border 1"_s})
        library.save(name, payload);
    EXPECT_EQ(names(library), u"Border 1,border 2,Border 10,Same"_s);
    std::vector equals{first}; // More than sorting in place leaves in their order by chance.
    while (equals.size() < 40)
        equals.push_back(library.save(u"Same"_s, payload));
    EXPECT_TRUE(std::ranges::equal(library.presets() | std::views::drop(3), equals));
    EXPECT_EQ(PresetLibrary(deep).presets(), library.presets());
}

TEST_F(PresetLibraryTest, renamesDuplicatesAndRemoves)
{
    PresetLibrary library(file, clock);
    const PhotoPreset travel = library.save(u"Travel"_s, payload);
    now = now.addSecs(60);
    EXPECT_EQ(library.duplicate(travel.id)->name, u"Travel Copy"_s);
    const PhotoPreset second = *library.duplicate(travel.id);
    EXPECT_NE(second.id, travel.id);
    EXPECT_EQ(second, (PhotoPreset{second.id, u"Travel Copy 2"_s, payload, now, now}));
    library.rename(travel.id, u" Travel Copy "_s);
    EXPECT_EQ(names(library), u"Travel Copy,Travel Copy,Travel Copy 2"_s);
    EXPECT_THROW(library.rename(travel.id, u"\u00a0\n"_s), PresetPersistenceError);
    EXPECT_THROW(library.save(u"  "_s, payload), PresetPersistenceError);
    library.remove(travel.id);
    EXPECT_EQ(names(library), u"Travel Copy,Travel Copy 2"_s);
    EXPECT_EQ(PresetLibrary(file).presets(), library.presets());

    ASSERT_EQ(::unlink(file.path().constData()), 0);
    library.rename(travel.id, u"x"_s);
    EXPECT_EQ(library.duplicate(travel.id), std::nullopt);
    EXPECT_FALSE(exists(file));
    library.remove(travel.id); // Writes also when nothing was removed.
    EXPECT_TRUE(exists(file));
}

TEST_F(PresetLibraryTest, tellsOfChangesAlone)
{
    PresetLibrary library(file, clock);
    int changes = 0;
    QObject::connect(&library, &PresetLibrary::presetsChanged, [&] { ++changes; });
    const PhotoPreset preset = library.save(u"One"_s, payload);
    library.load();
    library.rename(preset.id, u"One"_s); // At the same time: nothing differs.
    library.remove(QUuid::createUuid());
    EXPECT_EQ(changes, 1);
}

TEST_F(PresetLibraryTest, keepsTheBytesOfAFileItCouldNotLoad)
{
    const std::pair<QByteArray, QString> rows[] = {
        {R"({"presets": [], "schemaVersion": 4294967298})", u"format (version 4294967298).\n\nUpdate Ferrow"_s},
        {R"({"presets": [{"id": 7}], "schemaVersion": 3})", u"format (version 3).\n\nUpdate Ferrow"_s},
        {"", u"damaged"_s},
        {QByteArray(32'000'001, ' '), u"too large"_s},
    };
    const FileUrl keptNext = folder.file("presets (unreadable 2026-11-21 10.03.07) 2.json");
    for (const auto& [bytes, message] : rows) {
        folder.write("presets.json", bytes);
        folder.write(kept.lastPathComponentBytes(), "someone's");
        PresetLibrary library(file, clock);
        EXPECT_TRUE(library.loadErrorMessage().value_or(QString()).contains(message)) << message.toStdString();
        EXPECT_EQ(readFile(file), bytes);

        library.save(u"One"_s, payload);
        library.save(u"Two"_s, payload);
        EXPECT_EQ(readFile(kept), "someone's");
        EXPECT_EQ(readFile(keptNext), bytes);
        EXPECT_EQ(names(PresetLibrary(file)), u"One,Two"_s);
        EXPECT_EQ(namesIn(folder.url()).size(), 3);
        ::unlink(keptNext.path().constData());
    }
}

TEST_F(PresetLibraryTest, movesAFileAsideThatItMayNotRead)
{
    PresetLibrary(file, clock).save(u"Old"_s, payload);
    const QByteArray bytes = readFile(file);
    setMode(file, 0);
    {
        const OrdinaryUser user(folder.url());
        PresetLibrary library(file, clock);
        EXPECT_NE(library.loadErrorMessage(), std::nullopt);
        library.save(u"New"_s, payload);
    }
    setMode(kept, 0644);
    EXPECT_EQ(readFile(kept), bytes);
    EXPECT_EQ(names(PresetLibrary(file)), u"New"_s);
}

TEST_F(PresetLibraryTest, keepsAChangeInMemoryThatCouldNotBeWritten)
{
    PresetLibrary library(file, clock);
    library.save(u"Old"_s, payload);
    const QByteArray bytes = readFile(file);
    setMode(folder.url(), 0555);
    {
        const OrdinaryUser user(file);
        EXPECT_EQ(errnoOf([&] { library.save(u"New"_s, payload); }), EACCES);
    }
    EXPECT_EQ(names(library), u"New,Old"_s);
    EXPECT_EQ(readFile(file), bytes);
    setMode(folder.url(), 0755);
    library.save(u"Newer"_s, payload);
    EXPECT_EQ(PresetLibrary(file).presets(), library.presets());
}

TEST_F(PresetLibraryTest, keepsWhatOtherWindowsSaved)
{
    PresetLibrary(file, clock).save(u"Old"_s, payload);
    PresetLibrary first(file, clock);
    PresetLibrary second(file, clock);
    const QUuid old = first.presets().front().id;
    first.rename(old, u"Renamed"_s);
    const QUuid removed = first.save(u"Removed"_s, payload).id;
    second.save(u"Second"_s, payload);
    EXPECT_EQ(names(second), u"Removed,Renamed,Second"_s);
    second.remove(removed);
    first.rename(removed, u"Again"_s);
    EXPECT_EQ(names(first), u"Renamed,Second"_s) << "a preset that another window removed comes back";
    second.rename(old, u"Twice"_s);
    first.refresh();
    EXPECT_EQ(names(first), u"Second,Twice"_s);
}

TEST_F(PresetLibraryTest, losesNothingWhenSixProcessesSaveAtOnce)
{
    constexpr int savesEach = 5;
    std::array<int, 2> gate{};
    ASSERT_EQ(::pipe(gate.data()), 0);
    std::array<pid_t, 6> children{};
    for (pid_t& child : children) {
        child = ::fork();
        if (child != 0)
            continue;
        ::close(gate[1]);
        PresetLibrary library(file, clock);
        char none = 0;
        (void)!::read(gate[0], &none, 1); // Ends when the gate is closed for all.
        const bool failed = errorOf<SystemError>([&] {
                                for (int i = 0; i < savesEach; ++i)
                                    library.save(u"Preset"_s, payload);
                                return 0;
                            }).has_value();
        ::_exit(failed ? 1 : 0);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(PresetLibrary(file).presets().size(), children.size() * savesEach);
}

} // namespace ferrow
