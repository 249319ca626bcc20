// SPDX-License-Identifier: GPL-3.0-or-later
// What it costs that photos are read by other processes: processor time of importing and framing small ones, where the
// way there and back weighs most, and larger ones, over that of the same work in this process; and how long a photo
// waits when the worker before it was killed, over the same photo's usual time.
#include "BenchSupport.h"

#include "Batch/BatchImporter.h"
#include "Engine/Answerer.h"
#include "Engine/InProcessAnswerer.h"
#include "Export/ImageExporter.h"
#include "Platform/Files/FileAccess.h"
#include "WorkerPool/WorkerAnswerer.h"
#include "WorkerPool/WorkerPool.h"

#include <QGuiApplication>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ferrow;

constexpr int atOnce = 4;
constexpr int rounds = 5;

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

struct Photos {
    const char* label;
    std::int64_t width;
    std::int64_t height;
    int count;
    double target;
};

std::vector<FileUrl> write(const Photos& photos, const bench::ScratchFolder& folder)
{
    std::vector<FileUrl> urls;
    for (int i = 0; i < photos.count; ++i) {
        const std::string path = folder.file("photo-" + std::to_string(i) + ".jpg");
        if (i == 0)
            bench::writeSourceJpeg(path, {.width = photos.width, .height = photos.height});
        else
            std::filesystem::copy_file(folder.file("photo-0.jpg"), path);
        urls.push_back(FileUrl::fromPath(QByteArray::fromStdString(path)));
    }
    return urls;
}

/// The best of some rounds each. The two take turns, so that a busy machine is busy for both.
void compare(const Photos& photos, const std::function<void()>& work)
{
    double inProcess = 1e9;
    double withWorkers = 1e9;
    for (int round = 0; round < rounds; ++round) {
        Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>());
        inProcess = std::min(inProcess, measured(work));
        // Starting and ending the workers counts too.
        withWorkers = std::min(withWorkers, measured([&] {
                                   const WorkerPool::Installation workers =
                                       WorkerPool::installWorkers(bench::workerProgram().c_str());
                                   work();
                               }));
    }
    std::printf("%-22s in process %.2f s, with workers %.2f s, ratio %.2f (target %.2f)\n", photos.label, inProcess,
                withWorkers, withWorkers / inProcess, photos.target);
    std::fflush(stdout);
}

void measureImporting(const Photos& photos)
{
    const bench::ScratchFolder folder;
    const std::vector<FileUrl> urls = write(photos, folder);
    compare(photos, [&] { importAll(urls); });
}

void measureFraming(const Photos& photos, ExportFormat format)
{
    const bench::ScratchFolder folder;
    const std::vector<FileUrl> urls = write(photos, folder);
    Engine::setAnswerer(std::make_unique<Engine::InProcessAnswerer>());
    const auto imported = BatchImporter::load(urls, atOnce).photos;
    const FileUrl destination = FileUrl::fromPath(QByteArray::fromStdString(folder.file("framed")));
    RenderRecipe recipe;
    recipe.captions.front().isEnabled = false;
    compare(photos, [&] {
        for (const ImportedPhoto& photo : imported)
            ImageExporter::exportPhoto({photo, recipe, {format, 0.9}, destination, true}, {});
    });
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
            auto worker = pool->take(WorkerPool::WorkerKind::photos, WorkerPool::Purpose::reading, {1 << 20, 60}, {});
            worker->kill();
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
    std::printf("Best of %d rounds, processor time of all processes; importing %d at once, framing one by one\n",
                rounds, atOnce);
    measureImporting({"import 0.1 MP", 390, 260, 1'000, 1.4});
    measureImporting({"import 2 MP", 1730, 1156, 1'000, 1.4});
    for (const auto& [format, name] : {std::pair{ExportFormat::jpeg, "JPEG"}, std::pair{ExportFormat::png, "PNG"}}) {
        measureFraming({(std::string("frame 2 MP to ") + name).c_str(), 1730, 1156, 100, 1.3}, format);
        measureFraming({(std::string("frame 24 MP to ") + name).c_str(), 6000, 4000, 10, 1.06}, format);
    }
    measureReplacement();
    return 0;
}
