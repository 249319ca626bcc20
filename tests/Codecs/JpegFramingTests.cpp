// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/JpegFraming.h"

#include "Codecs/JpegFiles.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ferrow {

namespace {

using namespace test;

constexpr std::array<int, 3> borderColor{200, 60, 20};

/// A frame of one color, and over the photo whatever `over` says of its alpha, in the same color.
struct Frame {
    PixelSize canvas;
    PhotoPlace photo;
    std::array<int, 3> color = borderColor;
    std::function<int(std::int64_t x, std::int64_t y)> over = [](auto, auto) { return 0; };

    [[nodiscard]] bool holds(std::int64_t x, std::int64_t y) const
    {
        return x >= photo.x && y >= photo.y && x < photo.x + photo.size.width && y < photo.y + photo.size.height;
    }
    [[nodiscard]] int alphaAt(std::int64_t x, std::int64_t y) const { return holds(x, y) ? over(x, y) : 255; }
};

BlockGrid gridOf(const QByteArray& file, int orientation = 1)
{
    const MemoryFile source(file);
    const ByteSource bytes(source.descriptor(), source.size());
    return openDecoder(FileType::jpeg, bytes, {})->blockGrid(orientation).value();
}

/// A border of about 40 pixels on the left and the top, and 21 and 5 beyond.
Frame frameFor(PixelSize upright, const BlockGrid& grid)
{
    const PhotoPlace place{40 / grid.width * grid.width + grid.x, 40 / grid.height * grid.height + grid.y, upright};
    return {{place.x + upright.width + 21, place.y + upright.height + 5}, place};
}

QByteArray framed(const QByteArray& file, const Frame& frame, int orientation = 1)
{
    const MemoryFile in(file);
    const MemoryFile out;
    const ByteSource source(in.descriptor(), in.size());
    ByteSink sink(out.descriptor());
    std::int64_t row = 0;
    JpegFraming::Cover cover;
    cover.columnsOverPhoto = [&](std::int64_t first, std::int64_t count) {
        std::pair<std::int64_t, std::int64_t> columns(frame.canvas.width, 0);
        for (std::int64_t y = first; y < first + count; ++y)
            for (std::int64_t x = 0; x < frame.canvas.width; ++x)
                if (frame.holds(x, y) && frame.over(x, y) > 0)
                    columns = {std::min(columns.first, x), std::max(columns.second, x + 1)};
        return columns;
    };
    cover.read = [&](std::int64_t count, std::byte* rows, std::size_t stride) {
        for (std::int64_t i = 0; i < count; ++i, ++row)
            for (std::int64_t x = 0; x < frame.canvas.width; ++x)
                if (const int alpha = frame.alphaAt(x, row); alpha > 0) {
                    std::byte* pixel = rows + std::size_t(i) * stride + std::size_t(x) * 4;
                    for (std::size_t c = 0; c < 3; ++c)
                        pixel[c] = std::byte(frame.color[c]);
                    pixel[3] = std::byte(alpha);
                }
    };
    JpegFraming(source, orientation).write(frame.photo, cover, sink, optionsFor(frame.canvas));
    return out.bytes();
}

/// The library's own view of a file: coefficients by component, and pixels without any smoothing of colors.
struct LibraryView {
    struct Component {
        int across = 1; ///< Pixels a block is wide.
        int down = 1;
        int columns = 0;
        std::vector<std::array<JCOEF, 64>> blocks;
    };
    PixelSize size;
    std::vector<Component> components;
    Pixels rgb;
};

LibraryView viewOf(QByteArray file)
{
    LibraryView view;
    for (const bool wantsPixels : {false, true}) {
        jpeg_decompress_struct codec{};
        jpeg_error_mgr errors{};
        codec.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&codec);
        jpeg_mem_src(&codec, reinterpret_cast<unsigned char*>(file.data()), (unsigned long)file.size());
        jpeg_read_header(&codec, TRUE);
        view.size = {codec.image_width, codec.image_height};
        if (wantsPixels) {
            codec.do_fancy_upsampling = FALSE;
            codec.out_color_space = JCS_RGB;
            jpeg_start_decompress(&codec);
            view.rgb.resize(std::size_t(view.size.width * view.size.height * 3));
            while (codec.output_scanline < codec.output_height) {
                JSAMPROW row = &view.rgb[std::size_t(codec.output_scanline) * std::size_t(view.size.width) * 3];
                jpeg_read_scanlines(&codec, &row, 1);
            }
        } else {
            jvirt_barray_ptr* arrays = jpeg_read_coefficients(&codec);
            for (int i = 0; i < codec.num_components; ++i) {
                const jpeg_component_info& info = codec.comp_info[i];
                LibraryView::Component component{8 * codec.max_h_samp_factor / info.h_samp_factor,
                                                 8 * codec.max_v_samp_factor / info.v_samp_factor,
                                                 int(info.width_in_blocks),
                                                 {}};
                for (JDIMENSION row = 0; row < info.height_in_blocks; ++row) {
                    const JBLOCKARRAY blocks =
                        codec.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&codec), arrays[i], row, 1, FALSE);
                    for (JDIMENSION column = 0; column < info.width_in_blocks; ++column)
                        component.blocks.push_back(std::to_array(blocks[0][column]));
                }
                view.components.push_back(component);
            }
        }
        jpeg_destroy_decompress(&codec);
    }
    return view;
}

/// The file with other numbers in its first block, coded arithmetically: that has codes for any.
QByteArray withCoefficients(QByteArray file, int dc, int ac)
{
    jpeg_decompress_struct in{};
    jpeg_compress_struct out{};
    jpeg_error_mgr errors{};
    in.err = out.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&in);
    jpeg_create_compress(&out);
    jpeg_mem_src(&in, reinterpret_cast<unsigned char*>(file.data()), (unsigned long)file.size());
    jpeg_read_header(&in, TRUE);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&in);
    JCOEF* block = in.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&in), arrays[0], 0, 1, TRUE)[0][0];
    block[0] = JCOEF(dc);
    block[1] = JCOEF(ac);
    jpeg_copy_critical_parameters(&in, &out);
    out.arith_code = TRUE;
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&out, &bytes, &length);
    jpeg_write_coefficients(&out, arrays);
    jpeg_finish_compress(&out);
    jpeg_destroy_compress(&out);
    jpeg_destroy_decompress(&in);
    const QByteArray result(reinterpret_cast<const char*>(bytes), qsizetype(length));
    std::free(bytes);
    return result;
}

/// Whether all pixels of that block are the photo's, and nothing lies over them.
bool isBare(const Frame& frame, std::int64_t left, std::int64_t top, std::int64_t width, std::int64_t height)
{
    for (std::int64_t y = top; y < top + height; ++y)
        for (std::int64_t x = left; x < left + width; ++x)
            if (frame.alphaAt(x, y) != 0)
                return false;
    return true;
}

/// That all blocks of `file` that nothing covers stand in `out` as they are, and how many those are.
int expectBareBlocksKept(const LibraryView& file, const LibraryView& out, const Frame& frame)
{
    int bare = 0;
    for (std::size_t c = 0; c < file.components.size(); ++c) {
        const LibraryView::Component& from = file.components[c];
        const LibraryView::Component& to = out.components[c];
        EXPECT_EQ(to.across, from.across);
        EXPECT_EQ(to.down, from.down);
        for (std::size_t i = 0; i < from.blocks.size(); ++i) {
            const std::int64_t left = frame.photo.x + std::int64_t(i) % from.columns * from.across;
            const std::int64_t top = frame.photo.y + std::int64_t(i) / from.columns * from.down;
            if (!isBare(frame, left, top, from.across, from.down))
                continue;
            ++bare;
            EXPECT_EQ(to.blocks[std::size_t(top / from.down * to.columns + left / from.across)], from.blocks[i])
                << "component " << c << ", block " << i;
        }
    }
    return bare;
}

/// The largest difference of the pixels that lie in MCUs without anything over them.
int worstBarePixel(const LibraryView& file, const LibraryView& out, const Frame& frame, const BlockGrid& grid)
{
    int worst = 0;
    for (std::int64_t y = 0; y < file.size.height; ++y)
        for (std::int64_t x = 0; x < file.size.width; ++x) {
            const std::int64_t left = frame.photo.x + x / grid.width * grid.width;
            const std::int64_t top = frame.photo.y + y / grid.height * grid.height;
            if (!isBare(frame, left, top, grid.width, grid.height))
                continue;
            const auto* from = &file.rgb[std::size_t((y * file.size.width + x) * 3)];
            const auto* to = &out.rgb[std::size_t(((frame.photo.y + y) * out.size.width + frame.photo.x + x) * 3)];
            for (int c = 0; c < 3; ++c)
                worst = std::max(worst, std::abs(from[c] - to[c]));
        }
    return worst;
}

std::vector<std::pair<const char*, QByteArray>> samples(PixelSize size)
{
    static const jpeg_scan_info apart[] = {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const auto color = [&](const Adjust& adjust) { return libraryFile(adjust, size, JCS_RGB, 3, picture(size, 3)); };
    return {
        {"4:2:0", color(baseline)},
        {"4:4:4", color(sampled(1, 1))},
        {"4:2:2", color(sampled(2, 1))},
        {"4:4:0", color(sampled(1, 2))},
        {"a unit of two", color([](auto& c) {
             for (int i = 0; i < 3; ++i)
                 c.comp_info[i].v_samp_factor = 2, c.comp_info[i].h_samp_factor = 1;
         })},
        {"RGB", color([](auto& c) { jpeg_set_colorspace(&c, JCS_RGB); })},
        {"tables for each", color([](auto& c) { c.comp_info[0].quant_tbl_no = 1, c.comp_info[2].quant_tbl_no = 0; })},
        {"restart markers", color([](auto& c) { c.restart_interval = 3; })},
        {"arithmetic", color([](auto& c) { c.arith_code = TRUE; })},
        {"progressive", color(progressive)},
        {"a scan for each component", color([](auto& c) { c.scan_info = apart, c.num_scans = 3; })},
        {"gray", libraryFile(sampled(2, 2), size, JCS_GRAYSCALE, 1, picture(size, 1))}};
}

} // namespace

TEST(JpegFraming, keepsEveryBlockThatNothingCovers)
{
    for (const PixelSize size : {PixelSize{96, 64}, PixelSize{101, 67}, PixelSize{5, 3}})
        for (const auto& [name, file] : samples(size)) {
            SCOPED_TRACE(std::string(name) + ' ' + std::to_string(size.width));
            const BlockGrid grid = gridOf(file);
            Frame frame = frameFor(size, grid);
            // A spot over some of the photo, half of it half transparent.
            frame.over = [&](std::int64_t x, std::int64_t y) {
                return x >= frame.photo.x + 50 && x < frame.photo.x + 61 && y > frame.photo.y + 20 ? x % 2 * 127 : 0;
            };
            const LibraryView before = viewOf(file);
            const LibraryView after = viewOf(framed(file, frame));
            ASSERT_EQ(after.size, frame.canvas);
            EXPECT_EQ(expectBareBlocksKept(before, after, frame) > 0, size.width > 16);
            EXPECT_EQ(worstBarePixel(before, after, frame, grid), 0);
        }
}

TEST(JpegFraming, codesFrameEdgeAndWhatLiesOverThePhoto)
{
    constexpr PixelSize size{101, 67};
    for (const auto& [name, file] : samples(size)) {
        SCOPED_TRACE(name);
        Frame frame = frameFor(size, gridOf(file));
        frame.over = [&](std::int64_t x, std::int64_t) { return x < frame.photo.x + 32 ? 128 : 0; };
        const LibraryView photo = viewOf(file);
        const LibraryView out = viewOf(framed(file, frame));
        const auto level = [](const LibraryView& view, std::int64_t x, std::int64_t y, std::size_t c) {
            return double(view.rgb[std::size_t((y * view.size.width + x) * 3) + c]);
        };
        double differences = 0;
        std::int64_t count = 0;
        for (std::int64_t y = 0; y < out.size.height; ++y)
            for (std::int64_t x = 0; x < out.size.width; ++x)
                for (std::size_t c = 0; c < 3; ++c) {
                    const double alpha = frame.alphaAt(x, y) / 255.0;
                    const double under = frame.holds(x, y) ? level(photo, x - frame.photo.x, y - frame.photo.y, c) : 0;
                    const double wanted = alpha * borderColor[c] + (1 - alpha) * under;
                    const double difference = std::abs(level(out, x, y, c) - wanted);
                    const bool isFrameAlone = x < frame.photo.x - 16 || y < frame.photo.y - 16;
                    EXPECT_LE(difference, isFrameAlone ? 3 : 255) << x << ", " << y; // Of quantization alone.
                    differences += difference;
                    ++count;
                }
        EXPECT_LT(differences / double(count), 4);
    }
}

TEST(JpegFraming, leavesWhiteAndBlackExact)
{
    constexpr PixelSize size{32, 32};
    for (const int quality : {5, 40, 95})
        for (const int level : {0, 255}) {
            const QByteArray file =
                libraryFile([&](auto& c) { jpeg_set_quality(&c, quality, TRUE); }, size, JCS_RGB, 3, picture(size, 3));
            Frame frame = frameFor(size, gridOf(file));
            frame.color = {level, level, level};
            const LibraryView out = viewOf(framed(file, frame));
            EXPECT_EQ(int(out.rgb.front()), level) << "quality " << quality;
            EXPECT_EQ(int(out.rgb.back()), level) << "quality " << quality;
        }
}

TEST(JpegFraming, turnsWhatIsCoded)
{
    constexpr PixelSize size{101, 67};
    for (const auto& [name, file] : samples(size)) {
        const LibraryView stored = viewOf(file);
        for (int orientation = 2; orientation <= 8; ++orientation) {
            SCOPED_TRACE(std::string(name) + ' ' + std::to_string(orientation));
            const BlockGrid grid = gridOf(file, orientation);
            const PixelSize upright = orientation >= 5 ? size.transposed() : size;
            const Frame frame = frameFor(upright, grid);
            const LibraryView out = viewOf(framed(file, frame, orientation));
            int worst = 0;
            // Away from the edges, whose blocks are coded anew.
            for (std::int64_t y = 16; y < upright.height - 16; ++y)
                for (std::int64_t x = 16; x < upright.width - 16; ++x) {
                    const std::int64_t right = upright.width - 1 - x;
                    const std::int64_t below = upright.height - 1 - y;
                    const std::array<std::pair<std::int64_t, std::int64_t>, 9> places{{{},
                                                                                       {},
                                                                                       {right, y},
                                                                                       {right, below},
                                                                                       {x, below},
                                                                                       {y, x},
                                                                                       {y, right},
                                                                                       {below, right},
                                                                                       {below, x}}};
                    const auto [fromX, fromY] = places[std::size_t(orientation)];
                    for (std::int64_t c = 0; c < 3; ++c)
                        worst = std::max(
                            worst, std::abs(int(stored.rgb[std::size_t((fromY * size.width + fromX) * 3 + c)]) -
                                            int(out.rgb[std::size_t(
                                                ((frame.photo.y + y) * out.size.width + frame.photo.x + x) * 3 + c)])));
                }
            EXPECT_LE(worst, 3) << "of rounding in the inverse transform";
        }
    }
}

TEST(JpegFraming, findsTheDamageThatDecodingFinds)
{
    constexpr PixelSize size{101, 67};
    for (const auto& [name, file] : samples(size)) {
        SCOPED_TRACE(name);
        const auto compare = [&](const QByteArray& bytes, qsizetype at) {
            const auto expected = decodeAs(FileType::jpeg, bytes).error;
            for (const int orientation : {1, 6}) {
                const PixelSize upright = orientation == 6 ? size.transposed() : size;
                bool isFound = false;
                try {
                    static_cast<void>(framed(bytes, frameFor(upright, gridOf(file, orientation)), orientation));
                } catch (const CodecError&) {
                    isFound = true;
                } catch (const CannotKeep&) {
                    continue; // Damage may make anything of numbers; the photo is decoded then.
                }
                EXPECT_EQ(isFound, expected.has_value()) << at << ", orientation " << orientation;
            }
        };
        for (qsizetype length = file.size() - 1; length > 0; length -= length > file.size() - 20 ? 1 : 97)
            compare(file.left(length), length);
        for (qsizetype at = file.size() / 3; at < file.size(); at += 101)
            compare(withByte(file, at, 0xff), at);
    }
}

TEST(JpegFraming, refusesWhatItCannotKeep)
{
    constexpr PixelSize size{64, 64};
    const QByteArray file = libraryFile(baseline, size, JCS_RGB, 3, picture(size, 3));
    Frame frame = frameFor(size, gridOf(file));
    frame.photo.x += 8;
    EXPECT_THROW(framed(file, frame), CannotKeep) << "off the grid";
    const auto gridFor = [&](const QByteArray& bytes) {
        const MemoryFile source(bytes);
        const ByteSource reader(source.descriptor(), source.size());
        return openDecoder(FileType::jpeg, reader, {})->blockGrid(1);
    };
    EXPECT_EQ(gridFor(libraryFile(baseline, size, JCS_CMYK, 4, picture(size, 4))), std::nullopt);
    const qsizetype header = file.indexOf("\xff\xc0");
    EXPECT_EQ(gridFor(withByte(withByte(file, header + 11, 0x31), header + 14, 0x21)), std::nullopt)
        << "three samples on two";
    for (const auto& [dc, ac] : {std::pair(1200, 0), {-1200, 0}, {0, 1024}, {0, -1024}}) {
        const QByteArray odd = withCoefficients(file, dc, ac);
        ASSERT_EQ(decodeAs(FileType::jpeg, odd).error, std::nullopt);
        EXPECT_THROW(framed(odd, frameFor(size, gridOf(odd))), CannotKeep) << dc << ", " << ac;
    }
}

} // namespace ferrow
