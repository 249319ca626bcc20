// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/AccessibleEvents.h"
#include "Widgets/AccessibleItems.h"
#include "Window/RealWindow.h"

#include <QAbstractScrollArea>
#include <QPointer>
#include <QScreen>
#include <QSplitter>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

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

bool needsValue(const QAccessibleInterface& control)
{
    static const std::set<QAccessible::Role> roles{QAccessible::SpinBox, QAccessible::Slider, QAccessible::ComboBox,
                                                   QAccessible::ProgressBar};
    // Of columns, the handles, not what holds them.
    return roles.contains(control.role()) || (control.role() == QAccessible::Splitter && control.state().focusable);
}

/// `root` and all below it that is shown.
void forEach(QAccessibleInterface* root, const QString& path,
             const std::function<void(QAccessibleInterface&, const QString&)>& visit)
{
    if (!root || !root->isValid() || root->state().invisible)
        return;
    const QString here = path + QStringLiteral(" / %1 “%2”").arg(int(root->role())).arg(root->text(QAccessible::Name));
    visit(*root, here);
    for (int i = 0; i < root->childCount(); ++i)
        forEach(root->child(i), here, visit);
}

/// Ends the tests with a word where they would otherwise hang for good.
class Watchdog {
public:
    explicit Watchdog(const QString& doing)
        : thread_([doing = doing.toStdString()](const std::stop_token& stop) {
              std::mutex mutex;
              std::unique_lock lock(mutex);
              std::condition_variable_any().wait_for(lock, stop, std::chrono::minutes(2), [] { return false; });
              if (!stop.stop_requested()) {
                  std::fprintf(stderr, "No end of %s\n", doing.c_str());
                  std::abort();
              }
          })
    {
    }

private:
    std::jthread thread_;
};

void askEverything(QAccessibleTextInterface& text, const QString& place)
{
    const Watchdog watchdog(place);
    const int length = text.characterCount();
    for (const auto boundary : {QAccessible::CharBoundary, QAccessible::WordBoundary, QAccessible::SentenceBoundary,
                                QAccessible::ParagraphBoundary, QAccessible::LineBoundary, QAccessible::NoBoundary})
        for (int offset = -3; offset <= length + 2; ++offset) {
            int start = 0;
            int end = 0;
            for (const QString& piece : {text.textBeforeOffset(offset, boundary, &start, &end),
                                         text.textAfterOffset(offset, boundary, &start, &end),
                                         text.textAtOffset(offset, boundary, &start, &end)})
                EXPECT_LE(piece.size(), length);
            const bool isInside = offset >= 0 && offset < length;
            EXPECT_TRUE(!isInside || (start <= offset && offset < end))
                << place.toStdString() << boundary << ' ' << offset;
        }
}

} // namespace

class AccessibleTree : public RealWindow {
protected:
    AccessibleTree()
    {
        QAccessible::setActive(true);
        setAccessibleReceiver([this](QAccessibleEvent& event) {
            QAccessibleInterface* object = event.accessibleInterface();
            heard_.push_back({event.type(), object->text(QAccessible::Name), object->state(), object->parent()});
        });
    }
    ~AccessibleTree() override { setAccessibleReceiver({}); }

    void importOne()
    {
        home_.write("a.png", encoded(OutputType::png, noise({60, 40}, rgb8)));
        window_->importRoots({home_.file("a.png")});
        ASSERT_TRUE(waitFor([&] { return window_->session().photos().size() == 1; }));
    }

    void expectControls(const char* view, int atLeast)
    {
        SCOPED_TRACE(view);
        QTest::qWait(50);
        int named = 0;
        forEach(QAccessible::queryAccessibleInterface(window_.get()), {},
                [&](QAccessibleInterface& control, const QString& place) {
                    SCOPED_TRACE(place.toStdString());
                    if (needsName(control)) {
                        EXPECT_FALSE(control.text(QAccessible::Name).trimmed().isEmpty());
                        ++named;
                    }
                    if (needsValue(control)) {
                        ASSERT_TRUE(control.valueInterface());
                        const double value = control.valueInterface()->currentValue().toDouble();
                        EXPECT_GE(value, control.valueInterface()->minimumValue().toDouble());
                        EXPECT_LE(value, control.valueInterface()->maximumValue().toDouble());
                    }
                    if (control.textInterface())
                        askEverything(*control.textInterface(), place);
                });
        EXPECT_GE(named, atLeast);
        expectChosenMembers();
    }

    /// Focus tells each group's member that keys act on, and only after Qt has told the group.
    void expectChosenMembers()
    {
        QWidget* top = Overlay::topmost(window_.get());
        // Some go while others have the focus.
        std::vector<QPointer<QWidget>> inside;
        for (QWidget* widget : (top ? top : window_.get())->findChildren<QWidget*>())
            inside.emplace_back(widget);
        for (const QPointer<QWidget>& widget : inside) {
            const auto* items = dynamic_cast<const AccessibleItems*>(widget.data());
            if (!items || !widget->isVisible() || !widget->isEnabled() || items->focusedItem() < 0 ||
                items->focusedItem() >= items->itemCount())
                continue;
            SCOPED_TRACE(widget->accessibleName().toStdString());
            widget->clearFocus();
            QCoreApplication::processEvents();
            heard_.clear();
            widget->setFocus(Qt::TabFocusReason);
            EXPECT_TRUE(heard_.empty());
            QCoreApplication::processEvents();
            ASSERT_FALSE(heard_.empty());
            EXPECT_EQ(heard_.back().type, QAccessible::Focus);
            EXPECT_EQ(heard_.back().name, items->item(items->focusedItem()).name);
            EXPECT_TRUE(heard_.back().state.focused);
            EXPECT_EQ(heard_.back().parent, QAccessible::queryAccessibleInterface(widget));
            groups_.insert(widget->accessibleName());
        }
    }

    [[nodiscard]] QStringList namesIn(const char* objectName, QAccessible::Role role)
    {
        QStringList names;
        forEach(QAccessible::queryAccessibleInterface(widget(objectName)), {},
                [&](const QAccessibleInterface& each, const QString&) {
                    if (each.role() == role)
                        names << each.text(QAccessible::Name);
                });
        return names;
    }

    /// As it was when it was told.
    struct Heard {
        QAccessible::Event type;
        QString name;
        QAccessible::State state;
        QAccessibleInterface* parent;
    };
    std::vector<Heard> heard_;
    std::set<QString> groups_;
};

TEST_F(AccessibleTree, TellsEveryControlOfEveryView)
{
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window_.get())->role(), QAccessible::Window);
    expectControls("empty window", 20);
    importOne();
    expectControls("with a photo", 30);
    press(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
    expectControls("contact sheet", 35);
    EXPECT_TRUE(groups_.contains(QStringLiteral("Contact Sheet")));
    EXPECT_EQ(namesIn("contactSheet", QAccessible::CheckBox).size(), 1);
    press(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
    window_->history().editRecipe(QStringLiteral("Frame"), [](RenderRecipe& recipe) {
        recipe.border.sides.emplace();
        recipe.border.blurredBackground.emplace();
        recipe.border.shape = {.width = 2.35};
    });
    click("frameLineSwitch");
    click("photoEdgeLine");
    expectControls("with all of a border", 45);
    window_->history().stack().undo();
    window_->history().stack().undo();

    struct Row {
        const char* opener;
        int atLeast;
    };
    for (const Row& row : {Row{"borderColorWell", 20}, Row{"captionPositionButton", 16}, Row{"presetsButton", 5},
                           Row{"exportButton", 12}}) {
        SCOPED_TRACE(row.opener);
        click(row.opener);
        ASSERT_TRUE(waitFor([&] { return Overlay::topmost(window_.get()) != nullptr; }));
        expectControls(row.opener, row.atLeast);
        // The focus is in what has opened and stays there.
        for (int step = 0; step < 40; ++step) {
            press(Qt::Key_Tab);
            ASSERT_TRUE(Overlay::topmost(window_.get())->isAncestorOf(QApplication::focusWidget()));
        }
        Overlay::topmost(window_.get())->dismiss();
        ASSERT_TRUE(waitFor([&] { return !Overlay::topmost(window_.get()); }));
    }
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_TRUE(widget("photoDetails")->isAncestorOf(QApplication::focusWidget()));
    expectControls("photo details", 45);
    EXPECT_GE(groups_.size(), 9U);
}

TEST_F(AccessibleTree, TellsTicks)
{
    importOne();
    press(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
    for (const char* place : {"photoList", "contactSheet"})
        for (const bool isTicked : {false, true}) {
            SCOPED_TRACE(place);
            widget(place)->setFocus(Qt::TabFocusReason);
            QCoreApplication::processEvents();
            heard_.clear();
            press(Qt::Key_Space);
            const auto* parent = QAccessible::queryAccessibleInterface(widget(place));
            const auto isTold = [&](const Heard& heard) {
                return heard.type == QAccessible::StateChanged && heard.parent == parent &&
                       heard.name.startsWith(QStringLiteral("a.png")) && heard.state.checked == isTicked;
            };
            EXPECT_TRUE(waitFor([&] { return std::ranges::any_of(heard_, isTold); }));
        }
}

TEST_F(AccessibleTree, ReachesWhatLiesOnPresetRows)
{
    click("presetsButton");
    click("savePresetButton");
    type("Mine");
    press(Qt::Key_Return);
    ASSERT_TRUE(waitFor([&] { return !namesIn("presetSheet", QAccessible::ListItem).isEmpty(); }));
    EXPECT_EQ(namesIn("presetList", QAccessible::Button),
              QStringList({QStringLiteral("Apply"), QStringLiteral("Rename…"), QStringLiteral("Duplicate"),
                           QStringLiteral("Delete")}));
    widget("presetList")->setFocus(Qt::TabFocusReason);
    press(Qt::Key_D, Qt::ControlModifier);
    ASSERT_TRUE(waitFor([&] { return namesIn("presetList", QAccessible::ListItem).size() == 2; }));
    press(Qt::Key_F2);
    EXPECT_EQ(namesIn("presetList", QAccessible::EditableText), QStringList(QStringLiteral("Preset name")));
}

TEST_F(AccessibleTree, TellsAndMovesTheColumns)
{
    const auto isExpanded = [&] {
        return QAccessible::queryAccessibleInterface(widget("sidebarButton"))->state().expanded;
    };
    QWidget* handle = window_->findChild<QSplitter*>()->handle(1);
    const int before = widget("photoSidebar")->width();
    handle->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_GT(widget("photoSidebar")->width(), before);
    EXPECT_EQ(heard_.back().type, QAccessible::ValueChanged);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(handle)->valueInterface()->currentValue().toInt(),
              widget("photoSidebar")->width());
    EXPECT_TRUE(isExpanded());
    click("sidebarButton");
    EXPECT_FALSE(isExpanded());
}

/// Also run on a small screen of a desktop that enlarges everything twice.
TEST_F(AccessibleTree, CutsOffNothingThatCannotBeScrolledTo)
{
    importOne();
    EXPECT_TRUE(window_->screen()->availableSize().width() >= window_->width() &&
                window_->screen()->availableSize().height() >= window_->height());
    for (const char* opener : {"", "presetsButton", "exportButton"}) {
        SCOPED_TRACE(opener);
        if (*opener)
            click(opener);
        QTest::qWait(50);
        for (const QWidget* control : window_->findChildren<QWidget*>()) {
            const QWidget* holder = control->parentWidget();
            while (holder != window_.get() && !qobject_cast<const QAbstractScrollArea*>(holder))
                holder = holder->parentWidget();
            if (control->isVisible() && (control->focusPolicy() & Qt::TabFocus) && holder == window_.get()) {
                EXPECT_TRUE(window_->rect().contains(QRect(control->mapTo(window_.get(), QPoint()), control->size())))
                    << control->accessibleName().toStdString() << control->objectName().toStdString();
            }
        }
        if (Overlay* overlay = Overlay::topmost(window_.get()))
            overlay->dismiss();
    }
}

TEST_F(AccessibleTree, TabReachesEveryPartOfTheWindow)
{
    importOne();
    std::vector<QString> order;
    std::set<QString> controls;
    widget("sidebarButton")->setFocus(Qt::TabFocusReason);
    for (int step = 0; step < 80; ++step) {
        controls.insert(QApplication::focusWidget()->objectName());
        for (const QWidget* part = QApplication::focusWidget(); part; part = part->parentWidget())
            for (const char* name : {"mainToolBar", "photoSidebar", "previewPane", "inspector"})
                if (part->objectName() == QLatin1StringView(name) &&
                    (order.empty() || order.back() != part->objectName()))
                    order.push_back(part->objectName());
        press(Qt::Key_Tab);
    }
    for (const char* name : {"photoList", "includeAllBox", "clearAllButton", "exportButton", "borderWidthField"})
        EXPECT_TRUE(controls.contains(QString::fromLatin1(name))) << name;
    ASSERT_GE(order.size(), 4U);
    order.resize(4);
    EXPECT_EQ(order, (std::vector<QString>{QStringLiteral("mainToolBar"), QStringLiteral("photoSidebar"),
                                           QStringLiteral("previewPane"), QStringLiteral("inspector")}));
}

} // namespace ferrow::test
