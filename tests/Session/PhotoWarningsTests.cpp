// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PhotoWarnings.h"

#include "Session/SessionTestSupport.h"

#include <QSignalSpy>

namespace ferrow {

TEST(PhotoWarnings, sayOfEachIncludedPhotoWhatTheCheckWould)
{
    const auto photos = test::photoUrls({"good", "gone", "lensless"});
    test::DisklessSession session(
        {.scan = test::withoutDisk().scan, .load = [](const FileUrl& url, const std::stop_token&) {
             ImportedPhoto photo = test::photoAt(url);
             if (!url.path().endsWith("lensless"))
                 photo.metadata.lens = QStringLiteral("35 mm F2");
             return photo;
         }});
    test::importInto(session, photos);
    RenderRecipe recipe = test::border(60);
    recipe.captions.front().setCaptionTemplate(QStringLiteral("{lens} {filename}"));
    recipe.captions.front().position = CaptionPosition::borderBottomCenter;
    recipe.captions.front().fontSize = {12};
    session.setBatchRecipe(recipe);
    ExportSession exportSession;
    ExportCheckOperations operations = ExportCheckOperations::system();
    operations.isReadable = [](const FileUrl& url) { return !url.path().endsWith("gone"); };
    PhotoWarnings warnings(session, exportSession, operations, std::chrono::milliseconds(0));
    QSignalSpy changed(&warnings, &PhotoWarnings::changed);
    const auto settled = [&] { return test::waitUntil([&] { return changed.size() > 0; }); };
    EXPECT_EQ(warnings.count(), 0U) << "nobody has looked";
    warnings.setWatched(true);
    ASSERT_TRUE(settled());
    EXPECT_EQ(warnings.of(photos[0]), QStringList());
    EXPECT_EQ(warnings.of(photos[1]), QStringList{QStringLiteral("Can’t be read")});
    EXPECT_EQ(warnings.of(photos[2]), QStringList{QStringLiteral("No lens")});

    session.setIncluded({photos[1]}, false);
    EXPECT_EQ(warnings.of(photos[1]), QStringList());
    EXPECT_EQ(warnings.count(), 1U);
    changed.clear();
    recipe.captions.front().fontSize = {200};
    session.setBatchRecipe(recipe);
    ASSERT_TRUE(settled());
    EXPECT_EQ(warnings.of(photos[2]), (QStringList{QStringLiteral("Caption doesn’t fit"), QStringLiteral("No lens")}));
    EXPECT_EQ(warnings.of(photos[0]), QStringList{QStringLiteral("Caption doesn’t fit")});
    EXPECT_EQ(warnings.count(), 2U);

    changed.clear();
    warnings.setWatched(false);
    recipe.captions.clear();
    session.setBatchRecipe(recipe);
    QTest::qWait(20);
    EXPECT_EQ(changed.size(), 0);
    warnings.setWatched(true);
    ASSERT_TRUE(settled());
    EXPECT_EQ(warnings.count(), 0U);
}

} // namespace ferrow
