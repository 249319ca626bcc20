// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoSession.h"

#include "Session/PhotoImport.h"
#include "SessionTestSupport.h"
#include "Support/Pictures.h"

#include <QSignalSpy>

#include <atomic>
#include <future>
#include <memory>
#include <system_error>
#include <thread>

namespace ferrow {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PhotoSession, joinsWhatAnImportReadsInTheOrderOfNames)
{
    auto operations = test::withoutDisk();
    operations.scan = [](const std::vector<FileUrl>& urls) {
        return BatchImportScan{urls,
                               test::photoUrls({"x 10.gif", "x 2", "x 1.gif"}),
                               {{.filename = QStringLiteral("y"), .message = QStringLiteral("closed"), .source = {}}}};
    };
    operations.load = [](const FileUrl& url, const std::stop_token&) {
        if (url.path().contains("bad"))
            throw ImagePipelineError(ImagePipelineError::malformedImage);
        ImportedPhoto photo = test::photoAt(url);
        photo.previewSource = test::noise({28, 20}, url.path().endsWith("png") ? rgba8 : rgb8);
        return photo;
    };
    test::DisklessSession session(operations);
    const QSignalSpy photosChanged(&session, &PhotoSession::photosChanged);
    std::optional<ImportOutcome> outcome;
    session.importPhotos(test::photoUrls({"IMG_10.jpg", "bad 5.jpg", "IMG_2.png"}),
                         [&](const ImportOutcome& given) { outcome = given; });
    ImportOutcome refused{.added = 7};
    session.importPhotos(test::photoUrls({"other.jpg"}), [&](const ImportOutcome& given) { refused = given; });
    EXPECT_EQ(refused, ImportOutcome::none);
    ASSERT_TRUE(test::waitUntil([&] { return outcome.has_value(); }));

    EXPECT_FALSE(session.isImporting());
    EXPECT_EQ(photosChanged.size(), 1);
    EXPECT_THAT(test::names(session.photos()), ElementsAre("IMG_2.png", "IMG_10.jpg"));
    EXPECT_EQ(outcome->added, 2);
    EXPECT_FALSE(outcome->hadNothingNew);
    QStringList failed;
    for (const auto& failure : outcome->failures)
        failed.append(failure.filename);
    EXPECT_EQ(failed.join(u'|'), QStringLiteral("bad 5.jpg|x 1.gif|x 2|x 10.gif|y"));
    EXPECT_TRUE(outcome->failures[2].message.contains(QStringLiteral("This file type")));
    for (const ImportedPhoto& photo : session.photos()) {
        EXPECT_TRUE(photo.previewSource.isNull());
        EXPECT_EQ(session.thumbnail(photo.id()).size(), QSize(28, 20));
        EXPECT_EQ(session.thumbnail(photo.id()).hasAlphaChannel(), photo.filename().endsWith(QStringLiteral("png")));
    }
}

TEST(PhotoSession, listsAndSelectsHoweverFastEachIsRead)
{
    const std::vector<FileUrl> urls = test::photoUrls({"x/c", "y/c", "b"});
    std::latch others(2);
    auto operations = test::withoutDisk();
    operations.load = [&](const FileUrl& url, const std::stop_token&) {
        url == urls[0] ? others.wait() : others.count_down();
        return test::photoAt(url);
    };
    test::DisklessSession session(operations);
    test::importInto(session, urls);
    EXPECT_THAT(test::names(session.photos()), ElementsAre("b", "c", "c"));
    EXPECT_EQ(session.photos()[1].id(), urls[0]) << "of one name, in the order of their folders";
    EXPECT_EQ(test::selectedName(session), "b");
}

TEST(PhotoSession, keepsTheSelectionValidAndForgetsWhatIsRemoved)
{
    test::DisklessSession session;
    test::importInto(session, test::photoUrls({"c"}));
    test::importInto(session, test::photoUrls({"b"}));
    const ImportOutcome again = test::importInto(session, test::photoUrls({"./b"}));
    EXPECT_TRUE(again.added == 0 && again.hadNothingNew);
    test::importInto(session, test::photoUrls({"a", "d", "e"}));
    EXPECT_EQ(test::selectedName(session), "c") << "an import takes the selection from nobody";
    const FileUrl b = test::photoUrl("b");
    session.setSelectedPhotoID(b);
    session.toggleIncluded(b);
    session.setPhotoRecipe(b, test::border(7));
    session.removeSelected();
    EXPECT_EQ(test::selectedName(session), "c");
    EXPECT_EQ(test::importInto(session, {b}).added, 1);
    EXPECT_TRUE(session.isIncluded(b) && !session.hasOwnRecipe(b));

    const struct {
        const char* name;
        const char* selected;
        std::vector<QByteArray> removed;
        const char* then;
    } rows[] = {{"another", "b", {"a"}, "b"},
                {"several with the selected one", "c", {"d", "c", "unknown", "c"}, "e"},
                {"the last", "e", {"e"}, "b"},
                {"the only one", "b", {"b"}, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        session.setSelectedPhotoID(test::photoUrl(row.selected));
        session.remove(test::photoUrls(row.removed));
        EXPECT_EQ(test::selectedName(session), row.then);
    }
    EXPECT_THAT(session.photos(), IsEmpty());
}

TEST(PhotoSession, editsWhereTheScopeSays)
{
    test::DisklessSession session;
    session.setRecipeScope(RecipeScope::selected);
    session.applyRecipe(test::border(1));
    EXPECT_EQ(session.batchRecipe().border.width, 1);
    session.setRecipeScope(RecipeScope::batch);

    test::importInto(session, test::photoUrls({"a", "b"}));
    const FileUrl a = test::photoUrl("a");
    session.setSelectedPhotoID(a);
    session.setRecipeScope(RecipeScope::selected);
    EXPECT_EQ(session.activeRecipe().border.width, 1);
    EXPECT_FALSE(session.hasOwnRecipe(a)) << "it was only looked at";
    session.applyRecipe(test::border(2));
    session.setRecipeScope(RecipeScope::batch);
    EXPECT_EQ(session.activeRecipe().border.width, 1);
    EXPECT_EQ(session.resolvedRecipe(a).border.width, 1);
    session.setRecipeScope(RecipeScope::selected);
    EXPECT_EQ(session.activeRecipe().border.width, 2);
    session.setSelectedPhotoID(test::photoUrl("b"));
    EXPECT_FALSE(session.hasOwnRecipe(test::photoUrl("b")));
    EXPECT_EQ(session.activeRecipe().border.width, 1);

    session.clearAll();
    EXPECT_EQ(session.batchRecipe().border.width, 1);
    EXPECT_EQ(session.recipeScope(), RecipeScope::selected);
    EXPECT_TRUE(session.photoRecipes().empty() && !session.selectedPhotoID());
}

TEST(PhotoSession, tellsNobodyOfNothing)
{
    test::DisklessSession session;
    test::importInto(session, test::photoUrls({"a"}));
    session.setPhotoRecipe(test::photoUrl("a"), test::border(3));
    int told = 0;
    const auto count = [&] { ++told; };
    for (const auto signal :
         {&PhotoSession::photosChanged, &PhotoSession::selectedPhotoIDChanged, &PhotoSession::excludedPhotoIDsChanged,
          &PhotoSession::batchRecipeChanged, &PhotoSession::photoRecipesChanged, &PhotoSession::recipeScopeChanged})
        QObject::connect(&session, signal, &session, count);
    session.setSelectedPhotoID(test::photoUrl("a"));
    session.setBatchRecipe(RenderRecipe(session.batchRecipe()));
    session.setPhotoRecipe(test::photoUrl("a"), test::border(3));
    session.setPhotoRecipe(test::photoUrl("b"), std::nullopt);
    session.setIncluded(test::photoUrls({"a", "b"}), true);
    session.setRecipeScope(RecipeScope::batch);
    session.remove(test::photoUrls({"b"}));
    EXPECT_EQ(told, 0);
    // Whoever hears of the list finds the rest of the change done.
    QObject::connect(&session, &PhotoSession::photosChanged, &session,
                     [&] { EXPECT_TRUE(!session.selectedPhotoID() && session.photoRecipes().empty()); });
    session.removeSelected();
    EXPECT_EQ(told, 3);
}

TEST(PhotoSession, keepsWhatWasReadBeforeACancelAndWaitsForNoMore)
{
    auto operations = test::withoutDisk();
    operations.load = [&](const FileUrl& url, const std::stop_token& stop) {
        while (!url.path().endsWith("/1")) {
            throwIfCanceled(stop);
            std::this_thread::yield();
        }
        return test::photoAt(url);
    };
    test::DisklessSession session(operations);
    std::vector<FileUrl> urls;
    for (int i = 1; i <= 100; ++i)
        urls.push_back(test::photoUrl(QByteArray::number(i)));
    std::size_t read = 0;
    QObject::connect(&session, &PhotoSession::importProgressed, &session,
                     [&](std::size_t soFar, std::size_t) { read = soFar; });
    std::vector<ImportOutcome> outcomes;
    session.importPhotos(urls, [&](const ImportOutcome& outcome) { outcomes.push_back(outcome); });
    EXPECT_TRUE(test::waitUntil([&] { return read == 1; }));
    session.cancelImport();
    ASSERT_TRUE(test::waitUntil([&] { return !outcomes.empty(); }));
    EXPECT_EQ(outcomes[0].added, 1);
    EXPECT_THAT(test::names(session.photos()), ElementsAre("1"));
    EXPECT_THAT(outcomes[0].failures, IsEmpty());
    EXPECT_FALSE(session.isImporting());
}

TEST(PhotoSession, doublesNoPhotoThatComesBackWhileItIsRead)
{
    std::latch gate(1);
    std::atomic<bool> isGated = false;
    auto operations = test::withoutDisk();
    operations.load = [&](const FileUrl& url, const std::stop_token&) {
        if (isGated)
            gate.wait();
        return test::photoAt(url);
    };
    test::DisklessSession session(operations);
    test::importInto(session, test::photoUrls({"a", "b"}));
    const RemovedPhotos removed = session.remove(test::photoUrls({"a"}));
    isGated = true;
    const QSignalSpy progressed(&session, &PhotoSession::importProgressed);
    std::optional<ImportOutcome> outcome;
    session.importPhotos(test::photoUrls({"a", "c"}), [&](const ImportOutcome& given) { outcome = given; });
    ASSERT_TRUE(test::waitUntil([&] { return !progressed.empty(); }));
    session.restore(removed);
    gate.count_down();
    ASSERT_TRUE(test::waitUntil([&] { return outcome.has_value(); }));
    EXPECT_EQ(outcome->added, 1);
    EXPECT_THAT(test::names(session.photos()), ElementsAre("a", "b", "c"));
}

TEST(PhotoSession, takesNothingFromAnImportAfterClearingAll)
{
    for (const bool whileWalking : {true, false}) {
        SCOPED_TRACE(whileWalking ? "while folders are walked" : "while photos are read");
        const auto gate = std::make_shared<std::latch>(1);
        std::atomic<int> stuck = 0;
        auto operations = test::withoutDisk();
        operations.scan = [&stuck, gate, whileWalking](const std::vector<FileUrl>& urls) {
            if (whileWalking && urls.size() > 1 && ++stuck)
                gate->wait();
            return BatchImportScan{urls, {}};
        };
        operations.load = [&stuck, gate, whileWalking](const FileUrl& url, const std::stop_token&) {
            if (!whileWalking && url == test::photoUrl("d") && ++stuck)
                gate->wait();
            return test::photoAt(url);
        };
        test::DisklessSession session(operations);
        test::importInto(session, test::photoUrls({"a"}));
        std::optional<ImportOutcome> outcome;
        session.importPhotos(test::photoUrls({"d", "e"}), [&](const ImportOutcome& given) { outcome = given; });
        ASSERT_TRUE(test::waitUntil([&] { return stuck == 1; }));
        session.clearAll();
        EXPECT_EQ(outcome, ImportOutcome::none);
        EXPECT_FALSE(session.isImporting());
        gate->count_down();
        ASSERT_TRUE(test::waitUntil([] { return WorkQueue::threadsLeftBehind() == 0; }));
        test::importInto(session, test::photoUrls({"f"}));
        EXPECT_THAT(test::names(session.photos()), ElementsAre("f"));
    }
}

TEST(PhotoSession, selectsWhatComesBackUnlessAnotherWasChosenSince)
{
    const struct {
        const char* name;
        const char* selected;
        const char* removed;
        const char* chosen;
        const char* then;
    } rows[] = {{"the selected one", "b", "b", nullptr, "b"},
                {"the selected one, another chosen since", "b", "b", "a", "a"},
                {"another one, a third chosen since", "a", "c", "b", "b"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        test::DisklessSession session;
        test::importInto(session, test::photoUrls({"a", "b", "c"}));
        session.setSelectedPhotoID(test::photoUrl(row.selected));
        const RemovedPhotos removed = session.remove(test::photoUrls({row.removed}));
        if (row.chosen)
            session.setSelectedPhotoID(test::photoUrl(row.chosen));
        session.restore(removed);
        EXPECT_EQ(test::selectedName(session), row.then);
    }
}

TEST(PhotoImport, failsEachFileWhereNothingCanBeRead)
{
    PhotoImport::Work work;
    work.scan.candidates = test::photoUrls({"b", "a"});
    PhotoImport::run(work, test::withoutDisk().load,
                     [] { throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again)); });
    EXPECT_TRUE(work.result.photos.empty() && work.thumbnails.empty());
    ASSERT_EQ(work.result.failures.size(), 2u);
    EXPECT_EQ(work.result.failures[0].source, test::photoUrl("a"));
    EXPECT_FALSE(work.result.failures[0].message.isEmpty());
}

TEST(WorkQueue, leavesWhatRunsBehindWithoutWaitingForItLater)
{
    std::latch started(1);
    std::promise<void> gone;
    std::promise<bool> sawItGo;
    {
        WorkQueue queue(1, std::chrono::hours(1));
        queue.post([&, gone = gone.get_future().share()] {
            started.count_down();
            // The limit is only there so that a failing test ends.
            sawItGo.set_value(gone.wait_for(std::chrono::seconds(5)) == std::future_status::ready);
        });
        started.wait();
        queue.leaveBehind();
        EXPECT_EQ(WorkQueue::threadsLeftBehind(), 1);
    }
    gone.set_value();
    EXPECT_TRUE(sawItGo.get_future().get());
    EXPECT_TRUE(test::waitUntil([] { return WorkQueue::threadsLeftBehind() == 0; }));
}

TEST(PhotoSession, leavesAScanThatDoesNotEnd)
{
    const auto gate = std::make_shared<std::latch>(1);
    std::atomic<int> stuck = 0;
    auto operations = test::withoutDisk();
    operations.scan = [&stuck, gate](const std::vector<FileUrl>& urls) {
        if (urls.size() > 1) {
            ++stuck;
            gate->wait();
        }
        return BatchImportScan{urls, {}};
    };
    {
        test::DisklessSession session(operations);
        std::optional<ImportOutcome> outcome;
        session.importPhotos(test::photoUrls({"a", "b"}), [&](const ImportOutcome& given) { outcome = given; });
        ASSERT_TRUE(test::waitUntil([&] { return stuck == 1; }));
        session.cancelImport();
        EXPECT_EQ(outcome, ImportOutcome::none);
        EXPECT_EQ(test::importInto(session, test::photoUrls({"c"})).added, 1);
        session.importPhotos(test::photoUrls({"d", "e"}), [](const ImportOutcome&) { ADD_FAILURE(); });
        ASSERT_TRUE(test::waitUntil([&] { return stuck == 2; }));
    }
    EXPECT_EQ(WorkQueue::threadsLeftBehind(), 2);
    gate->count_down();
    EXPECT_TRUE(test::waitUntil([] { return WorkQueue::threadsLeftBehind() == 0; }));
}

TEST(PhotoSession, findsAndReordersTenThousand)
{
    test::DisklessSession session;
    std::vector<FileUrl> urls;
    for (int i = 0; i < 10'000; ++i)
        urls.push_back(test::photoUrl(QByteArray::number((i * 7'919) % 10'000) + ".jpg"));
    EXPECT_EQ(test::importInto(session, urls).added, 10'000);
    const auto before = test::names(session.photos());
    const auto isConsistent = [&] {
        bool consistent = true;
        for (std::size_t i = 0; i < session.photos().size(); ++i)
            consistent &= session.indexOf(session.photos()[i].id()) == i;
        return consistent;
    };
    EXPECT_TRUE(isConsistent());
    EXPECT_EQ(before[1'234], "1234.jpg");

    std::vector<FileUrl> third;
    for (std::size_t i = 0; i < session.photos().size(); i += 3)
        third.push_back(session.photos()[i].id());
    const RemovedPhotos removed = session.remove(third);
    EXPECT_EQ(session.photos().size(), 10'000 - third.size());
    EXPECT_FALSE(session.indexOf(third[5]));
    EXPECT_TRUE(isConsistent());
    test::importInto(session, {third[5], test::photoUrl("12a.jpg")});
    session.restore(removed);
    EXPECT_TRUE(isConsistent());
    session.remove(test::photoUrls({"12a.jpg"}));
    EXPECT_EQ(test::names(session.photos()), before);
}

TEST(PhotoSession, keepsTheChosenOrderThroughEveryChange)
{
    auto operations = test::withoutDisk();
    operations.load = [](const FileUrl& url, const std::stop_token&) {
        ImportedPhoto photo = test::photoAt(url);
        const int year = url.path().right(4).toInt();
        if (year > 0)
            photo.metadata.captureDate = QDateTime(QDate(year, 1, 1), QTime(12, 0));
        return photo;
    };
    test::DisklessSession session(operations);
    test::importInto(session, test::photoUrls({"a2003", "b2001", "c"}));
    session.setSelectedPhotoID(test::photoUrl("c"));
    session.setOrder({PhotoOrder::Key::captureDate});
    EXPECT_THAT(test::names(session.photos()), testing::ElementsAre("b2001", "a2003", "c"));
    test::importInto(session, test::photoUrls({"z2002", "x"}));
    EXPECT_THAT(test::names(session.photos()), testing::ElementsAre("b2001", "z2002", "a2003", "c", "x"));
    EXPECT_EQ(session.indexOf(test::photoUrl("a2003")), 2U);
    EXPECT_EQ(test::selectedName(session), "c");
    const RemovedPhotos removed = session.remove(test::photoUrls({"z2002"}));
    session.setOrder({PhotoOrder::Key::added, true});
    EXPECT_THAT(test::names(session.photos()), testing::ElementsAre("x", "c", "b2001", "a2003"));
    session.restore(removed);
    EXPECT_THAT(test::names(session.photos()), testing::ElementsAre("z2002", "x", "c", "b2001", "a2003"));
    session.setOrder({PhotoOrder::Key::captureDate});
    session.setCorrections(
        {{test::photoUrl("c"), {{MetadataField::captureDate, QDateTime(QDate(1990, 1, 1), QTime(12, 0))}}}});
    EXPECT_THAT(test::names(session.photos()), testing::ElementsAre("c", "b2001", "z2002", "a2003", "x"));
    EXPECT_EQ(session.indexOf(test::photoUrl("c")), 0U);
}

} // namespace ferrow
