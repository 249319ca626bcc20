// SPDX-License-Identifier: GPL-3.0-or-later
// The worker program for logos, which the one for photos becomes.
#include "Engine/LogoRasterizer.h"
#include "Worker/WarmUpText.h"
#include "Worker/WorkerProgram.h"

#include <stdlib.h>

int main()
{
    using namespace ferrow::Worker;
    const auto prepare = [](const Setup& setup) {
        for (const std::string& variable : setup.environment)
            ::putenv(const_cast<char*>(variable.c_str()));
        std::vector<std::string> places = warmUpText();
        ::clearenv();
        return places;
    };
    return runWorker(prepare, [](Channel& channel) { serve(channel, &ferrow::Engine::rasterizeLogo); });
}
