// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/WindowParts/MainToolBar.h"
#include "Features/WindowParts/WindowActions.h"
#include "Imaging/ImageLoader.h"
#include "Support/Files.h"
#include "Widgets/Section.h"
#include "Window/RealWindow.h"

#include <QFile>
#include <QListView>
#include <QMenu>
#include <QUndoStack>

#include <algorithm>
#include <map>

namespace ferrow::test {

namespace {

QListView* listNamed(QWidget* host)
{
    return qobject_cast<QListView*>(host);
}

} // namespace

TEST_F(RealWindow, FramesADroppedFolderWithAPreset)
{
    const FileUrl photos = folder("Pictures");
    const FileUrl framed = folder("Framed");
    const auto write = [&](const char* name, PixelSize size, OutputType type, unsigned seed) {
        home_.write(QByteArray("Pictures/") + name, encoded(type, noise(size, rgb8, seed)));
    };
    write("IMG_10.jpg", {300, 200}, OutputType::jpeg, 1);
    write("IMG_2.jpg", {200, 300}, OutputType::jpeg, 2);
    write("Scan.png", {240, 160}, OutputType::png, 3);
    home_.write("Pictures/notes.txt", "not a photo");
    const QByteArray original = readFile(photos.appending("IMG_2.jpg"));

    drop(photos);
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 3; }));
    QListView* list = listNamed(widget("photoList"));
    ASSERT_TRUE(list);
    ASSERT_EQ(list->model()->index(0, 0).data().toString(), QStringLiteral("IMG_2.jpg"));

    // Another photo by the mouse, one left out by the keyboard.
    clickAt(list->viewport(), list->visualRect(list->model()->index(1, 0)).center());
    EXPECT_EQ(window_->session().selectedPhotoID(), photos.appending("IMG_10.jpg"));
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    EXPECT_FALSE(window_->session().isIncluded(photos.appending("Scan.png")));

    click("borderWidthField");
    press(Qt::Key_A, Qt::ControlModifier);
    type("40");
    press(Qt::Key_Return);
    EXPECT_EQ(window_->session().batchRecipe().border.width, 40);

    // The caption by keyboard alone: away with the three chips, a text in their place.
    widget("captionChips")->setFocus(Qt::TabFocusReason);
    for (int chip = 0; chip < 3; ++chip)
        press(Qt::Key_Delete);
    type("Summer");
    press(Qt::Key_Return);
    EXPECT_EQ(window_->session().batchRecipe().captions.front().captionTemplate(), QStringLiteral("Summer"));

    click("presetsButton");
    click("savePresetButton");
    type("Forty");
    press(Qt::Key_Return);
    ASSERT_EQ(window_->presetLibrary().presets().size(), 1U);
    press(Qt::Key_Escape);
    ASSERT_TRUE(waitFor([&] { return !Overlay::topmost(window_.get()); }));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(window_->session().batchRecipe().captions.front().captionTemplate(), QStringLiteral("Summer"));
    click("presetsButton");
    click("applyPresetButton");
    EXPECT_EQ(window_->session().batchRecipe().captions.front().captionTemplate(), QStringLiteral("Summer"));

    ASSERT_TRUE(waitFor([&] { return !Overlay::topmost(window_.get()); }));
    panelAnswer_ = framed;
    click("exportButton");
    click("chooseFolderButton");
    click("startExportButton");
    ASSERT_TRUE(waitFor([&] { return window_->exportSession().report().has_value(); }));
    EXPECT_EQ(window_->exportSession().report()->exported, 2);
    click("reportDoneButton");
    EXPECT_FALSE(window_->exportSession().report());
    EXPECT_EQ(QApplication::focusWidget(), widget("previewCanvas")) << "keys go on from there";

    EXPECT_EQ(namesIn(framed), QStringList({QStringLiteral("IMG_10_framed.jpg"), QStringLiteral("IMG_2_framed.jpg")}));
    EXPECT_EQ(ImageLoader::load(framed.appending("IMG_2_framed.jpg"), 0).pixelSize, (PixelSize{280, 380}));
    EXPECT_EQ(readFile(photos.appending("IMG_2.jpg")), original);
}

TEST_F(RealWindow, AsksBeforeItReplacesAndStaysWhenTold)
{
    const FileUrl framed = folder("Framed");
    home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    home_.write("Framed/a_framed.jpg", "mine");
    window_->importRoots({home_.file("a.png")});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    BatchExportConfiguration configuration;
    configuration.chosenFolder = framed;
    configuration.collisionRule = CollisionRule::replace;
    window_->exportSession().setConfiguration(configuration);

    click("exportButton");
    QWidget* sheet = widget("exportOptionsSheet");
    click("startExportButton");
    ASSERT_NE(Overlay::topmost(window_.get()), sheet);
    press(Qt::Key_Escape);
    ASSERT_TRUE(waitFor([&] { return Overlay::topmost(window_.get()) == sheet; }));
    EXPECT_FALSE(window_->exportSession().isRunning());
    EXPECT_EQ(readFile(framed.appending("a_framed.jpg")), "mine");

    click("startExportButton");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitFor([&] { return window_->exportSession().report().has_value(); }));
    EXPECT_NE(readFile(framed.appending("a_framed.jpg")), "mine");
}

TEST_F(RealWindow, ExportsByEnterAlone)
{
    home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({home_.file("a.png")});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    panelAnswer_ = folder("Framed");
    press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), widget("chooseFolderButton"));
    press(Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), widget("startExportButton"));
    press(Qt::Key_Return);
    ASSERT_TRUE(waitFor([&] { return window_->exportSession().report().has_value(); }));
    EXPECT_EQ(namesIn(panelAnswer_), QStringList(QStringLiteral("a_framed.jpg")));
}

TEST_F(RealWindow, LeadsThroughThePhotosOfAFindingAndBack)
{
    PhotoSession& session = window_->session();
    for (const char* name : {"a.png", "b.png", "c.png", "d.png"})
        home_.write(name, encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({home_.file("a.png"), home_.file("b.png"), home_.file("c.png"), home_.file("d.png")});
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 4; }));
    session.setIncluded({home_.file("a.png"), home_.file("c.png")}, false);
    BatchExportConfiguration configuration;
    configuration.chosenFolder = folder("Framed");
    window_->exportSession().setConfiguration(configuration);
    const auto openCheck = [&] {
        return waitFor([&] {
            const auto buttons = window_->findChildren<QWidget*>(QStringLiteral("showPhotosButton"));
            return std::ranges::any_of(buttons, [](const QWidget* button) { return button->isVisible(); });
        });
    };
    const auto selected = [&] { return session.selectedPhotoID()->lastPathComponent(); };
    click("exportButton");
    ASSERT_TRUE(openCheck());
    click("showPhotosButton");
    ASSERT_TRUE(waitFor([&] { return !Overlay::topmost(window_.get()); }));
    EXPECT_EQ(selected(), QStringLiteral("b.png")) << "which has no camera to name, where a.png is left out";
    press(Qt::Key_Space);
    EXPECT_EQ(selected(), QStringLiteral("d.png")) << "the focus is on the way on";
    click("nextReviewedButton");
    EXPECT_EQ(selected(), QStringLiteral("b.png"));
    session.setSelectedPhotoID(home_.file("c.png"));
    click("previousReviewedButton");
    EXPECT_EQ(selected(), QStringLiteral("b.png")) << "back from one that is none of them";
    session.setSelectedPhotoID(home_.file("c.png"));
    click("nextReviewedButton");
    EXPECT_EQ(selected(), QStringLiteral("d.png"));

    press(Qt::Key_Escape);
    ASSERT_TRUE(openCheck()) << "the sheet is there again";
    EXPECT_FALSE(window_->findChild<QWidget*>(QStringLiteral("reviewBar"))->isVisible());
    click("showPhotosButton");
    session.remove({home_.file("b.png"), home_.file("d.png")});
    EXPECT_FALSE(window_->findChild<QWidget*>(QStringLiteral("reviewBar"))->isVisible()) << "none of them is left";
    EXPECT_EQ(QApplication::focusWidget(), widget("previewCanvas"));
}

TEST_F(RealWindow, TakesAFileOnTheLogosWellForALogo)
{
    const FileUrl photo = home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({photo});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    window_->findChild<Section*>(QStringLiteral("logoSection"))->setExpanded(true);
    QWidget* well = widget("logoWell");
    ASSERT_TRUE(waitFor([&] { return well->visibleRegion().boundingRect() == well->rect(); }));
    drop(photo, well);
    ASSERT_TRUE(waitFor([&] { return window_->session().batchRecipe().logo.has_value(); }));
    EXPECT_EQ(window_->session().batchRecipe().logo->asset.displayName, QStringLiteral("a"));
    EXPECT_EQ(window_->session().photos().size(), 1U);
}

TEST_F(RealWindow, ClosingEndsAnExportAndKeepsWhatIsFinished)
{
    const FileUrl photos = folder("Pictures");
    const FileUrl framed = folder("Framed");
    const QByteArray picture = encoded(OutputType::png, noise({1200, 900}, rgb8));
    for (int i = 0; i < 30; ++i)
        home_.write("Pictures/" + QByteArray::number(i) + ".png", picture);
    window_->importRoots({photos});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 30; }));
    BatchExportConfiguration configuration;
    configuration.chosenFolder = framed;
    window_->exportSession().setConfiguration(configuration);
    click("exportButton");
    click("startExportButton");
    ASSERT_TRUE(waitFor([&] { return !namesIn(framed).filter(QStringLiteral("_framed")).isEmpty(); }));
    window_->close();
    window_.reset();

    EXPECT_LT(namesIn(framed).size(), 30) << "nothing was left to end";
    for (const QString& name : namesIn(framed)) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_FALSE(name.startsWith(u'.'));
        EXPECT_NO_THROW((void)ImageLoader::load(framed.appending(name.toUtf8())));
    }
}

TEST_F(RealWindow, KeepsItsKeysApartAndBeginsMenusByKey)
{
    std::map<QKeySequence, QString> taken;
    for (const QAction* action : window_->actions())
        for (const QKeySequence& keys : action->shortcuts()) {
            const auto [other, isFree] = taken.emplace(keys, action->text());
            EXPECT_TRUE(isFree) << keys.toString().toStdString() << ": " << other->second.toStdString() << " and "
                                << action->text().toStdString();
        }
    EXPECT_GT(taken.size(), 15U);
    EXPECT_FALSE(taken.contains(Qt::Key_F10)) << "that of the main menu's button";
    press(Qt::Key_F10);
    ASSERT_TRUE(waitFor([&] { return QApplication::activePopupWidget() != nullptr; }));
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    EXPECT_TRUE(menu->activeAction()) << "Enter and the arrows have a place to begin";
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
}

TEST_F(RealWindow, UsesTheDrawerOfANarrowWindowByKeys)
{
    for (int i = 0; i < 20; ++i)
        home_.write("p" + QByteArray::number(i) + ".png", encoded(OutputType::png, noise({30, 20}, rgb8, unsigned(i))));
    window_->importRoots({home_.url()});
    PhotoSession& session = window_->session();
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 20; }));
    window_->resize(900, 684);
    auto* list = window_->findChild<QListView*>(QStringLiteral("photoList"));
    ASSERT_TRUE(waitFor([&] { return !list->isVisible(); }));
    session.setSelectedPhotoID(session.photos()[15].id());
    QWidget* before = widget("previewCanvas");
    before->setFocus(Qt::TabFocusReason);
    const auto isOpen = [&] { return list->isVisible(); };

    press(Qt::Key_F9);
    ASSERT_EQ(QApplication::focusWidget(), list);
    const auto* drawer = list->parentWidget()->parentWidget();
    EXPECT_EQ(QAccessible::queryAccessibleInterface(list->parentWidget()->parentWidget())->role(), QAccessible::Dialog);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(list->currentIndex())));
    for (int step = 0; step < 10; ++step) {
        press(step % 2 == 0 ? Qt::Key_Tab : Qt::Key_Backtab);
        press(Qt::Key_Tab);
        EXPECT_TRUE(drawer->isAncestorOf(QApplication::focusWidget()));
    }
    press(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), before);
    ASSERT_TRUE(waitFor([&] { return !isOpen(); }));

    press(Qt::Key_F9);
    press(Qt::Key_Down);
    EXPECT_EQ(session.selectedPhotoID(), session.photos()[16].id());
    QTest::qWait(300); // As long as it would take to slide away.
    EXPECT_TRUE(isOpen());
    widget("borderWidthField")->setFocus(Qt::OtherFocusReason);
    press(Qt::Key_Escape);
    ASSERT_TRUE(waitFor([&] { return !isOpen(); })) << "from wherever the focus is";

    press(Qt::Key_F9);
    ASSERT_TRUE(waitFor([&] { return list->mapTo(window_.get(), QPoint()).x() == 0; }));
    clickAt(list->viewport(), list->visualRect(list->currentIndex()).center());
    EXPECT_TRUE(waitFor([&] { return !isOpen(); })) << "a click on the current row is a choice";
}

TEST_F(RealWindow, StaysWithThePhotosWhenTheLastOneLeavesAndReturns)
{
    const FileUrl photo = home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({photo});
    PhotoSession& session = window_->session();
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 1; }));
    EXPECT_EQ(QApplication::focusWidget(), widget("photoList"));
    QAbstractButton* fit = qobject_cast<QAbstractButton*>(widget("zoomFitButton"));
    ASSERT_TRUE(waitFor([&] { return fit->isEnabled(); }));
    EXPECT_TRUE(widget("zoomButton")->accessibleName().endsWith(u'%'));
    for (int press = 0; press < 2; ++press) {
        click("zoomFitButton");
        EXPECT_TRUE(fit->isChecked()) << "it fits already";
    }
    const auto* actual = qobject_cast<QAbstractButton*>(widget("zoom100Button"));
    for (int press = 0; press < 2; ++press) {
        click("zoom100Button");
        EXPECT_TRUE(actual->isChecked()) << "pressed at 100 %";
    }
    click("zoomInButton");
    EXPECT_FALSE(actual->isChecked() || fit->isChecked());
    click("zoomFitButton");
    widget("photoList")->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Delete);
    EXPECT_EQ(QApplication::focusWidget(), widget("emptyAddPhotosButton"));
    EXPECT_FALSE(window_->findChild<QWidget*>(QStringLiteral("includedCount"))->isVisible());
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), widget("photoList"));

    QAbstractButton* compare = qobject_cast<QAbstractButton*>(widget("compareButton"));
    ASSERT_TRUE(waitFor([&] { return compare->isEnabled(); }));
    const FileUrl gone = home_.write("gone.png", encoded(OutputType::png, noise({60, 40}, rgb8, 2)));
    window_->importRoots({gone});
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 2; }));
    QFile::remove(gone.displayPath());
    session.setSelectedPhotoID(gone);
    ASSERT_TRUE(
        waitFor([&] { return window_->findChild<QWidget*>(QStringLiteral("retryPreviewButton"))->isVisible(); }));
    EXPECT_FALSE(compare->isEnabled()) << "the photo before is not what is shown";
    const auto* list = qobject_cast<QListView*>(widget("photoList"));
    EXPECT_TRUE(list->currentIndex().data(Qt::AccessibleTextRole).toString().contains(QStringLiteral("not readable")));
}

TEST_F(RealWindow, CullsInBothViewsByOneKeyAndFindsByName)
{
    const FileUrl photos = folder("Pictures");
    for (const char* name : {"one.jpg", "two.jpg", "three.jpg"})
        home_.write(QByteArray("Pictures/") + name, encoded(OutputType::jpeg, noise({60, 40}, rgb8)));
    drop(photos);
    PhotoSession& session = window_->session();
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 3; }));
    const auto selected = [&] { return session.selectedPhotoID()->lastPathComponent().toStdString(); };
    const auto included = [&](const char* name) { return session.isIncluded(photos.appending(name)); };
    EXPECT_EQ(selected(), "one.jpg");
    widget("previewCanvas")->setFocus();
    press(Qt::Key_Minus);
    EXPECT_FALSE(included("one.jpg"));
    EXPECT_EQ(selected(), "three.jpg");

    press(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
    QWidget* sheet = widget("contactSheet");
    ASSERT_TRUE(sheet);
    EXPECT_TRUE(sheet->hasFocus()) << "it takes the focus of what it stands for";
    press(Qt::Key_Minus);
    EXPECT_FALSE(included("three.jpg"));
    EXPECT_EQ(selected(), "two.jpg");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(included("three.jpg"));
    EXPECT_EQ(selected(), "three.jpg");

    press(Qt::Key_F, Qt::ControlModifier);
    type("wo");
    QListView* list = listNamed(widget("photoList"));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->model()->rowCount(), 1);
    press(Qt::Key_Escape);
    EXPECT_EQ(list->model()->rowCount(), 3);
    sheet->setFocus();
    press(Qt::Key_End);
    press(Qt::Key_Return);
    EXPECT_TRUE(widget("previewCanvas"));
    EXPECT_EQ(selected(), "two.jpg");
    EXPECT_TRUE(waitFor([&] { return !session.isImporting(); }));
    press(Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
}

TEST(MainToolBar, LaysNothingOverAnotherHoweverNarrow)
{
    QWidget host;
    QUndoStack stack;
    WindowActions actions(host, stack);
    MainToolBar bar(actions);
    bar.setZoom(1, true);
    bar.show();
    // Larger text in the least window is the same want of room.
    for (const int width : {1200, 1000, 850, 780, 720, 660, 600, 560, 1200}) {
        SCOPED_TRACE(width);
        bar.resize(width, bar.height());
        int right = 0;
        for (const char* name :
             {"sidebarButton", "addPhotosMenu", "presetsButton", "undoButton", "redoButton", "viewSegments",
              "zoomOutButton", "zoomButton", "zoomInButton", "zoomFitButton", "zoom100Button", "compareButton",
              "mainMenuButton", "settingsButton", "exportButton"}) {
            const auto* button = bar.findChild<QWidget*>(QString::fromLatin1(name));
            if (!button->isVisible())
                continue;
            const int left = button->mapTo(&bar, QPoint()).x();
            EXPECT_GE(left, right) << name << " lies over the one before";
            EXPECT_GE(button->width(), std::min(button->sizeHint().width(), button->maximumWidth())) << name;
            EXPECT_FALSE(button->accessibleName().isEmpty() && button->property("text").toString().isEmpty()) << name;
            right = left + button->width();
        }
        EXPECT_LE(right, width);
        EXPECT_EQ(bar.findChild<QWidget*>(QStringLiteral("zoomInButton"))->isVisible(), width == 1200);
    }
}

} // namespace ferrow::test
