// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/Pictures.h"
#include "Support/TestSupport.h"
#include "Widgets/Overlay.h"
#include "Window/ContentView.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QMimeData>
#include <QScrollArea>
#include <QTest>
#include <QWindow>

#include <memory>

namespace ferrow::test {

/// The program's window over a scratch home, driven through the window system: presses and keys go where a user's
/// would.
class RealWindow : public testing::Test {
protected:
    RealWindow()
    {
        qputenv("XDG_DATA_HOME", home_.url().appending("data").path());
        qputenv("XDG_CONFIG_HOME", home_.url().appending("config").path());
        WindowServices services;
        services.panels.open = [this](QWidget*, const PanelRequest&, const FilePanels::Chosen& chosen) {
            chosen({panelAnswer_});
        };
        services.showItems = [](const std::vector<FileUrl>&) {};
        services.openFolders = [this](const std::vector<FileUrl>& folders) { openedFolders_ = folders; };
        services.notify = [](const QString&, const QString&) {};
        preferences_ = std::make_unique<Preferences>();
        window_ = std::make_unique<ContentView>(*preferences_, services);
        window_->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
        window_->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }

    [[nodiscard]] FileUrl folder(const char* name)
    {
        const FileUrl made = home_.url().appending(name);
        QDir().mkpath(made.displayPath());
        return made;
    }

    /// Fails the test with the name when there is no such widget to be seen.
    QWidget* widget(const char* objectName)
    {
        for (QWidget* found : window_->findChildren<QWidget*>(QLatin1StringView(objectName)))
            if (found->isVisible())
                return found;
        ADD_FAILURE() << "no " << objectName << " to be seen";
        return nullptr;
    }

    void clickAt(QWidget* target, const QPoint& place)
    {
        QTest::mouseClick(window_->windowHandle(), Qt::LeftButton, {}, target->mapTo(window_.get(), place));
    }
    void click(const char* objectName)
    {
        QWidget* target = widget(objectName);
        ASSERT_TRUE(target);
        ASSERT_TRUE(waitFor([&] { return target->isEnabled(); })) << objectName;
        // As a user scrolls to it.
        for (QWidget* holder = target->parentWidget(); holder; holder = holder->parentWidget())
            if (auto* pane = qobject_cast<QScrollArea*>(holder))
                pane->ensureWidgetVisible(target);
        // Of a color well the swatch is meant, of a number field its text.
        const int x = target->inherits("ferrow::ColorWell") ? target->height() / 2 : target->width() / 2;
        clickAt(target, {x, target->height() / 2});
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window_->windowHandle(), key, modifiers);
    }
    void type(const char* text)
    {
        for (const char* letter = text; *letter; ++letter)
            QTest::keyClick(window_->windowHandle(), *letter);
    }

    [[nodiscard]] static bool waitFor(const std::function<bool()>& done) { return QTest::qWaitFor(done, 30'000); }

    /// In the middle of `target`; without one, of the window.
    void drop(const FileUrl& place, const QWidget* target = nullptr)
    {
        QMimeData data;
        data.setUrls({place.toUrl()});
        const QPoint middle = target ? target->mapTo(window_.get(), target->rect().center()) : window_->rect().center();
        QWidget* under = window_->childAt(middle);
        const QPointF here = under->mapFrom(window_.get(), middle);
        QDragEnterEvent enter(here.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(under, &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent drop(here, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(under, &drop);
    }

    TemporaryFolder home_;
    FileUrl panelAnswer_;
    std::vector<FileUrl> openedFolders_;
    std::unique_ptr<Preferences> preferences_;
    std::unique_ptr<ContentView> window_;
};

} // namespace ferrow::test
