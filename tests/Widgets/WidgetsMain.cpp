// SPDX-License-Identifier: GPL-3.0-or-later
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"

#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "en_US.UTF-8");
    QApplication application(argc, argv);
    ferrow::FerrowStyle::install(application);
    ferrow::Theme::current().setReducedMotion(true);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
