// SPDX-License-Identifier: GPL-3.0-or-later
#include "Support/Files.h"
#include "Window/RealWindow.h"

#include <QLabel>

namespace ferrow::test {

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
