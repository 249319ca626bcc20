// SPDX-License-Identifier: GPL-3.0-or-later
// What would keep many cores from framing at once: processor time that one thread after the other has to spend, and
// waits. `ferrow-batch --jobs 16` frames batches of two sizes; what the larger one takes more is the photos' own, and
// starting is no part of it. The names of outputs are flushed to the disk of the temporary folder.
#include "BenchSupport.h"

#include "Platform/Pixels/ColorProfile.h"

#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

using namespace ferrow::bench;
namespace fs = std::filesystem;

constexpr int cores = 16;
constexpr int rounds = 3;

/// Of one thread, so far.
struct Thread {
    double seconds = 0;      ///< At work on a processor.
    std::int64_t waits = 0;  ///< Times that it gave its processor up: for a lock, an answer, or the disk.
    double forProcessor = 0; ///< Seconds that it could have worked, had there been a processor.
};

Thread threadAt(const fs::path& task)
{
    Thread thread;
    std::ifstream schedule(task / "schedstat");
    schedule >> thread.seconds >> thread.forProcessor;
    thread.seconds /= 1e9;
    thread.forProcessor /= 1e9;
    std::ifstream status(task / "status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("voluntary_ctxt_switches:"))
            std::istringstream(line.substr(line.find(':') + 1)) >> thread.waits;
    return thread;
}

/// The threads of one program, and the process that its workers are forked from, as they were when last seen.
class Watch {
public:
    void look(pid_t program)
    {
        std::error_code error;
        const fs::path tasks = "/proc/" + std::to_string(program) + "/task";
        for (fs::directory_iterator task(tasks, error), end; !error && task != end; task.increment(error)) {
            const auto number = std::atoi(task->path().filename().c_str());
            threads_[number] = threadAt(task->path());
            std::ifstream children(task->path() / "children");
            for (pid_t child = 0; children >> child;)
                stem_ = threadAt("/proc/" + std::to_string(child) + "/task/" + std::to_string(child));
        }
        program_ = program;
    }

    /// The thread that hands out the photos and tells of them.
    [[nodiscard]] Thread coordinating() const { return threads_.contains(program_) ? threads_.at(program_) : Thread(); }
    [[nodiscard]] const Thread& stem() const { return stem_; }
    [[nodiscard]] Thread others() const
    {
        Thread sum;
        for (const auto& [number, thread] : threads_)
            if (number != program_) {
                sum.seconds += thread.seconds;
                sum.waits += thread.waits;
            }
        return sum;
    }

private:
    std::map<pid_t, Thread> threads_;
    Thread stem_;
    pid_t program_ = 0;
};

struct Cost {
    double all = 0;
    Thread coordinating;
    Thread stem;
    Thread others;
};

Cost frame(const std::string& photo, int count)
{
    const ScratchFolder sources;
    const ScratchFolder outputs;
    for (int i = 0; i < count; ++i)
        fs::create_hard_link(photo, sources.file("photo-" + std::to_string(i) + ".jpg"));
    Watch watch;
    Cost cost;
    cost.all = processorSeconds({batchProgram(), "--quiet", "--jobs", std::to_string(cores), "--output", outputs.path(),
                                 "--caption", "{camera} · {year}", sources.path()},
                                [&](pid_t program) { watch.look(program); });
    cost.coordinating = watch.coordinating();
    cost.stem = watch.stem();
    cost.others = watch.others();
    return cost;
}

void measure(const char* label, const SourceOptions& source, int few, int many)
{
    const ScratchFolder folder;
    const std::string photo = folder.file("photo.jpg");
    writeSourceJpeg(photo, source);
    Cost best{.all = 1e9, .coordinating = {}, .stem = {}, .others = {}};
    for (int round = 0; round < rounds; ++round) {
        const Cost small = frame(photo, few);
        const Cost large = frame(photo, many);
        const auto perPhoto = [&](double more, double less) { return std::max(0.0, more - less) / (many - few); };
        const auto difference = [&](const Thread& more, const Thread& less) {
            return Thread{perPhoto(more.seconds, less.seconds), std::max<std::int64_t>(0, more.waits - less.waits)};
        };
        const Cost cost{perPhoto(large.all, small.all), difference(large.coordinating, small.coordinating),
                        difference(large.stem, small.stem), difference(large.others, small.others)};
        if (cost.all < best.all)
            best = cost;
    }
    const auto milliseconds = [](double seconds) { return seconds * 1e3; };
    const auto waits = [&](const Thread& thread) { return double(thread.waits) / (many - few); };
    std::printf("%s, a photo: %.1f ms of all processors\n", label, milliseconds(best.all));
    std::printf("  coordinating thread  %6.3f ms, %4.1f waits\n", milliseconds(best.coordinating.seconds),
                waits(best.coordinating));
    std::printf("  forking workers      %6.3f ms, %4.1f waits\n", milliseconds(best.stem.seconds), waits(best.stem));
    std::printf("  threads of the jobs  %6.3f ms, %4.1f waits\n", milliseconds(best.others.seconds),
                waits(best.others));
    const double serial = best.coordinating.seconds + best.stem.seconds;
    const double share = serial / best.all;
    std::printf("  one after the other  %6.3f ms, %.2f %%: %d cores frame %.1f times as fast as one (target 14)\n",
                milliseconds(serial), share * 100, cores, 1 / (share + (1 - share) / cores));
}

} // namespace

int main()
{
    std::printf("Best of %d rounds, ferrow-batch --jobs %d\n", rounds, cores);
    const QByteArray icc = ferrow::ColorProfile::sRGB().icc();
    measure("24 megapixels", {.icc = icc}, 16, 48);
    measure("2 megapixels", {.width = 1800, .height = 1200, .icc = icc}, 32, 232);
    return 0;
}
