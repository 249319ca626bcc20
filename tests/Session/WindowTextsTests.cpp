// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/WindowTexts.h"

#include "SessionTestSupport.h"

namespace ferrow {

TEST(WindowTexts, listsFiveFailuresOfAnImport)
{
    ImportOutcome outcome;
    EXPECT_FALSE(WindowTexts::importMessage(outcome).has_value());
    for (int i = 1; i <= 8; ++i)
        outcome.failures.push_back({.filename = QString::number(i), .message = QStringLiteral("No.\n\nSo.\n\nGo.")});
    const std::optional<PresentedError> shown = WindowTexts::importMessage(outcome);
    EXPECT_EQ(shown->title, QStringLiteral("Some Files Weren’t Added"));
    ASSERT_EQ(shown->files.size(), 5U);
    EXPECT_EQ(shown->files[4].name, QStringLiteral("5"));
    EXPECT_EQ(shown->files[4].cause, QStringLiteral("No."));
    EXPECT_EQ(shown->files[4].remedy, QStringLiteral("So. Go."));
    EXPECT_EQ(shown->message, QStringLiteral("…and 3 more."));
    EXPECT_EQ(WindowTexts::importMessage({.hadNothingNew = true})->message,
              QStringLiteral("The selection contained no new supported images."));
}

TEST(WindowTexts, nameWhatASandboxWasGivenAsTheUserDoes)
{
    const std::pair<const char*, const char*> rows[] = {
        {"/run/user/1000/doc/4f3a21c0/Holidays/a.jpg", "Holidays/a.jpg"},
        {"/run/user/1000/doc/4f3a21c0/Holidays/", "Holidays"},
        {"/run/flatpak/doc/4f3a21c0/a.jpg", "a.jpg"},
        {"/run/user/1000/doc/4f3a21c0", "/run/user/1000/doc/4f3a21c0"},
        {"/run/user/1000/gvfs/x/a.jpg", "/run/user/1000/gvfs/x/a.jpg"},
        {"/home/run/user/1/doc/x/a.jpg", "/home/run/user/1/doc/x/a.jpg"},
        {"/", "/"},
    };
    for (const auto& [path, shown] : rows)
        EXPECT_EQ(WindowTexts::place(FileUrl::fromPath(QByteArray(path))), QString::fromUtf8(shown));
}

TEST(WindowTexts, tellsTheRestOfTheTimeOnceItIsKnown)
{
    const struct {
        int milliseconds;
        int done;
        int left;
        const char* text;
    } rows[] = {{2'999, 2, 9, nullptr},
                {4'000, 0, 9, nullptr},
                {4'000, 2, 0, nullptr},
                {4'000, 2, 8, "about 20 seconds left"},
                {4'000, 4, 1, "about 5 seconds left"},
                {10'000, 2, 23, "about 115 seconds left"},
                {10'000, 2, 30, "about 3 minutes left"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text ? row.text : "nothing");
        EXPECT_EQ(WindowTexts::remainingTime(std::chrono::milliseconds(row.milliseconds), row.done, row.left)
                      .value_or(QString()),
                  QString::fromUtf8(row.text));
    }
}

TEST(WindowTexts, nameFontsAsThisDesktopDoes)
{
    QStringList names;
    for (const CaptionFont font : allCases<CaptionFont>())
        names << WindowTexts::fontName(font);
    EXPECT_EQ(names.join(u' ').toStdString(), "System Rounded Serif Monospaced Geometric");
    EXPECT_EQ(fromRawValue<CaptionFont>(u"New York"), CaptionFont::serif);
}

TEST(WindowTexts, sumUpABorder)
{
    const SideLengths even{2.04, 2, 2, 1.96};
    const struct {
        Border border;
        const char* text;
    } rows[] = {{{}, "120 px · As Photo"},
                {{.width = 1'200.5}, "1,201 px · As Photo"},
                {{.unit = BorderUnit::percent, .sides = even}, "2.0 % · As Photo"},
                {{.sides = {{100, 0, 360.4, 0}}, .shape = {{4, 5}}}, "100, 0, 360, 0 px · 4:5"},
                {{.blurredBackground = BlurredBackground(), .shape = {{2.35, 1}}, .line = FrameLine()},
                 "120 px · 2.35:1 · blurred photo · line"},
                {{.shape = {{1.008, 0.999}}, .photoEdge = {{2.5, BorderUnit::percent}, true}},
                 "120 px · 1.01:1 · 2.5 % corners · shadow"}};
    for (const auto& row : rows)
        EXPECT_EQ(WindowTexts::borderSummary(row.border), QString::fromUtf8(row.text));
    EXPECT_EQ(WindowTexts::photoEdgeSummary({}), QStringLiteral("Square, no shadow"));
    EXPECT_EQ(WindowTexts::photoEdgeSummary({{24}, true}), QStringLiteral("24 px, shadow"));
}

} // namespace ferrow
