// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Commands.h"

#include "Command/Output.h"
#include "Command/Reporter.h"
#include "Command/RunSettings.h"
#include "Export/ImageExporter.h"
#include "Imaging/ImageLoader.h"
#include "Models/ErrorTexts.h"
#include "Platform/Base/ByteSource.h"
#include "Platform/Base/Cancellation.h"
#include "Platform/Files/MemoryFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>

namespace ferrow::Command {

namespace {

/// Until reading from `descriptor`, or writing to it, would not wait for others, so that a stop is heeded. Throws
/// Canceled.
void awaitReady(int descriptor, short event, const std::stop_token& stop)
{
    constexpr int milliseconds = 100;
    pollfd waiting{descriptor, event, 0};
    do
        throwIfCanceled(stop);
    while (::poll(&waiting, 1, milliseconds) < 1);
}

Descriptor memoryFile(const char* name)
{
    Descriptor file = openMemoryFile(name);
    if (!file.isOpen())
        throw ImagePipelineError(ImagePipelineError::renderingFailed);
    return file;
}

/// Standard input to its end, in memory: photos are not read in one go.
OpenedFile pipedPhoto(const std::stop_token& stop)
{
    Descriptor memory = memoryFile("ferrow-photo");
    ByteSink sink(memory.get());
    std::vector<std::byte> chunk(65'536);
    for (std::int64_t size = 0;;) {
        awaitReady(STDIN_FILENO, POLLIN, stop);
        const ssize_t count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count < 0)
            throw ImagePipelineError(ImagePipelineError::unreadableFile);
        if (count == 0)
            break;
        size += count;
        if (size > ImageLoader::maximumFileSize)
            throw ImagePipelineError(ImagePipelineError::FileTooLarge{size});
        sink.write({chunk.data(), std::size_t(count)});
    }
    sink.flush();
    return OpenedFile::adopt(std::move(memory));
}

/// A file is read where it is, unless somebody has taken a part of it already.
OpenedFile standardInput(const std::stop_token& stop)
try {
    struct stat status {};
    if (::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) && ::lseek(STDIN_FILENO, 0, SEEK_CUR) == 0)
        return OpenedFile::adopt(Descriptor(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)));
    return pipedPhoto(stop);
} catch (const SystemError&) {
    throw ImagePipelineError(ImagePipelineError::unreadableFile);
} catch (const InputOutputError&) {
    throw ImagePipelineError(ImagePipelineError::renderingFailed);
}

/// Whoever reads it back must not be able to write to it.
void checkFramed(int file, const Engine::PictureSummary& composed, const ExportSettings& settings,
                 const std::stop_token& stop)
try {
    const FileUrl place = FileUrl::fromPath("/proc/self/fd/" + QByteArray::number(file));
    ImageExporter::checkWritten(OpenedFile::open(place), composed, settings, stop);
} catch (const SystemError&) {
    throw ImagePipelineError(ImagePipelineError::writtenFileDiffers);
}

void passOn(int file, const std::stop_token& stop)
{
    const ByteSource source(file, ::lseek(file, 0, SEEK_END));
    // What a pipe takes without waiting, once it takes anything.
    std::array<std::byte, PIPE_BUF> chunk;
    std::int64_t offset = 0;
    while (const std::size_t count = source.readAt(offset, chunk)) {
        awaitReady(STDOUT_FILENO, POLLOUT, stop);
        printBytes({chunk.data(), count});
        if (standardOutputFailed())
            return;
        offset += std::int64_t(count);
    }
}

} // namespace

int runFilter(const Arguments& arguments, const std::stop_token& stop)
try {
    for (const auto& [descriptor, what] :
         {std::pair(STDIN_FILENO, "standard input"), std::pair(STDOUT_FILENO, "standard output")})
        if (::isatty(descriptor) == 1)
            throw UsageError{QStringLiteral("--filter: %1 is a terminal. Say where from and where to: "
                                            "--filter < photo.jpg > framed.jpg")
                                 .arg(QLatin1StringView(what))};
    Settings settings = resolvedSettings(arguments);
    const RunLogo logo(arguments, settings);
    warnOfMissingFonts(settings.recipe);
    const std::jthread fonts = loadingFonts(settings.recipe);

    const OpenedFile source = standardInput(stop);
    ImportedPhoto photo = ImageLoader::load(source, 0, stop);
    photo.corrections = arguments.corrections;
    const Descriptor framed = memoryFile("ferrow-framed");
    const WrittenPhoto written = ImageExporter::writePhoto(source, photo, settings.recipe, settings.exportSettings,
                                                           framed.get(), stop, logo.managedFolder());
    if (written.summary)
        checkFramed(framed.get(), *written.summary, settings.exportSettings, stop);
    passOn(framed.get(), stop);
    printCaptionFaults({.photo = photo, .recipe = settings.recipe, .settings = settings.exportSettings},
                       QStringLiteral("ferrow-batch"), logo.size(settings));
    return allDone;
} catch (const Canceled&) {
    return interrupted;
}

} // namespace ferrow::Command
