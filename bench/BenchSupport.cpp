// SPDX-License-Identifier: GPL-3.0-or-later
#include "BenchSupport.h"

#include "Platform/Codecs/ExifBlock.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>

#include <jpeglib.h>

extern char** environ;

namespace ferrow::bench {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File openFile(const std::string& path, const char* mode)
{
    File file(std::fopen(path.c_str(), mode));
    if (!file)
        throw std::runtime_error("cannot open " + path);
    return file;
}

std::uint32_t scrambled(std::uint32_t value)
{
    value ^= value >> 16;
    value *= 0x7feb352dU;
    value ^= value >> 15;
    value *= 0x846ca68bU;
    return value ^ (value >> 16);
}

void fillRow(std::vector<JSAMPLE>& row, std::int64_t y, std::int64_t width)
{
    for (std::int64_t x = 0; x < width; ++x) {
        const double u = double(x) / 300;
        const double v = double(y) / 300;
        const double soft =
            std::sin(u) * std::cos(v * 1.3) + 0.5 * std::sin(3.1 * u + 2 * v) + 0.2 * std::sin(17 * u - 11 * v);
        for (int c = 0; c < 3; ++c) {
            const auto noise = double(scrambled(std::uint32_t(x * 3 + c) ^ (std::uint32_t(y) << 12)) % 13) - 6;
            const double value = 120 + 45 * soft + 15 * std::sin(u * (c + 1)) + noise;
            row[std::size_t(x * 3 + c)] = JSAMPLE(std::clamp(value, 0.0, 255.0));
        }
    }
}

void writeExif(jpeg_compress_struct& encoder, const SourceOptions& options)
{
    OutputMetadata metadata;
    metadata.make = QStringLiteral("Canon");
    metadata.model = QStringLiteral("Canon EOS R5");
    metadata.dateTimeOriginal = QStringLiteral("2024:03:05 14:07:09");
    QByteArray block = makeExifBlock(metadata, {options.width, options.height}, true);
    // Orientation is the one field that outputs never vary: tag 0x0112, type SHORT, count 1, little-endian.
    const qsizetype entry = block.indexOf(QByteArray("\x12\x01\x03\x00\x01\x00\x00\x00", 8));
    if (entry < 0)
        throw std::runtime_error("the Exif block holds no orientation");
    block[entry + 8] = char(options.orientation);
    block.prepend(QByteArray("Exif\0\0", 6));
    jpeg_write_marker(&encoder, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(block.constData()),
                      unsigned(block.size()));
}

pid_t spawn(const std::vector<std::string>& arguments)
{
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    pid_t child = 0;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const int error = ::posix_spawn(&child, words[0], &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::runtime_error("cannot start " + arguments[0]);
    return child;
}

void requireSuccess(int status, const std::string& program)
{
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(program + " failed");
}

/// The process and all below it.
std::set<pid_t> family(pid_t root)
{
    std::set<pid_t> members{root};
    for (bool grew = true; grew;) {
        grew = false;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const pid_t process = std::atoi(entry.path().filename().c_str());
            if (process <= 0 || members.contains(process))
                continue;
            std::ifstream stat(entry.path() / "stat");
            std::string line;
            std::getline(stat, line);
            const auto behindName = line.rfind(')');
            if (behindName == std::string::npos)
                continue;
            const pid_t parent = std::atoi(line.c_str() + std::min(behindName + 4, line.size()));
            grew |= members.contains(parent) && members.insert(process).second;
        }
    }
    return members;
}

double proportionalMegabytes(pid_t process)
{
    std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(rollup, line);)
        if (line.starts_with("Pss:"))
            return std::atof(line.c_str() + 4) * 1024 / 1e6;
    return 0;
}

} // namespace

void writeSourceJpeg(const std::string& path, const SourceOptions& options)
{
    const File file = openFile(path, "wb");
    jpeg_compress_struct encoder{};
    jpeg_error_mgr errors{};
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    jpeg_stdio_dest(&encoder, file.get());
    encoder.image_width = JDIMENSION(options.width);
    encoder.image_height = JDIMENSION(options.height);
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, 92, TRUE);
    if (options.progressive)
        jpeg_simple_progression(&encoder);
    jpeg_start_compress(&encoder, TRUE);
    writeExif(encoder, options);
    if (!options.icc.isEmpty())
        jpeg_write_icc_profile(&encoder, reinterpret_cast<const JOCTET*>(options.icc.constData()),
                               unsigned(options.icc.size()));
    std::vector<JSAMPLE> row(std::size_t(options.width) * 3);
    for (std::int64_t y = 0; y < options.height; ++y) {
        fillRow(row, y, options.width);
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&encoder, rows, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
}

void bareFrameLoop(const std::string& source, const std::string& destination, int border)
{
    const File in = openFile(source, "rb");
    const File out = openFile(destination, "wb");
    jpeg_decompress_struct decoder{};
    jpeg_error_mgr decoderErrors{};
    decoder.err = jpeg_std_error(&decoderErrors);
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, in.get());
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);

    jpeg_compress_struct encoder{};
    jpeg_error_mgr encoderErrors{};
    encoder.err = jpeg_std_error(&encoderErrors);
    jpeg_create_compress(&encoder);
    jpeg_stdio_dest(&encoder, out.get());
    encoder.image_width = decoder.output_width + 2 * unsigned(border);
    encoder.image_height = decoder.output_height + 2 * unsigned(border);
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, 90, TRUE);
    for (int i = 0; i < encoder.num_components; ++i)
        encoder.comp_info[i].h_samp_factor = encoder.comp_info[i].v_samp_factor = 1;
    jpeg_start_compress(&encoder, TRUE);

    std::vector<JSAMPLE> row(std::size_t(encoder.image_width) * 3, JSAMPLE(255));
    std::vector<JSAMPLE> white = row;
    JSAMPROW photoRow[] = {row.data() + std::size_t(border) * 3};
    JSAMPROW canvasRow[] = {row.data()};
    JSAMPROW whiteRow[] = {white.data()};
    for (int y = 0; y < border; ++y)
        jpeg_write_scanlines(&encoder, whiteRow, 1);
    while (decoder.output_scanline < decoder.output_height) {
        jpeg_read_scanlines(&decoder, photoRow, 1);
        jpeg_write_scanlines(&encoder, canvasRow, 1);
    }
    for (int y = 0; y < border; ++y)
        jpeg_write_scanlines(&encoder, whiteRow, 1);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
}

void bareEighthDecode(const std::string& source)
{
    const File in = openFile(source, "rb");
    jpeg_decompress_struct decoder{};
    jpeg_error_mgr errors{};
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, in.get());
    jpeg_read_header(&decoder, TRUE);
    decoder.scale_num = 1;
    decoder.scale_denom = 8;
    jpeg_start_decompress(&decoder);
    std::vector<JSAMPLE> row(std::size_t(decoder.output_width) * 3);
    JSAMPROW rows[] = {row.data()};
    while (decoder.output_scanline < decoder.output_height)
        jpeg_read_scanlines(&decoder, rows, 1);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
}

double processorSeconds(const std::vector<std::string>& arguments)
{
    return processorSeconds(arguments, {});
}

double processorSeconds(const std::vector<std::string>& arguments, const std::function<void(pid_t)>& look)
{
    const pid_t child = spawn(arguments);
    int status = 0;
    rusage usage{};
    while (::wait4(child, &status, look ? WNOHANG : 0, &usage) == 0) {
        look(child);
        ::usleep(2000);
    }
    requireSuccess(status, arguments[0]);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double threadSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

double peakMegabytes(const std::vector<std::string>& arguments)
{
    const pid_t child = spawn(arguments);
    double peak = 0;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        double sum = 0;
        for (const pid_t process : family(child))
            sum += proportionalMegabytes(process);
        peak = std::max(peak, sum);
        ::usleep(4000);
    }
    requireSuccess(status, arguments[0]);
    return peak;
}

std::string batchProgram()
{
    return FERROW_BATCH_PROGRAM;
}

std::string workerProgram()
{
    return FERROW_WORKER_PROGRAM;
}

ScratchFolder::ScratchFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "ferrow-bench-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("cannot make a scratch folder");
    path_ = name;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace ferrow::bench
