// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"
#include "Widgets/FerrowStyle.h"

#include <QApplication>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <clocale>

/// The main of all tests that open views: in the program's look, without a display, and with nothing of the user's own.
int main(int argc, char** argv)
{
    const QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "en_US.UTF-8");
    qputenv("TZ", "Europe/Berlin");
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toUtf8());
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    ferrow::FerrowStyle::install(application);
    ferrow::Engine::setAnswerer(std::make_unique<ferrow::Engine::InProcessAnswerer>());
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
