// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Features/Inspector/InspectorView.h"
#include "Session/EditHistory.h"

#include <QLineEdit>
#include <QTest>

#include <gmock/gmock.h>

namespace ferrow {

/// The view in a window of its own, in which popovers can open.
struct Inspector : testing::Test {
    PhotoSession session;
    ExportSession exportSession;
    EditHistory history{session, exportSession};
    QWidget window;
    InspectorView view{session, history, exportSession, &window};

    void SetUp() override
    {
        window.resize(900, 1'000);
        view.setGeometry(580, 0, 320, 1'000);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    template <typename Widget>
    Widget& find(const char* name)
    {
        return *view.findChild<Widget*>(QString::fromLatin1(name));
    }
    static void type(QLineEdit& field, const char* text)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, QString::fromLatin1(text));
    }
    void key(Qt::Key key) { QTest::keyClick(window.focusWidget(), key); }
    const RenderRecipe& recipe() const { return session.activeRecipe(); }
};

} // namespace ferrow
