// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/InProcessAnswerer.h"

#include <QGuiApplication>

#include <gmock/gmock.h>

#include <clocale>

int main(int argc, char** argv)
{
    // Text needs a platform, and the offscreen one needs no display. One locale and zone for all, whatever the
    // machine's: tests that are about others set them themselves.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "en_US.UTF-8");
    qputenv("TZ", "Europe/Berlin");
    // Nor is the desktop of whoever runs the tests asked for anything.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    const QGuiApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    // Tests that are about workers choose them.
    ferrow::Engine::setAnswerer(std::make_unique<ferrow::Engine::InProcessAnswerer>());
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
