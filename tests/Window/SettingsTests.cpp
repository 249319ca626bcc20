// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/SettingsView/BackdropChoice.h"
#include "Features/SettingsView/SettingsView.h"
#include "Session/Preferences.h"
#include "Support/TestSupport.h"
#include "Widgets/MessageLine.h"
#include "Widgets/SegmentedControl.h"

#include <QTest>

namespace ferrow {

namespace {

template <typename Widget>
Widget& child(const SettingsView& settings, const char* name)
{
    return *settings.findChild<Widget*>(QString::fromLatin1(name));
}

} // namespace

TEST(SettingsView, showsWhatIsStoredAndStoresWhatIsChosen)
{
    const test::TemporaryFolder folder;
    const FileUrl file = folder.write("Ferrow.conf", "[General]\nappearancePreference=Dark\n"
                                                     "previewBackdropLight=Gray\npreviewBackdropDark=Charcoal\n");
    Preferences preferences(file);
    SettingsView settings(preferences);
    auto& theme = child<SegmentedControl>(settings, "themeControl");
    auto& light = child<BackdropChoice>(settings, "lightBackdropChoice");
    auto& dark = child<BackdropChoice>(settings, "darkBackdropChoice");
    EXPECT_EQ(theme.currentIndex(), 2);
    EXPECT_EQ(light.backdrop(), PreviewBackdrop::gray);
    EXPECT_EQ(dark.backdrop(), PreviewBackdrop::charcoal);

    QTest::keyClick(&theme, Qt::Key_Left);
    QTest::keyClick(&light, Qt::Key_End);
    QTest::keyClick(&dark, Qt::Key_Left);
    EXPECT_EQ(test::readFile(file), "[General]\nappearancePreference=Light\npreviewBackdropDark=Black\n"
                                    "previewBackdropLight=White\n");
    EXPECT_TRUE(child<MessageLine>(settings, "unsavedNote").isHidden());
    auto& systemNote = child<MessageLine>(settings, "systemNote");
    EXPECT_TRUE(systemNote.isHidden());
    settings.setSystemNote(QStringLiteral("without namespaces"));
    EXPECT_FALSE(systemNote.isHidden());
    // The preview's own choice of backdrops reaches an open window.
    preferences.setPreviewBackdrop(true, PreviewBackdrop::lightGray);
    EXPECT_EQ(dark.backdrop(), PreviewBackdrop::lightGray);
}

TEST(SettingsView, saysWhenAChoiceCannotBeKept)
{
    const test::TemporaryFolder folder;
    folder.write("taken", "a file where the folder would be");
    Preferences preferences(folder.file("taken/Ferrow.conf"));
    SettingsView settings(preferences);
    EXPECT_TRUE(child<MessageLine>(settings, "unsavedNote").isHidden());
    QTest::keyClick(&child<SegmentedControl>(settings, "themeControl"), Qt::Key_Right);
    EXPECT_EQ(preferences.appearance(), AppearancePreference::light) << "it holds for this run";
    EXPECT_FALSE(child<MessageLine>(settings, "unsavedNote").isHidden());

    ASSERT_TRUE(QFile::remove(folder.file("taken").displayPath()));
    QTest::keyClick(&child<SegmentedControl>(settings, "themeControl"), Qt::Key_Right);
    EXPECT_TRUE(child<MessageLine>(settings, "unsavedNote").isHidden()) << "it can be written again";
    EXPECT_EQ(Preferences(folder.file("taken/Ferrow.conf")).appearance(), AppearancePreference::dark);
}

} // namespace ferrow
