// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// What the benchmarks share: photo-like sources, the reference loop over the bare codec library, and measuring.
namespace ferrow::bench {

struct SourceOptions {
    std::int64_t width = 6000;
    std::int64_t height = 4000;
    bool progressive = false;
    int orientation = 1;
    QByteArray icc; ///< Embedded where not empty.
};

/// Writes a photo-like baseline JPEG (quality 92, 4:2:0, Exif camera data): soft structures of many sizes and sensor
/// noise.
void writeSourceJpeg(const std::string& path, const SourceOptions& options);

/// Decodes `source` and encodes it with a white border of `border` pixels, row by row, through libjpeg-turbo alone:
/// quality 90, 4:4:4, no Huffman optimization, to a file. What framing costs when nothing but the codec is paid for.
void bareFrameLoop(const std::string& source, const std::string& destination, int border);

/// Decodes `source` at 1/8 through libjpeg-turbo alone and drops the pixels.
void bareEighthDecode(const std::string& source);

/// Processor seconds, user and system, of a child process and all its own children: `arguments[0]` is the program.
/// Throws std::runtime_error when it does not end with status 0.
[[nodiscard]] double processorSeconds(const std::vector<std::string>& arguments);
/// The same, with a look at the process every few milliseconds.
[[nodiscard]] double processorSeconds(const std::vector<std::string>& arguments,
                                      const std::function<void(pid_t)>& look);

/// Processor seconds of this thread so far.
[[nodiscard]] double threadSeconds();

/// Highest proportional set size, in megabytes, that a child process and its descendants held together, sampled every
/// few milliseconds.
[[nodiscard]] double peakMegabytes(const std::vector<std::string>& arguments);

/// The companion built beside the benchmarks.
[[nodiscard]] std::string batchProgram();
/// The worker built with it.
[[nodiscard]] std::string workerProgram();

/// A folder that goes away with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

} // namespace ferrow::bench
