// SPDX-License-Identifier: GPL-3.0-or-later
// The worker program for photos.
#include "Engine/InProcessAnswerer.h"
#include "Worker/StartingConventions.h"
#include "Worker/WarmUp.h"
#include "Worker/WorkerProgram.h"

#include <unistd.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace {

using namespace ferrow::Worker;

constexpr int cannotBecomeLogoWorker = 4;

/// The libraries that draw PDF and SVG take longer to load than all others, and are more than photos need behind them:
/// a program of its own has them. Returns where there is none.
void becomeLogoWorker()
{
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::string program = self.parent_path() / logoWorkerName;
    ::execl(program.c_str(), program.c_str(), nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view kind = argc > 1 ? argv[1] : "";
    if (kind == argumentForLogos) {
        becomeLogoWorker();
        return cannotBecomeLogoWorker;
    }
    const auto prepare = [&](const Setup&) -> std::vector<std::string> {
        warmUpCodecs();
        if (kind == argumentForHeicWriting)
            warmUpHeicEncoder();
        return {};
    };
    return runWorker(prepare, [](Channel& channel) { serve(channel); });
}
