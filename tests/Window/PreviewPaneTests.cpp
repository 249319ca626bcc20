// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/PreviewFooter.h"
#include "Features/PreviewPane/PreviewPane.h"
#include "Features/PreviewPane/PreviewPicture.h"
#include "Features/PreviewPane/PreviewRequester.h"
#include "Features/PreviewPane/PreviewViewport.h"
#include "Session/SessionTestSupport.h"
#include "Support/Pictures.h"

#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>

#include <atomic>

namespace ferrow {

namespace {

ImportedPhoto withPicture(const FileUrl& url, const std::stop_token&)
{
    ImportedPhoto photo = test::photoAt(url);
    photo.previewSource = test::noise({6, 4}, rgb8);
    return photo;
}

RenderRecipe bordered(double width)
{
    RenderRecipe recipe;
    recipe.border.width = width;
    recipe.captions.front().isEnabled = false;
    return recipe;
}

/// The pane as the right half of a window, with two photos.
struct Pane : testing::Test {
    const FileUrl a = test::photoUrl("a");
    const FileUrl b = test::photoUrl("b");
    test::DisklessSession session;
    PreviewLoader loader;
    PreviewRenderQueue queue;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    const test::TemporaryFolder folder;
    Preferences preferences{folder.file("preferences")};
    QWidget window;
    PreviewPane pane{session, loader, queue, exportSession, history, preferences, &window};

    Pane()
    {
        test::importInto(session, {a, b});
        session.setSelectedPhotoID(a);
        window.resize(1'000, 600);
        pane.setGeometry(500, 0, 500, 600);
        window.show();
    }
};

} // namespace

TEST_F(Pane, tellsOfAMissingLogoOverThePhotosThatHaveIt)
{
    RenderRecipe withLogo;
    withLogo.logo = LogoConfiguration::placeholder();
    session.setPhotoRecipe(a, withLogo);
    session.setRecipeScope(RecipeScope::selected);
    const auto* notice = pane.findChild<NoticeCard*>();
    emit queue.logoFailed(QStringLiteral("The logo is gone."));
    EXPECT_TRUE(notice->isVisible());
    session.setSelectedPhotoID(b);
    EXPECT_FALSE(notice->isVisible());
    session.setSelectedPhotoID(a);
    EXPECT_TRUE(notice->isVisible());
    session.setPhotoRecipe(a, std::nullopt);
    EXPECT_FALSE(notice->isVisible());
    session.setPhotoRecipe(a, withLogo);
    EXPECT_TRUE(notice->isVisible());
    emit queue.logoFound();
    EXPECT_FALSE(notice->isVisible());

    emit queue.logoFailed(QStringLiteral("The logo is gone."));
    auto* dismiss = pane.findChild<QPushButton*>(QStringLiteral("dismissNoticeButton"));
    dismiss->setFocus();
    dismiss->click();
    EXPECT_FALSE(notice->isVisible());
    EXPECT_EQ(window.focusWidget()->objectName(), QStringLiteral("previewCanvas"));
    session.setSelectedPhotoID(b);
    session.setSelectedPhotoID(a);
    emit queue.logoFailed(QStringLiteral("The logo is gone."));
    EXPECT_FALSE(notice->isVisible()) << "the user has read it";
}

TEST(PreviewPicture, standsInWithTheCaption)
{
    RenderRecipe recipe = bordered(100);
    recipe.captions.front().setCaptionTemplate(QStringLiteral("{title}"));
    PreviewViewport view;
    view.setView({400, 300}, 0);
    view.setPicture({800, 600});
    const auto paintedInk = [&](bool hasCaption, bool compares) {
        recipe.captions.front().isEnabled = hasCaption;
        PreviewPicture picture;
        const QSignalSpy changed(&picture, &PreviewPicture::changed);
        picture.showStandIn(test::photoAt(test::photoUrl("a")), recipe, {}, {});
        picture.setComparing(compares);
        picture.setView(view);
        const auto before = changed.size();
        picture.setCorrections({{MetadataField::title, QStringLiteral("Summer")}});
        // Once without a title, which was on its way, and once with it.
        EXPECT_TRUE(!hasCaption || test::waitUntil([&] { return changed.size() == before + 2; }));
        QImage canvas(400, 300, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        picture.paint(painter, Qt::white);
        painter.end();
        int ink = 0;
        for (int y = 252; y < 298; ++y) // The lower border, without the line at the frame's edge.
            for (int x = 2; x < 398; ++x)
                ink += canvas.pixelColor(x, y) != QColor(Qt::white);
        return ink;
    };
    EXPECT_GT(paintedInk(true, false), 20);
    EXPECT_EQ(paintedInk(false, false), 0);
    EXPECT_EQ(paintedInk(true, true), 0) << "the bare photo is bare";
}

TEST_F(Pane, leadsOnFromAPhotoThatCannotBeRead)
{
    auto* canvas = pane.findChild<QWidget*>(QStringLiteral("previewCanvas"));
    const auto* card = pane.findChild<ErrorCard*>();
    const auto button = [&](const char* name) { return pane.findChild<QPushButton*>(QString::fromLatin1(name)); };
    const QSignalSpy retried(&pane, &PreviewPane::retryRequested);
    const QSignalSpy shown(&pane, &PreviewPane::showInFolderRequested);
    pane.showLoadError(QStringLiteral("It is broken."));
    EXPECT_TRUE(card->isVisible());
    EXPECT_EQ(pane.zoom(), 0);
    for (const char* name : {"retryPreviewButton", "showUnreadableButton", "removeUnreadableButton"}) {
        const QPushButton* wayOut = button(name);
        EXPECT_GE(wayOut->width(), wayOut->sizeHint().width()) << name;
    }
    button("showUnreadableButton")->click();
    EXPECT_EQ(shown.size(), 1);
    button("retryPreviewButton")->click();
    EXPECT_EQ(retried.size(), 1);
    EXPECT_FALSE(card->isVisible());
    EXPECT_GT(pane.zoom(), 0) << "the thumbnail stands in meanwhile";

    pane.showLoadError(QStringLiteral("It is broken still."));
    QTest::keyClick(canvas, Qt::Key_Right);
    EXPECT_EQ(session.selectedPhotoID(), b);
    EXPECT_FALSE(card->isVisible());
    EXPECT_GT(pane.zoom(), 0);
    emit queue.failed(a, QStringLiteral("Of the photo before."));
    EXPECT_FALSE(card->isVisible());
    emit queue.failed(b, QStringLiteral("The frame is too large."));
    EXPECT_TRUE(card->isVisible());
    EXPECT_FALSE(button("retryPreviewButton")->isVisible()) << "trying again would change nothing";
    QTest::keyClick(canvas, Qt::Key_Left);
    EXPECT_EQ(session.selectedPhotoID(), a);
}

TEST_F(Pane, removesNothingWhileAnExportIsPlanned)
{
    pane.showLoadError(QStringLiteral("It is broken."));
    auto* remove = pane.findChild<QPushButton*>(QStringLiteral("removeUnreadableButton"));
    auto* canvas = pane.findChild<QWidget*>(QStringLiteral("previewCanvas"));
    exportSession.planAndStart(exportSession.requestFor(session));
    ASSERT_TRUE(exportSession.isPlanning() && !exportSession.isRunning());
    remove->click();
    QTest::keyClick(canvas, Qt::Key_Delete);
    EXPECT_EQ(session.photos().size(), 2U);
    exportSession.cancel();
    remove->click();
    EXPECT_EQ(session.photos().size(), 1U);
    QTest::keyClick(canvas, Qt::Key_Delete);
    EXPECT_TRUE(session.photos().empty());
}

TEST_F(Pane, outlinesTheWholeWindowForADropWithTheCardOverThePicture)
{
    pane.setDropTarget(14);
    auto* outline = window.findChild<QWidget*>(QStringLiteral("dropOverlay"));
    EXPECT_TRUE(outline->isVisible());
    EXPECT_EQ(QRect(outline->mapTo(&window, QPoint()), outline->size()), window.rect());
    EXPECT_NE(window.childAt(250, 300), outline) << "it takes no clicks";
    const auto* card = outline->findChild<FloatingCard*>();
    EXPECT_TRUE(pane.geometry().contains(card->geometry()));
    window.resize(1'200, 700);
    pane.setGeometry(600, 0, 600, 700);
    EXPECT_EQ(outline->size(), window.size()) << "also when the window grows under it";
    EXPECT_TRUE(pane.geometry().contains(card->geometry()));
    pane.setDropTarget(std::nullopt);
    EXPECT_FALSE(outline->isVisible());
}

TEST(PreviewRequester, asksWhenThePictureIsThereAndForEachNewFramingOnce)
{
    test::DisklessSession session;
    PreviewLoader loader(withPicture);
    std::atomic<int> renders = 0;
    PreviewRenderQueue queue({.render =
                                  [&](const PreviewRequest& request, const Bitmap&, const std::stop_token&) {
                                      ++renders;
                                      return request.source;
                                  },
                              .loadLogo = [](const auto&, const auto&) { return std::nullopt; },
                              .now = &PreviewRenderQueue::Clock::now,
                              .callLater = {}});
    const ExportSession exportSession;
    const PreviewRequester requester(session, exportSession, loader, queue);
    const auto rendersAfter = [&](const std::function<void()>& change) {
        change();
        EXPECT_TRUE(test::waitUntil([&] { return !queue.isBusy() && !loader.isLoading(); }));
        return renders.load();
    };
    const FileUrl a = test::photoUrl("a");
    const FileUrl b = test::photoUrl("b");
    EXPECT_EQ(rendersAfter([&] {
                  test::importInto(session, {a, b});
                  session.setSelectedPhotoID(a); // The import selects the one that was read first.
              }),
              0)
        << "selected, not loaded";
    const auto load = [&](const FileUrl& url) {
        loader.load(test::photoAt(url));
        EXPECT_TRUE(test::waitUntil([&] { return loader.photo() && loader.photo()->url == url; }));
    };
    EXPECT_EQ(rendersAfter([&] { load(b); }), 0) << "another photo's picture";
    EXPECT_EQ(rendersAfter([&] { load(a); }), 1);
    EXPECT_EQ(rendersAfter([&] { session.setBatchRecipe(bordered(7)); }), 2);
    EXPECT_EQ(rendersAfter([&] { session.setPhotoRecipe(b, bordered(9)); }), 2) << "not what is shown";
    EXPECT_EQ(rendersAfter([&] { session.setRecipeScope(RecipeScope::selected); }), 2) << "the same framing";
    EXPECT_EQ(rendersAfter([&] { session.setSelectedPhotoID(b); }), 2) << "its picture is still on the way";
    EXPECT_EQ(rendersAfter([&] { load(b); }), 3);
    const MetadataCorrections corrections{{MetadataField::lens, QStringLiteral("x")}};
    EXPECT_EQ(rendersAfter([&] { session.setCorrections({{b, corrections}}); }), 4);
    EXPECT_EQ(rendersAfter([&] { session.setCorrections({{a, corrections}, {b, corrections}}); }), 4);
}

TEST(PreviewViewport, zoomsAboutThePointerAndKeepsThePhotoInPlace)
{
    PreviewViewport view;
    EXPECT_EQ(view.zoom(), 0);
    view.setView({1064, 864}, 32);
    view.setPicture({2000, 1000});
    EXPECT_EQ(view.pictureRect(), QRect(32, 182, 1000, 500));
    EXPECT_EQ(view.visibleRegion(), QRect(0, 0, 2000, 1000));
    EXPECT_FALSE(view.canPan());

    const auto under = [&](QPointF point) { return (point - view.pictureRect().topLeft()) / view.zoom(); };
    const QPointF pointer(400, 500);
    const QPointF before = under(pointer);
    view.setZoom(2, pointer);
    EXPECT_EQ(under(pointer), before);
    view.panBy({-100, 0});
    EXPECT_EQ(under(pointer), before + QPointF(50, 0));

    const QPointF photo = under(pointer);
    view.setPicture({2100, 1100}); // The border has grown by 50.
    EXPECT_EQ(under(pointer), photo + QPointF(50, 50));
    view.panBy({1e6, 1e6});
    EXPECT_EQ(view.pictureRect().topLeft(), QPoint(32, 32)) << "an edge comes in as far as the margin";

    view.setZoom(0.34, view.center());
    EXPECT_EQ(view.pictureRect().center().x(), 531) << "what fits is centered";
    EXPECT_EQ(view.stepAbove(), 0.5);
    EXPECT_NEAR(view.stepBelow(), 1.0 / 3, 1e-9);
    view.setZoom(1.0 / 3, view.center());
    EXPECT_EQ(view.stepBelow(), 0.25);
    view.setZoom(100, view.center());
    EXPECT_EQ(view.zoom(), PreviewViewport::greatestZoom);
    EXPECT_EQ(view.stepAbove(), PreviewViewport::greatestZoom);
}

TEST(PreviewFooter, givesUpWordsBeforeTheName)
{
    const std::vector<int> details{200, 140, 70};
    EXPECT_EQ(fitFooter(400, 100, details, 60, 10), (FooterFit{true, 0, 100}));
    EXPECT_EQ(fitFooter(250, 100, details, 60, 10), (FooterFit{true, 2, 100}));
    EXPECT_EQ(fitFooter(200, 100, details, 60, 10), (FooterFit{false, 2, 100}));
    EXPECT_EQ(fitFooter(165, 100, details, 60, 10), (FooterFit{false, 2, 85}));
    EXPECT_EQ(fitFooter(90, 100, details, 60, 10), (FooterFit{false, -1, 90}));
}

} // namespace ferrow
