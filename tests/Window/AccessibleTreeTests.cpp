// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/RealWindow.h"

#include <set>

namespace ferrow::test {

namespace {

/// Roles that a user acts on, or walks through: without a name they are silence to a screen reader.
bool needsName(const QAccessibleInterface& control)
{
    static const std::set<QAccessible::Role> roles{
        QAccessible::Button,      QAccessible::ButtonDropDown, QAccessible::ButtonMenu,   QAccessible::CheckBox,
        QAccessible::RadioButton, QAccessible::ComboBox,       QAccessible::EditableText, QAccessible::SpinBox,
        QAccessible::Slider,      QAccessible::List,           QAccessible::ListItem,     QAccessible::Dialog,
        QAccessible::Splitter,    QAccessible::Grip,           QAccessible::ProgressBar,  QAccessible::MenuItem,
        QAccessible::Graphic,     QAccessible::PageTab,        QAccessible::ColorChooser};
    return roles.contains(control.role());
}

/// Places of nameless controls below `root`, and how many named ones there are.
int namedControls(QAccessibleInterface* root, const QString& path, QStringList& nameless)
{
    if (!root || !root->isValid() || root->state().invisible)
        return 0;
    const QString here = path + QStringLiteral(" / %1 “%2”").arg(int(root->role())).arg(root->text(QAccessible::Name));
    int named = 0;
    if (needsName(*root)) {
        if (root->text(QAccessible::Name).trimmed().isEmpty())
            nameless << here + u' ' +
                            (root->object() ? QLatin1StringView(root->object()->metaObject()->className())
                                            : QLatin1StringView());
        else
            ++named;
    }
    for (int i = 0; i < root->childCount(); ++i)
        named += namedControls(root->child(i), here, nameless);
    return named;
}

} // namespace

class AccessibleTree : public RealWindow {
protected:
    void expectNames(const char* view, int atLeast)
    {
        SCOPED_TRACE(view);
        QTest::qWait(50);
        QStringList nameless;
        const int named = namedControls(QAccessible::queryAccessibleInterface(window_.get()), {}, nameless);
        EXPECT_TRUE(nameless.isEmpty()) << nameless.join(u'\n').toStdString();
        EXPECT_GE(named, atLeast);
    }
};

TEST_F(AccessibleTree, NamesEveryControlOfEveryView)
{
    QAccessible::setActive(true);
    expectNames("empty window", 20);
    home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({home_.file("a.png")});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    expectNames("with a photo", 30);

    struct Row {
        const char* opener;
        int atLeast;
    };
    for (const Row& row :
         {Row{"borderColorWell", 20}, Row{"captionPositionButton", 16}, Row{"presetsButton", 5}, Row{"exportButton", 12}}) {
        SCOPED_TRACE(row.opener);
        click(row.opener);
        ASSERT_TRUE(waitFor([&] { return Overlay::topmost(window_.get()) != nullptr; }));
        expectNames(row.opener, row.atLeast);
        // The focus is in what has opened and stays there.
        for (int step = 0; step < 40; ++step) {
            press(Qt::Key_Tab);
            ASSERT_TRUE(Overlay::topmost(window_.get())->isAncestorOf(QApplication::focusWidget()));
        }
        Overlay::topmost(window_.get())->dismiss();
        ASSERT_TRUE(waitFor([&] { return !Overlay::topmost(window_.get()); }));
    }
}

TEST_F(AccessibleTree, TabReachesEveryPartOfTheWindow)
{
    home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
    window_->importRoots({home_.file("a.png")});
    ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    std::vector<QString> order;
    widget("sidebarButton")->setFocus(Qt::TabFocusReason);
    for (int step = 0; step < 80; ++step) {
        for (const QWidget* part = QApplication::focusWidget(); part; part = part->parentWidget())
            for (const char* name : {"mainToolBar", "photoSidebar", "previewPane", "inspector"})
                if (part->objectName() == QLatin1StringView(name) &&
                    (order.empty() || order.back() != part->objectName()))
                    order.push_back(part->objectName());
        press(Qt::Key_Tab);
    }
    ASSERT_GE(order.size(), 4U);
    order.resize(4);
    EXPECT_EQ(order, (std::vector<QString>{QStringLiteral("mainToolBar"), QStringLiteral("photoSidebar"),
                                           QStringLiteral("previewPane"), QStringLiteral("inspector")}));
}

} // namespace ferrow::test
