// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Files.h"
#include "Window/RealWindow.h"

#include <QLabel>

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
    session.setScope(RecipeScope::selected);
    import->click();
    EXPECT_FALSE(hasEnded() || import->isEnabled());
    session.setScope(RecipeScope::batch);
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
    for (int i = 0; i < 40; ++i)
        home_.write("p" + QByteArray::number(i) + ".png",
                    encoded(OutputType::png, noise({600, 400}, rgb8, unsigned(i))));
    window_->importRoots({home_.url()});
    ASSERT_TRUE(window_->session().isImporting());
    EXPECT_EQ(qobject_cast<QLabel*>(widget("emptyTitle"))->text(), QStringLiteral("Adding photos…"));
    window_->importRoots({home_.file("p1.png")});
    EXPECT_TRUE(Overlay::topmost(window_.get())) << "a panel answered too late";
    press(Qt::Key_Escape);
    click("emptyStopButton");
    ASSERT_TRUE(waitFor([&] { return !window_->session().isImporting(); }));
}

} // namespace ferrow::test
