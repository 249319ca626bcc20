// SPDX-License-Identifier: GPL-3.0-or-later

/// Encodes photos as HEIC with every preset and thread setting of the encoder, as one picture and in tiles, and with
/// another encoder where the library has one; prints time, size and fidelity: the figures behind docs/heic-encoder.md.
/// Usage: HeifPresets photo...
///
/// Every encode runs in a process of its own, so that its memory peak is its own.

#include "Platform/Codecs/FileType.h"
#include "Platform/Codecs/HeifTiles.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <QString>

#include <libheif/heif.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace ferrow;

struct Picture {
    PixelSize size;
    std::vector<std::byte> rgb;
};

struct Setting {
    const char* preset;
    int quality;
    const char* chroma;
    const char* pools;
    std::int64_t tile = 0; ///< Side of the tiles in pixels, or 0 for one picture.
    const char* encoder = "x265";
};

/// Shared with the child that measures.
struct Figures {
    bool isValid = false;
    double wallSeconds = 0;
    double processorSeconds = 0;
    double peakMegabytes = 0;
    std::size_t bytes = 0;
    double fidelity = 0; ///< PSNR over the three components, in dB.
};

Picture load(const char* path)
{
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0)
        throw std::string("cannot be opened");
    const ByteSource source(descriptor, status.st_size);
    const auto type = detectFileType(source);
    if (!type || !type->type)
        throw std::string("is of no known type");
    const auto decoder = openDecoder(*type->type, source, {});
    if (decoder->format() != rgb8)
        throw std::string("is not plain RGB");
    Picture picture{decoder->size(), {}};
    const auto stride = std::size_t(picture.size.width * 3);
    picture.rgb.resize(stride * std::size_t(picture.size.height));
    decoder->readRows(picture.size.height, picture.rgb.data(), stride);
    ::close(descriptor);
    return picture;
}

void require(const heif_error& error)
{
    if (error.code != heif_error_Ok)
        throw std::string(error.message);
}

/// What lies beyond the picture's edges repeats its last pixels.
heif::Image toImage(const Picture& picture, std::int64_t left, std::int64_t top, PixelSize size)
{
    heif_image* image = nullptr;
    require(
        heif_image_create(int(size.width), int(size.height), heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image));
    heif::Image owner(image);
    require(heif_image_add_plane(image, heif_channel_interleaved, int(size.width), int(size.height), 8));
    int stride = 0;
    auto* pixels = reinterpret_cast<std::byte*>(heif_image_get_plane(image, heif_channel_interleaved, &stride));
    for (std::int64_t y = 0; y < size.height; ++y, pixels += stride) {
        const std::byte* row = picture.rgb.data() + std::min(top + y, picture.size.height - 1) * picture.size.width * 3;
        for (std::int64_t x = 0; x < size.width; ++x)
            std::copy_n(row + std::min(left + x, picture.size.width - 1) * 3, 3, pixels + x * 3);
    }
    return owner;
}

heif_error append(heif_context*, const void* data, std::size_t size, void* user)
{
    auto& bytes = *static_cast<std::vector<std::byte>*>(user);
    bytes.assign(static_cast<const std::byte*>(data), static_cast<const std::byte*>(data) + size);
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

heif::Encoder openEncoder(heif_context* context, const Setting& setting)
{
    const heif_encoder_descriptor* descriptor = nullptr;
    heif_encoder* encoder = nullptr;
    if (heif_get_encoder_descriptors(heif_compression_HEVC, setting.encoder, &descriptor, 1) != 1)
        throw std::string("not here");
    require(heif_context_get_encoder(context, descriptor, &encoder));
    heif::Encoder owner(encoder);
    require(heif_encoder_set_lossy_quality(encoder, setting.quality));
    if (*setting.preset == 0)
        return owner;
    require(heif_encoder_set_parameter_string(encoder, "preset", setting.preset));
    require(heif_encoder_set_parameter_string(encoder, "chroma", setting.chroma));
    require(heif_encoder_set_parameter_string(encoder, "x265:pools", setting.pools));
    return owner;
}

std::vector<std::byte> encode(const Picture& picture, const Setting& setting)
{
    const heif::Context context(heif_context_alloc());
    const heif::Encoder encoder = openEncoder(context.get(), setting);
    if (setting.tile == 0) {
        const heif::Image image = toImage(picture, 0, 0, picture.size);
        require(heif_context_encode_image(context.get(), image.get(), encoder.get(), nullptr, nullptr));
    } else {
        const std::int64_t side = setting.tile;
        const std::int64_t columns = (picture.size.width + side - 1) / side;
        const std::int64_t rows = (picture.size.height + side - 1) / side;
        heif_image_handle* grid = nullptr;
        const heif_error error = heif::addGrid(context.get(), picture.size, columns, rows, &grid);
        const heif::Handle owner(grid);
        require(error);
        for (std::int64_t i = 0; i < columns * rows; ++i) {
            const std::int64_t column = i % columns;
            const std::int64_t row = i / columns;
            const heif::Image image = toImage(picture, column * side, row * side, {side, side});
            require(heif::addTile(context.get(), grid, column, row, image.get(), encoder.get()));
        }
    }
    std::vector<std::byte> bytes;
    heif_writer writer{1, append};
    require(heif_context_write(context.get(), &writer, &bytes));
    return bytes;
}

double fidelity(const Picture& picture, const std::vector<std::byte>& bytes)
{
    const int descriptor = ::memfd_create("heic", MFD_CLOEXEC);
    if (::write(descriptor, bytes.data(), bytes.size()) != ssize_t(bytes.size()))
        throw std::string("cannot be kept in memory");
    const ByteSource source(descriptor, std::int64_t(bytes.size()));
    const auto decoder = openHeifDecoder(source, {});
    const auto rowBytes = std::size_t(picture.size.width * 3);
    std::vector<std::byte> row(rowBytes);
    double squares = 0;
    for (std::int64_t y = 0; y < picture.size.height; ++y) {
        decoder->readRows(1, row.data(), rowBytes);
        const std::byte* original = picture.rgb.data() + std::size_t(y) * rowBytes;
        for (std::size_t i = 0; i < rowBytes; ++i) {
            const int difference = std::to_integer<int>(row[i]) - std::to_integer<int>(original[i]);
            squares += difference * difference;
        }
    }
    ::close(descriptor);
    return 10 * std::log10(255.0 * 255.0 * double(picture.rgb.size()) / squares);
}

double seconds(const timeval& time)
{
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

void measure(const Picture& picture, const Setting& setting, Figures& figures)
{
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::byte> bytes = encode(picture, setting);
    figures.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    figures.processorSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    // The picture itself, which the child shares with its parent, is not the encoder's.
    figures.peakMegabytes = (double(usage.ru_maxrss) * 1024 - double(picture.rgb.size())) / 1e6;
    figures.bytes = bytes.size();
    figures.fidelity = fidelity(picture, bytes);
    figures.isValid = true;
}

Figures measureApart(const Picture& picture, const Setting& setting)
{
    void* memory = ::mmap(nullptr, sizeof(Figures), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::string("cannot be measured");
    auto* shared = new (memory) Figures;
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            measure(picture, setting, *shared);
        } catch (...) {
        }
        std::_Exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    const Figures figures = *shared;
    ::munmap(memory, sizeof(Figures));
    return figures;
}

void print(const Picture& picture, const Setting& setting)
{
    const Figures figures = measureApart(picture, setting);
    std::printf("%-8s %-10s %5lld %6d  %s  %-5s ", setting.encoder, setting.preset,
                static_cast<long long>(setting.tile), setting.quality, setting.chroma, setting.pools);
    if (figures.isValid)
        std::printf("%8.2f %8.2f %9zu %7.2f %7.0f\n", figures.wallSeconds, figures.processorSeconds, figures.bytes,
                    figures.fidelity, figures.peakMegabytes);
    else
        std::puts("failed, or not here");
    std::fflush(stdout);
}

void compare(const char* path)
{
    const Picture picture = load(path);
    const std::string name(path);
    std::printf("\n%s: %lld x %lld\n", name.substr(name.rfind('/') + 1).c_str(),
                static_cast<long long>(picture.size.width), static_cast<long long>(picture.size.height));
    std::puts("encoder  preset      tile quality chroma pools wall s    cpu s     bytes  psnr dB  peak MB");
    for (const int quality : {50, 90})
        for (const char* preset : {"ultrafast", "superfast", "veryfast", "faster", "fast", "medium", "slow"})
            print(picture, {preset, quality, "420", "1"});
    for (const char* pools : {"none", "1", "2", "*"})
        print(picture, {"ultrafast", 90, "420", pools});
    print(picture, {"ultrafast", 90, "444", "1"});
    for (const int quality : {50, 90}) {
        for (const std::int64_t tile : {512, 1024}) {
            for (const char* pools : {"1", "2"})
                print(picture, {"ultrafast", quality, "420", pools, tile});
            print(picture, {"", quality, "420", "", tile, "kvazaar"});
        }
        print(picture, {"", quality, "420", "", 0, "kvazaar"});
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    for (int i = 1; i < argumentCount; ++i) {
        try {
            compare(arguments[i]);
        } catch (const std::string& error) {
            std::printf("%s %s\n", arguments[i], error.c_str());
        } catch (const CodecError&) {
            std::printf("%s cannot be decoded\n", arguments[i]);
        } catch (const InputOutputError&) {
            std::printf("%s cannot be read\n", arguments[i]);
        }
    }
    return argumentCount > 1 ? 0 : 2;
}
