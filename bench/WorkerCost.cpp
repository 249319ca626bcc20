// SPDX-License-Identifier: GPL-3.0-or-later
// What it costs that photos are read by other processes: processor time of importing small ones, where the way there
// and back weighs most, over that of the same import in this process; and how long a photo waits when the worker before
// it was killed, over the same photo's usual time.
#include "BenchSupport.h"

#include "Batch/BatchImporter.h"
#include "Engine/Answerer.h"
#include "Engine/InProcessAnswerer.h"
#include "Platform/Files/FileAccess.h"
#include "WorkerPool/WorkerAnswerer.h"
#include "WorkerPool/WorkerPool.h"

#include <QGuiApplication>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <vector>

namespace {

using namespace ferrow;

constexpr int photoCount = 1000;
constexpr int atOnce = 4;
constexpr int rounds = 5;
constexpr double target = 1.4;

double secondsOf(int whose)
{
    rusage usage{};
    ::getrusage(whose, &usage);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void importAll(const std::vector<FileUrl>& photos)
{
    const auto result = BatchImporter::load(photos, atOnce);
    if (result.photos.size() != photos.size())
        throw std::runtime_error("a photo was refused");
}

/// Processor time of this process and of the children that ended meanwhile.
double measured(const std::function<void()>& work)
{
    const double before = secondsOf(RUSAGE_SELF) + secondsOf(RUSAGE_CHILDREN);
    work();
    return secondsOf(RUSAGE_SELF) + secondsOf(RUSAGE_CHILDREN) - before;
}

void measure(const char* label, std::int64_t width, std::int64_t height)
{
    const bench::ScratchFolder folder;
    std::vector<FileUrl> photos;
    for (int i = 0; i < photoCount; ++i) {
        const std::string path = folder.file("photo-" + std::to_string(i) + ".jpg");
        if (i == 0)
            bench::writeSourceJpeg(path, {.width = width, .height = height});
        else
            std::filesystem::copy_file(folder.file("photo-0.jpg"), path);
        photos.push_back(FileUrl::fromPath(QByteArray::fromStdString(path)));
    }
    double inProcess = 1e9;
    double withWorkers = 1e9;
    for (int round = 0; round < rounds; ++round) {
        Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>());
        inProcess = std::min(inProcess, measured([&] { importAll(photos); }));
        // Starting and ending the workers counts too.
        withWorkers = std::min(withWorkers, measured([&] {
                                   const WorkerPool::Installation workers =
                                       WorkerPool::installWorkers(bench::workerProgram().c_str());
                                   importAll(photos);
                               }));
    }
    std::printf("%-22s in process %.2f s, with workers %.2f s, ratio %.2f (target %.2f)\n", label, inProcess,
                withWorkers, withWorkers / inProcess, target);
}

/// The slowest of some rounds, in milliseconds, with `before` done ahead of each.
double slowest(const std::function<void()>& before, const std::function<void()>& work)
{
    using Clock = std::chrono::steady_clock;
    constexpr int replacements = 20;
    double milliseconds = 0;
    for (int i = 0; i < replacements; ++i) {
        before();
        const auto start = Clock::now();
        work();
        milliseconds = std::max(milliseconds, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return milliseconds;
}

void measureReplacement()
{
    constexpr double targetMilliseconds = 500;
    const bench::ScratchFolder folder;
    const std::string path = folder.file("photo.jpg");
    bench::writeSourceJpeg(path, {.width = 390, .height = 260});
    const OpenedFile photo = OpenedFile::open(FileUrl::fromPath(QByteArray::fromStdString(path)));
    const auto pool = std::make_shared<WorkerPool::Pool>(bench::workerProgram().c_str());
    WorkerPool::WorkerAnswerer workers(pool);
    const auto inspect = [&] { static_cast<void>(workers.inspect({{photo.descriptor(), photo.size()}, 280}, {})); };
    inspect();
    const double usual = slowest([] {}, inspect);
    const double replaced = slowest(
        [&] {
            auto worker = pool->take(WorkerPool::WorkerKind::photos, {});
            ::kill(worker->process(), SIGKILL);
            pool->giveBack(std::move(worker), WorkerPool::Pool::Condition::broken);
        },
        inspect);
    std::printf(
        "after a killed worker  the next photo's answer at the latest after %.0f ms, else %.0f ms (target %.0f)\n",
        replaced, usual, targetMilliseconds);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    std::printf("Best of %d rounds, %d imports, %d at once, processor time of all processes\n", rounds, photoCount,
                atOnce);
    measure("0.1 megapixel", 390, 260);
    measure("2 megapixels", 1730, 1156);
    measureReplacement();
    return 0;
}
