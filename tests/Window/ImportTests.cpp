// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Files.h"
#include "Window/RealWindow.h"

#include <QLabel>

#include <algorithm>

namespace ferrow::test {

TEST_F(RealWindow, GivesALogoToTheFramingItWasAskedFor)
{
    home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    home_.write("b.png", encoded(OutputType::png, noise({60, 40}, rgb8, 2)));
    panelAnswer_ = home_.write("mark.png", encoded(OutputType::png, noise({9, 9}, rgba8)));
    window_->importRoots({home_.file("a.png"), home_.file("b.png")});
    PhotoSession& session = window_->session();
    ASSERT_TRUE(waitFor([&] { return session.photos().size() == 2; }));
    const FileUrl a = session.photos()[0].id();
    const FileUrl b = session.photos()[1].id();
    auto* import = window_->findChild<QAbstractButton*>(QStringLiteral("importLogoButton"));
    const auto hasEnded = [&] { return import->text() != QStringLiteral("Importing…"); };

    session.setSelectedPhotoID(a);
    session.setRecipeScope(RecipeScope::selected);
    import->click();
    EXPECT_FALSE(hasEnded() || import->isEnabled());
    session.setRecipeScope(RecipeScope::batch);
    session.setSelectedPhotoID(b);
    ASSERT_TRUE(waitFor(hasEnded));
    ASSERT_TRUE(session.photoRecipes().at(a).logo.has_value());
    EXPECT_FALSE(session.batchRecipe().logo.has_value());
    EXPECT_EQ(session.selectedPhotoID(), a);

    import->click();
    const LogoConfiguration before = *session.photoRecipes().at(a).logo;
    window_->history().remove({a});
    ASSERT_TRUE(waitFor(hasEnded));
    window_->history().stack().undo();
    EXPECT_EQ(session.photoRecipes().at(a).logo, before);
    EXPECT_FALSE(session.batchRecipe().logo.has_value() || session.hasOwnRecipe(b));
}

TEST_F(RealWindow, SaysThatItIsStillAddingPhotos)
{
    for (const char* name : {"p1.png", "p2.png", "p3.png"})
        home_.write(name, encoded(OutputType::png, noise({60, 40}, rgb8)));
    const auto isDropShown = [&] {
        return std::ranges::any_of(window_->findChildren<QWidget*>(), [](const QWidget* child) {
            return child->inherits("ferrow::DropOverlay") && child->isVisible();
        });
    };
    QMimeData data;
    data.setUrls({home_.url().toUrl()});
    QWidget* under = window_->childAt(window_->rect().center());
    QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(under, &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(isDropShown());
    const auto says = [&](const QString& text) {
        return std::ranges::any_of(widget("dropOverlay")->findChildren<QLabel*>(),
                                   [&](const QLabel* label) { return label->text() == text; });
    };
    EXPECT_TRUE(says(QStringLiteral("Drop to add photos"))) << "nobody knows how many a folder holds";
    data.setUrls({home_.file("p1.png").toUrl(), home_.file("p2.png").toUrl()});
    QApplication::sendEvent(under, &enter);
    EXPECT_TRUE(says(QStringLiteral("Drop to add 2 photos")));
    window_->importRoots({home_.url()});
    ASSERT_TRUE(window_->session().isImporting());
    QDropEvent late({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(under, &late);
    EXPECT_FALSE(late.isAccepted() || isDropShown());
    EXPECT_EQ(qobject_cast<QLabel*>(widget("emptyTitle"))->text(), QStringLiteral("Adding photos…"));
    window_->importRoots({home_.file("p1.png")});
    EXPECT_TRUE(Overlay::topmost(window_.get())) << "a panel answered too late";
    // Until here no event was served: the import could not end.
    ASSERT_TRUE(waitFor([&] { return !window_->session().isImporting(); }));
    EXPECT_EQ(window_->session().photos().size(), 3U);
}

} // namespace ferrow::test
