// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/Preferences.h"

#include "SessionTestSupport.h"

#include <QSignalSpy>

namespace ferrow {

TEST(Preferences, survivesARestartWithFourKeysAndFallsBackFromUnknownTexts)
{
    const test::TemporaryFolder folder;
    const FileUrl file = folder.file("Ferrow/Ferrow.conf");
    {
        Preferences preferences(file);
        EXPECT_EQ(preferences.appearance(), AppearancePreference::system);
        EXPECT_EQ(preferences.previewBackdrop(false), PreviewBackdrop::white);
        EXPECT_EQ(preferences.previewBackdrop(true), PreviewBackdrop::black);
        EXPECT_FALSE(preferences.opensExportFolders());
        const QSignalSpy told(&preferences, &Preferences::previewBackdropChanged);
        preferences.setPreviewBackdrop(true, PreviewBackdrop::black);
        preferences.setPreviewBackdrop(false, PreviewBackdrop::lightGray);
        EXPECT_EQ(told.size(), 1);
        preferences.setAppearance(AppearancePreference::dark);
        preferences.setOpensExportFolders(true);
    }
    EXPECT_EQ(test::readFile(file), "[General]\nappearancePreference=Dark\nopenExportFoldersAfterCompletion=true\n"
                                    "previewBackdropLight=Light Gray\n");
    {
        const Preferences again(file);
        EXPECT_EQ(again.appearance(), AppearancePreference::dark);
        EXPECT_EQ(again.previewBackdrop(false), PreviewBackdrop::lightGray);
        EXPECT_TRUE(again.opensExportFolders());
    }
    const FileUrl odd = folder.write("odd.conf", "[General]\nappearancePreference=dark\npreviewBackdropDark=1, 2\n"
                                                 "openExportFoldersAfterCompletion=perhaps\n");
    const Preferences preferences(odd);
    EXPECT_EQ(preferences.appearance(), AppearancePreference::system);
    EXPECT_EQ(preferences.previewBackdrop(true), PreviewBackdrop::black);
    EXPECT_FALSE(preferences.opensExportFolders());
}

} // namespace ferrow
