// SPDX-License-Identifier: GPL-3.0-or-later
#include "Window/FerrowApp.h"

int main(int argc, char** argv)
{
    return ferrow::runFerrow(argc, argv);
}
