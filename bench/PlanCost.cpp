// SPDX-License-Identifier: GPL-3.0-or-later
// Memory and time of listing and of planning batches of up to a million photos: what each name adds to them. The photos
// are empty files, and what a worker would have read of each is made up; all else is done as `ferrow-batch --plan-to`
// does it.
#include "BenchSupport.h"

#include "Batch/BatchImporter.h"
#include "Command/Arguments.h"
#include "Command/Commands.h"
#include "Engine/Answerer.h"
#include "Models/ErrorTexts.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace {

using namespace ferrow;

constexpr int photosInAFolder = 2000;

/// A photo of 24 megapixels in every file.
class MadeUpPhotos : public Engine::Answerer {
public:
    Engine::InspectAnswer inspect(const Engine::InspectRequest&, const std::stop_token&) override
    {
        Engine::InspectAnswer answer;
        answer.storedSize = answer.uprightSize = {6000, 4000};
        answer.colorProfileName = QStringLiteral("sRGB IEC61966-2.1");
        return answer;
    }
    std::optional<Engine::PictureSummary> frame(const Engine::FrameRequest&, const std::stop_token&) override
    {
        refuse();
    }
    Engine::PictureSummary readBack(const Engine::ReadBackRequest&, const std::stop_token&) override { refuse(); }
    Bitmap composeRegion(const Engine::RegionRequest&, const std::stop_token&) override { refuse(); }
    Engine::LogoAnswer rasterizeLogo(const Engine::LogoRequest&, const std::stop_token&) override { refuse(); }

private:
    [[noreturn]] static void refuse() { throw ImagePipelineError(ImagePipelineError::decodingFailed); }
};

/// In folders of one day each, as cameras' photos are sorted: paths of some 60 bytes.
void addStandIns(const std::string& root, int from, int to)
{
    for (int i = from; i < to; ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "/2024-03-%04d", i / photosInAFolder);
        if (i % photosInAFolder == 0)
            std::filesystem::create_directory(root + name);
        std::snprintf(name, sizeof name, "/2024-03-%04d/DSC_%07d.JPG", i / photosInAFolder, i);
        const int file = ::open((root + name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
        if (file < 0)
            throw std::runtime_error("cannot make stand-ins");
        ::close(file);
    }
}

struct Cost {
    double seconds = 0; ///< Of all threads' processor time.
    double megabytes = 0;
};

/// In a process of its own, whose peak is nobody else's.
Cost costOf(const std::function<bool()>& work)
{
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work() ? 0 : 1);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("the measured work failed");
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime), double(usage.ru_maxrss) * 1024 / 1e6};
}

} // namespace

int main()
{
    const bench::ScratchFolder scratch;
    const std::string photos = scratch.file("photos");
    std::filesystem::create_directory(photos);
    std::filesystem::create_directory(scratch.file("framed"));
    const FileUrl root = FileUrl::fromPath(QByteArray::fromStdString(photos));
    const auto list = [&] { return !BatchImporter::scan({root}).candidates.empty(); };
    const auto plan = [&] {
        Engine::setAnswerer(std::make_unique<MadeUpPhotos>());
        const auto word = [](const std::string& text) { return QByteArray::fromStdString(text); };
        const Command::Arguments arguments =
            Command::parseArguments({"--quiet", "--no-caption", "--plan-to", word(scratch.file("plan.jsonl")),
                                     "--output", word(scratch.file("framed")), word(photos)});
        return std::freopen("/dev/null", "w", stdout) && Command::runBatch(arguments, {}) == Command::allDone;
    };

    struct Row {
        const char* label;
        std::function<bool()> work;
        Cost smallest{};
        int smallestCount = 0;
    };
    Row rows[]{{"listing", list}, {"planning", plan}};
    int made = 0;
    for (const int count : {100'000, 300'000, 1'000'000}) {
        addStandIns(photos, made, count);
        made = count;
        static_cast<void>(costOf(list)); // The system's own caches are filled.
        for (Row& row : rows) {
            const Cost cost = costOf(row.work);
            std::printf("%-9s %9d photos: %6.2f s, %6.1f MB", row.label, count, cost.seconds, cost.megabytes);
            if (row.smallestCount == 0) {
                row.smallest = cost;
                row.smallestCount = count;
            } else {
                const int more = count - row.smallestCount;
                std::printf("; each name more than %d: %.1f us, %.0f bytes (target 400)", row.smallestCount,
                            (cost.seconds - row.smallest.seconds) / more * 1e6,
                            (cost.megabytes - row.smallest.megabytes) / more * 1e6);
            }
            std::printf("\n");
        }
    }
    return 0;
}
