// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/InspectorView.h"
#include "Features/PhotoSidebar/PhotoListView.h"
#include "Features/PhotoSidebar/PhotoSidebar.h"
#include "Features/PreviewPane/EmptyPreview.h"
#include "Features/PreviewPane/StarterChoice.h"
#include "Models/StarterFrames.h"
#include "Session/SessionTestSupport.h"
#include "Session/ThumbnailCache.h"
#include "Support/Pictures.h"
#include "Widgets/Theme.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <atomic>

namespace ferrow::test {

TEST(ThumbnailCache, showsWhatTheFileHoldsNowAndRemembersNoAbsence)
{
    std::atomic<int> red = 200;
    auto operations = withoutDisk();
    operations.load = [&](const FileUrl& url, const std::stop_token&) {
        ImportedPhoto photo = photoAt(url);
        photo.previewSource = flat({28, 20}, rgb8, {red, 0, 0});
        return photo;
    };
    DisklessSession session(operations);
    importInto(session, photoUrls({"a", "b", "c"}));
    ThumbnailCache cache(session);
    const QSize box(14, 10);
    const auto redOf = [&](const char* name) {
        QImage image;
        EXPECT_TRUE(waitUntil([&] { return !(image = cache.image(photoUrl(name), box)).isNull(); })) << name;
        return image.isNull() ? -1 : qRed(image.pixel(5, 5));
    };
    EXPECT_NEAR(redOf("a"), 200, 3);
    session.remove(photoUrls({"a"}));
    red = 90;
    importInto(session, photoUrls({"a"}));
    EXPECT_NEAR(redOf("a"), 90, 3);

    // Wished for behind another one, and gone before its turn.
    EXPECT_TRUE(cache.image(photoUrl("b"), box).isNull());
    EXPECT_TRUE(cache.image(photoUrl("c"), box).isNull());
    const RemovedPhotos removed = session.remove(photoUrls({"c"}));
    EXPECT_NE(redOf("b"), -1);
    session.restore(removed);
    EXPECT_NEAR(redOf("c"), 200, 3);
}

TEST(PhotoListModel, keepsItsPromisesToViewsInEveryChange)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    ListedPhotos listed(session, exportSession);
    PhotoListModel& model = listed.model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    const auto rows = [&] {
        std::string all;
        for (int row = 0; row < model.rowCount(); ++row)
            all += model.index(row).data().toString().toStdString() + (model.isIncluded(row) ? "" : "-");
        return all;
    };
    importInto(session, photoUrls({"b", "c", "e"}));
    importInto(session, photoUrls({"d"}));
    EXPECT_EQ(rows(), "bcde");
    history.remove(photoUrls({"c", "d"}));
    EXPECT_EQ(rows(), "be");
    history.stack().undo();
    EXPECT_EQ(rows(), "bcde");
    EXPECT_EQ(resets.size(), 0) << "one run of rows each time";
    history.remove(photoUrls({"b", "d"}));
    EXPECT_EQ(rows(), "ce");
    history.stack().undo();
    importInto(session, photoUrls({"a", "f"}));
    EXPECT_EQ(rows(), "abcdef");

    const auto before = changes.size();
    history.toggleIncluded(photoUrl("e"));
    EXPECT_EQ(rows(), "abcde-f");
    EXPECT_GT(changes.size(), before);
    model.setUnreadable(photoUrl("b"), true);
    EXPECT_EQ(changes.last().constFirst().toModelIndex().row(), 1);
    EXPECT_TRUE(model.index(1).data(Qt::AccessibleTextRole).toString().contains(QStringLiteral("not readable")));
    session.remove(photoUrls({"b"}));
    importInto(session, photoUrls({"b"}));
    EXPECT_FALSE(model.isUnreadable(1)) << "added again it may have been mended";
    session.clearAll();
    EXPECT_EQ(rows(), "");
}

TEST(PhotoSidebar, takesOnlyTheUsersChoiceForAChoice)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    importInto(session, photoUrls({"a", "b", "c", "d"}));
    session.setSelectedPhotoID(photoUrl("b"));
    ListedPhotos listed(session, exportSession);
    PhotoSidebar sidebar(listed.model, session, history, exportSession);
    sidebar.show();
    const QSignalSpy chosen(&sidebar, &PhotoSidebar::photoChosen);
    QTest::keyClick(sidebar.list(), Qt::Key_Delete);
    EXPECT_EQ(selectedName(session), "c");
    history.remove(photoUrls({"c", "d"}));
    EXPECT_EQ(selectedName(session), "a");
    history.stack().undo();
    EXPECT_EQ(selectedName(session), "c");
    EXPECT_EQ(sidebar.list()->currentIndex().row(), 1);
    // Walking through is none either; a click is, on the row that is current already as well.
    QTest::keyClick(sidebar.list(), Qt::Key_Right);
    EXPECT_EQ(selectedName(session), "d");
    QTest::keyClick(sidebar.list(), Qt::Key_Left);
    EXPECT_EQ(selectedName(session), "c");
    QTest::keyClick(sidebar.list(), Qt::Key_D);
    EXPECT_EQ(selectedName(session), "d");
    EXPECT_EQ(chosen.size(), 0);
    for (int click = 1; click <= 2; ++click) {
        QTest::mouseClick(sidebar.list()->viewport(), Qt::LeftButton, {},
                          sidebar.list()->visualRect(sidebar.list()->model()->index(0, 0)).center());
        EXPECT_EQ(selectedName(session), "a");
        EXPECT_EQ(chosen.size(), click);
    }
    QTest::keyClick(sidebar.list(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(chosen.size(), 3);
    QTest::keyClick(sidebar.list(), Qt::Key_Delete, Qt::KeypadModifier);
    EXPECT_EQ(session.photos().size(), 2U);
}

TEST(PhotoSidebar, ticksARangeWithShiftInOneStep)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    importInto(session, photoUrls({"a", "b", "c", "d", "e", "f"}));
    session.setSelectedPhotoID(photoUrl("b"));
    ListedPhotos listed(session, exportSession);
    PhotoSidebar sidebar(listed.model, session, history, exportSession);
    sidebar.resize(280, 700);
    sidebar.show();
    const auto pressTick = [&](int row, Qt::KeyboardModifiers modifiers) {
        const QRect rect = sidebar.list()->visualRect(sidebar.list()->model()->index(row, 0));
        QTest::mouseClick(sidebar.list()->viewport(), Qt::LeftButton, modifiers,
                          PhotoRowDelegate::checkTarget(rect).center());
    };
    const auto ticks = [&] {
        std::string all;
        for (const ImportedPhoto& photo : session.photos())
            all += session.isIncluded(photo.id()) ? photo.filename().toStdString() : "-";
        return all;
    };
    pressTick(3, Qt::ShiftModifier);
    EXPECT_EQ(ticks(), "a---ef") << "from the selected row, while none has been ticked";
    pressTick(5, Qt::ShiftModifier);
    EXPECT_EQ(ticks(), "a-----") << "from the last one pressed";
    history.stack().undo();
    EXPECT_EQ(ticks(), "a---ef");
    pressTick(4, {});
    pressTick(1, Qt::ShiftModifier);
    EXPECT_EQ(ticks(), "abcdef") << "what the pressed row becomes, upwards too";
    EXPECT_EQ(selectedName(session), "b");
    sidebar.list()->setLocked(true);
    pressTick(5, Qt::ShiftModifier);
    EXPECT_EQ(ticks(), "abcdef");
}

TEST(PhotoSidebar, keepsTheScrollBarOffItsRows)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    importInto(session, photoUrls({"a", "b", "c", "d", "e", "f"}));
    ListedPhotos listed(session, exportSession);
    PhotoSidebar sidebar(listed.model, session, history, exportSession);
    sidebar.show();
    for (const int height : {800, 300}) {
        sidebar.resize(280, height);
        QApplication::processEvents();
        // A selected row is filled but for the inset at its sides.
        const int fillEnd = sidebar.list()->visualRect(sidebar.list()->model()->index(0, 0)).right() - Space::group;
        for (const QScrollBar* bar : sidebar.list()->findChildren<QScrollBar*>())
            EXPECT_TRUE(!bar->isVisible() || fillEnd + 2 < bar->geometry().left()) << height;
        EXPECT_EQ(sidebar.list()->verticalScrollBar()->maximum() > 0, height == 300);
    }
}

TEST(EmptyPreview, saysThatPhotosAreBeingAddedAndStopsIt)
{
    auto operations = withoutDisk();
    operations.load = [](const FileUrl& url, const std::stop_token& stop) -> ImportedPhoto {
        while (!url.path().endsWith("/1"))
            throwIfCanceled(stop);
        throw ImagePipelineError(ImagePipelineError::malformedImage);
    };
    DisklessSession session(operations);
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    EmptyPreview pane(session, history);
    pane.resize(600, 500);
    pane.show();
    const auto isShown = [&](const char* name) {
        return pane.findChild<QWidget*>(QString::fromLatin1(name))->isVisible();
    };
    const auto text = [&](const char* name) { return pane.findChild<QLabel*>(QString::fromLatin1(name))->text(); };
    auto* add = pane.findChild<QPushButton*>(QStringLiteral("emptyAddPhotosButton"));
    auto* stop = pane.findChild<QPushButton*>(QStringLiteral("emptyStopButton"));
    add->setFocus();
    EXPECT_TRUE(add->isVisible() && isShown("emptyAddFolderButton") && !stop->isVisible());

    session.importPhotos(photoUrls({"1", "2", "3"}));
    EXPECT_FALSE(add->isVisible() || isShown("emptyAddFolderButton"));
    EXPECT_EQ(pane.focusWidget(), stop);
    EXPECT_EQ(text("emptyTitle"), QStringLiteral("Adding photos…"));
    EXPECT_TRUE(waitUntil([&] { return text("emptySentence").startsWith(QStringLiteral("1 of 3 read")); }));
    stop->click();
    EXPECT_TRUE(waitUntil([&] { return !session.isImporting(); }));
    EXPECT_TRUE(isShown("emptyAddFolderButton") && !stop->isVisible());
    EXPECT_EQ(pane.focusWidget(), add);
    EXPECT_EQ(text("emptyTitle"), QStringLiteral("Drop photos or a folder here"));
}

TEST(EmptyPreview, beginsWithAStarterFrameUntilTheInspectorIsTouched)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    EmptyPreview pane(session, history);
    pane.resize(810, 848);
    pane.show();
    auto* starters = pane.findChild<StarterChoice*>();
    const auto chosen = [&] {
        QString names;
        const QAccessibleInterface* group = QAccessible::queryAccessibleInterface(starters);
        EXPECT_EQ(group->text(QAccessible::Name), QStringLiteral("Starter frames"));
        for (int i = 0; i < group->childCount(); ++i) {
            EXPECT_EQ(group->child(i)->role(), QAccessible::RadioButton);
            if (group->child(i)->state().checked)
                names += group->child(i)->text(QAccessible::Name);
        }
        return names;
    };
    const RenderRecipe usual = session.batchRecipe();
    EXPECT_EQ(chosen(), QString());
    QTest::keyClick(starters, Qt::Key_Space);
    QTest::keyClick(starters, Qt::Key_Right);
    EXPECT_EQ(session.batchRecipe(), starterFrames()[1].recipe);
    EXPECT_EQ(chosen(), QStringLiteral("Gallery Black"));
    history.editRecipe(QStringLiteral("Border Width"), [](RenderRecipe& recipe) { recipe.border.width = 9; });
    EXPECT_EQ(chosen(), QString());
    for (const char* before : {"Gallery Black", "Clean White", ""}) {
        history.stack().undo();
        EXPECT_EQ(chosen(), QLatin1StringView(before));
    }
    EXPECT_EQ(session.batchRecipe(), usual);

    const auto item = [&](int index) { return starters->item(index).rect; };
    EXPECT_EQ(item(1).width(), 168 + 2 * StarterChoice::inset);
    pane.resize(440, 848);
    EXPECT_LT(item(0).right(), item(1).left()) << "tiles of 120 stand apart";
    EXPECT_TRUE(starters->rect().contains(item(2)));
    pane.resize(810, 700);
    EXPECT_FALSE(starters->isVisible());
}

TEST(LogoSection, asksForNoOtherLogoWhileOneIsOnItsWay)
{
    DisklessSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    InspectorView view(session, history, exportSession);
    const QSignalSpy requested(&view, &InspectorView::importLogoRequested);
    auto* import = view.findChild<QPushButton*>(QStringLiteral("importLogoButton"));
    auto* shown = view.findChild<QAbstractButton*>(QStringLiteral("logoSwitch"));
    view.setImportingLogo(true);
    session.setBatchRecipe(border(9)); // Refreshes the section.
    import->click();
    shown->click();
    EXPECT_EQ(import->text(), QStringLiteral("Importing…"));
    EXPECT_EQ(requested.size(), 0);
    view.setImportingLogo(false);
    view.show();
    import->setFocus();
    view.setImportingLogo(true);
    EXPECT_NE(view.focusWidget(), import);
    view.setImportingLogo(false);
    EXPECT_EQ(view.focusWidget(), import) << "only lent, while the button was at rest";
    import->click();
    shown->click();
    EXPECT_EQ(import->text(), QStringLiteral("Import Logo…"));
    EXPECT_EQ(requested.size(), 2);
}

} // namespace ferrow::test
