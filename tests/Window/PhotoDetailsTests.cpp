// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PhotoDetails/PhotoDetails.h"

#include "Features/PhotoDetails/CorrectionField.h"
#include "Session/SessionTestSupport.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace ferrow::test {

namespace {

PhotoSession::Operations withLens()
{
    PhotoSession::Operations operations = withoutDisk();
    operations.load = [](const FileUrl& url, const std::stop_token&) {
        ImportedPhoto photo = photoAt(url);
        photo.metadata.lens = QStringLiteral("Lens of ") + url.lastPathComponent();
        return photo;
    };
    return operations;
}

/// The card over the right part of a window, with two photos; the first is selected.
struct Details : testing::Test {
    const FileUrl a = photoUrl("a");
    const FileUrl b = photoUrl("b");
    DisklessSession session{withLens()};
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    QWidget window;
    QLineEdit list{&window};
    QWidget pane{&window};
    QLineEdit under{&pane};
    PhotoDetails details{session, history, &pane};

    void SetUp() override
    {
        importInto(session, {a, b});
        session.setSelectedPhotoID(a);
        window.resize(900, 900);
        pane.setGeometry(580, 0, 320, 900);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        list.setFocus();
        details.open();
    }

    CorrectionField& field(const char* name) { return *details.findChild<CorrectionField*>(QLatin1StringView(name)); }
    QPushButton& button(const char* name) { return *details.findChild<QPushButton*>(QLatin1StringView(name)); }
    void type(const char* name, const char* text, Qt::Key end)
    {
        field(name).setFocus();
        field(name).selectAll();
        QTest::keyClick(&field(name), Qt::Key_Delete);
        QTest::keyClicks(&field(name), QString::fromUtf8(text));
        QTest::keyClick(window.focusWidget(), end);
    }
    /// Texts that are shown, such as what a file says below its field.
    [[nodiscard]] bool says(const QString& text) const
    {
        return std::ranges::any_of(details.findChildren<QLabel*>(),
                                   [&](const QLabel* label) { return label->isVisible() && label->text() == text; });
    }
    [[nodiscard]] QString lens(const FileUrl& photo) const
    {
        return session.photo(photo)->captionMetadata().lens.value_or(QStringLiteral("none"));
    }
};

} // namespace

TEST_F(Details, correctGiveBackAndLeaveOut)
{
    EXPECT_EQ(field("lens").text(), QStringLiteral("Lens of a"));
    EXPECT_EQ(field("title").placeholderText(), QStringLiteral("Not in the file"));
    EXPECT_FALSE(button("resetAll").isVisible());
    type("lens", " Helios ", Qt::Key_Return);
    EXPECT_EQ(lens(a), QStringLiteral("Helios"));
    EXPECT_EQ(field("lens").text(), QStringLiteral("Helios"));
    EXPECT_TRUE(says(QStringLiteral("Was Lens of a")));
    const QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(&field("lens"));
    EXPECT_EQ(heard->text(QAccessible::Name), QStringLiteral("Lens"));
    EXPECT_EQ(heard->text(QAccessible::Description), QStringLiteral("Corrected. Was Lens of a"));

    QTest::keyClick(&field("lens"), Qt::Key_Tab);
    auto* reset = qobject_cast<QPushButton*>(window.focusWidget());
    ASSERT_TRUE(reset);
    EXPECT_EQ(reset->accessibleName(), QStringLiteral("Reset Lens"));
    QTest::keyClick(reset, Qt::Key_Space);
    EXPECT_EQ(lens(a), QStringLiteral("Lens of a"));
    EXPECT_EQ(window.focusWidget(), &field("lens"));

    type("lens", "A name that is far too long to be seen as a whole", Qt::Key_Tab);
    EXPECT_EQ(field("lens").cursorPosition(), 0) << "its beginning is seen";
    type("lens", "", Qt::Key_Tab);
    EXPECT_EQ(lens(a), QStringLiteral("none"));
    EXPECT_TRUE(field("lens").isCorrected());
    type("captureDate", "21.6.1987", Qt::Key_Return);
    EXPECT_TRUE(field("captureDate").hasError());
    QTest::keyClick(&field("captureDate"), Qt::Key_Escape);
    EXPECT_FALSE(field("captureDate").isCorrected());
    type("captureDate", "1987-06-21", Qt::Key_Return);
    EXPECT_EQ(session.photo(a)->captionMetadata().captureYear(), QStringLiteral("1987"));
    EXPECT_TRUE(says(QStringLiteral("Not in the file")));

    button("resetAll").click();
    EXPECT_TRUE(session.photo(a)->corrections.empty());
    history.stack().undo();
    EXPECT_EQ(session.photo(a)->corrections.size(), 2U);
    EXPECT_EQ(field("captureDate").text(), QStringLiteral("1987-06-21"));
}

TEST_F(Details, stayWhilePhotosChangeAndSetTheCorrectedValuesInAll)
{
    session.setSelectedPhotoID(b);
    type("iso", "50", Qt::Key_Return);
    session.setSelectedPhotoID(a);
    EXPECT_FALSE(field("iso").isCorrected());
    field("lens").setFocus();
    QTest::keyClicks(&field("lens"), QStringLiteral("half"));
    session.setSelectedPhotoID(b);
    EXPECT_EQ(field("lens").text(), QStringLiteral("Lens of b"));
    list.setFocus();
    EXPECT_EQ(lens(b), QStringLiteral("Lens of b")) << "it was meant for the other photo";

    session.setSelectedPhotoID(a);
    type("lens", "Helios", Qt::Key_Return);
    EXPECT_TRUE(says(QStringLiteral("Sets the corrected value in 2 photos.")));
    const int steps = history.stack().count();
    button("useForAll").click();
    EXPECT_EQ(history.stack().count(), steps + 1);
    EXPECT_EQ(lens(b), QStringLiteral("Helios"));
    EXPECT_EQ(session.photo(b)->corrections.size(), 2U) << "its own stays";

    details.setLocked(true);
    EXPECT_TRUE(details.isVisible() && !field("lens").isEnabled());
    history.clearAll();
    EXPECT_FALSE(details.isVisible());
}

TEST_F(Details, closeWithWhatIsTypedAndCoverNoFocus)
{
    field("title").setFocus();
    QTest::keyClicks(&field("title"), QStringLiteral("Dunes"));
    button("closeDetails").click();
    EXPECT_EQ(session.photo(a)->captionMetadata().title, QStringLiteral("Dunes"));
    EXPECT_EQ(window.focusWidget(), &list);
    details.toggle();
    QTest::keyClick(window.focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(details.isVisible());
    EXPECT_EQ(window.focusWidget(), &list);
    details.toggle();
    under.setFocus();
    EXPECT_FALSE(details.isVisible());
    EXPECT_EQ(window.focusWidget(), &under);
}

} // namespace ferrow::test
