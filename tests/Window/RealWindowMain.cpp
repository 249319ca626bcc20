// SPDX-License-Identifier: GPL-3.0-or-later
// For tests of the whole program in a real window: on whatever display there is, with worker processes.
#include "Widgets/FerrowStyle.h"
#include "Widgets/Theme.h"
#include "WorkerPool/WorkerPool.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    qunsetenv("DBUS_SESSION_BUS_ADDRESS"); // The desktop of whoever runs the tests is not asked for anything.
    QApplication application(argc, argv);
    if (QGuiApplication::platformName() == QLatin1StringView("offscreen"))
        std::fprintf(stderr,
                     "NOT TESTED: a real window; without a display these tests run on the offscreen platform.\n");
    ferrow::Theme::current().setReducedMotion(true);
    ferrow::FerrowStyle::install(application);
    const ferrow::WorkerPool::Installation workers = ferrow::WorkerPool::installWorkers(FERROW_WORKER_PROGRAM);
    return RUN_ALL_TESTS();
}
