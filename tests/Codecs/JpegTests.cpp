// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/CodecTesting.h"

#include <exiv2/exiv2.hpp>

#include <cstdio>
#include <functional>

#include <jpeglib.h>

namespace ferrow {

namespace {

using namespace test;
using Reason = CodecError::Reason;

constexpr PixelSize testSize{101, 67};

/// A file straight from the library, with whatever `adjust` sets between the defaults and the first row.
QByteArray libraryFile(PixelSize size, J_COLOR_SPACE space, int channels, const Pixels& pixels,
                       const std::function<void(jpeg_compress_struct&)>& adjust)
{
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&codec, &bytes, &length);
    codec.image_width = JDIMENSION(size.width);
    codec.image_height = JDIMENSION(size.height);
    codec.input_components = channels;
    codec.in_color_space = space;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, 95, TRUE);
    adjust(codec);
    jpeg_start_compress(&codec, TRUE);
    for (std::int64_t y = 0; y < size.height; ++y) {
        auto* row = const_cast<JSAMPROW>(pixels.data() + std::size_t(y * size.width * channels));
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    QByteArray file(reinterpret_cast<const char*>(bytes), qsizetype(length));
    std::free(bytes);
    return file;
}

QByteArray colourFile(const std::function<void(jpeg_compress_struct&)>& adjust)
{
    return libraryFile(testSize, JCS_RGB, 3, picture(testSize, 3), adjust);
}

/// The library's own plain loop.
Pixels libraryPixels(const QByteArray& file)
{
    jpeg_decompress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(file.constData()), (unsigned long)(file.size()));
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    const std::size_t rowBytes = codec.output_width * std::size_t(codec.output_components);
    Pixels pixels(rowBytes * codec.output_height);
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = pixels.data() + rowBytes * codec.output_scanline;
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_destroy_decompress(&codec);
    return pixels;
}

/// Offset of the first marker of this code.
qsizetype markerAt(const QByteArray& file, int code)
{
    return file.indexOf(QByteArray("\xff", 1) + char(code));
}

QByteArray withByte(QByteArray file, qsizetype at, int value)
{
    file[at] = char(value);
    return file;
}

/// A grey picture with a single scan, that of the mean values.
QByteArray oneScan()
{
    static const jpeg_scan_info dcOnly[] = {{1, {0}, 0, 0, 0, 0}};
    const PixelSize size{16, 16};
    return libraryFile(size, JCS_GRAYSCALE, 1, picture(size, 1), [](jpeg_compress_struct& codec) {
        codec.scan_info = dcOnly;
        codec.num_scans = 1;
    });
}

struct Kind {
    const char* name;
    std::function<void(jpeg_compress_struct&)> adjust;
};

std::vector<Kind> kinds()
{
    static const jpeg_scan_info apart[] = {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    return {
        {"baseline", [](auto&) {}},
        {"odd sampling",
         [](auto& codec) {
             codec.comp_info[0].h_samp_factor = 1;
             codec.comp_info[0].v_samp_factor = 4;
         }},
        {"restart markers", [](auto& codec) { codec.restart_interval = 3; }},
        {"RGB", [](auto& codec) { jpeg_set_colorspace(&codec, JCS_RGB); }},
        {"progressive", [](auto& codec) { jpeg_simple_progression(&codec); }},
        {"arithmetic", [](auto& codec) { codec.arith_code = TRUE; }},
        {"progressive arithmetic",
         [](auto& codec) {
             codec.arith_code = TRUE;
             jpeg_simple_progression(&codec);
         }},
        {"a scan for each component",
         [](auto& codec) {
             codec.scan_info = apart;
             codec.num_scans = 3;
         }},
    };
}

} // namespace

TEST(JpegDecoder, equalsThePlainLoopAndGivesNoHalfPictures)
{
    for (const Kind& kind : kinds()) {
        SCOPED_TRACE(kind.name);
        const QByteArray file = colourFile(kind.adjust);
        const Decoded decoded = decode(FileType::jpeg, file);
        ASSERT_TRUE(decoded.isWhole());
        EXPECT_EQ(decoded.size, testSize);
        EXPECT_EQ(decoded.format, rgb8);
        EXPECT_EQ(decoded.pixels, libraryPixels(file));
        expectNoHalfPictures(FileType::jpeg, file);
    }
    const QByteArray grey = libraryFile(testSize, JCS_GRAYSCALE, 1, picture(testSize, 1), [](auto&) {});
    EXPECT_EQ(decode(FileType::jpeg, grey).format, (PixelFormat{ColorModel::gray, 8, Alpha::none}));
    EXPECT_EQ(decode(FileType::jpeg, grey).pixels, libraryPixels(grey));
}

TEST(JpegDecoder, countsInkFromNone)
{
    const PixelSize size{16, 8};
    const Pixels stored(16 * 8 * 4, 200);
    for (const bool adobe : {true, false}) {
        SCOPED_TRACE(adobe);
        const QByteArray file =
            libraryFile(size, JCS_CMYK, 4, stored, [adobe](auto& codec) { codec.write_Adobe_marker = adobe; });
        const Decoded decoded = decode(FileType::jpeg, file);
        EXPECT_EQ(decoded.format.model, ColorModel::cmyk);
        EXPECT_LE(worstDifference(decoded.pixels, Pixels(stored.size(), adobe ? 55 : 200)), 1);
    }
}

TEST(JpegDecoder, reducesToTheSmallestSizeThatIsEnough)
{
    const PixelSize size{200, 117};
    const QByteArray file = libraryFile(size, JCS_RGB, 3, picture(size, 3), [](auto&) {});
    const struct {
        std::int64_t enough;
        PixelSize expected;
    } rows[] = {{0, size},        {1000, size},    {200, size},    {101, size},
                {100, {100, 59}}, {51, {100, 59}}, {50, {50, 30}}, {1, {25, 15}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.enough);
        const Decoded decoded = decode(FileType::jpeg, file, {row.enough, Tolerance::strict});
        EXPECT_EQ(decoded.storedSize, size);
        EXPECT_EQ(decoded.size, row.expected);
        EXPECT_EQ(decoded.pixels.size(), std::size_t(row.expected.width * row.expected.height * 3));
    }
}

TEST(JpegDecoder, holdsCoefficientsOfSeveralScansOnly)
{
    const std::vector<Kind> all = kinds();
    EXPECT_EQ(decode(FileType::jpeg, colourFile(all[0].adjust)).heldBytes, 0);
    // 13 x 9 blocks of luma, 7 x 5 of each chroma, 64 coefficients of two bytes.
    EXPECT_EQ(decode(FileType::jpeg, colourFile(all[4].adjust)).heldBytes, (13 * 9 + 2 * 7 * 5) * 128);
}

TEST(JpegDecoder, joinsAProfileFromItsSegments)
{
    EncodeOptions options;
    options.size = testSize;
    options.profile = longProfile();
    const QByteArray file = encode(OutputType::jpeg, options, picture(testSize, 3));
    EXPECT_EQ(decode(FileType::jpeg, file).profile, options.profile);

    const auto part = [&](int number) {
        const qsizetype name = file.indexOf(QByteArrayLiteral("ICC_PROFILE\0") + char(number));
        const qsizetype length = quint8(file[name - 2]) << 8 | quint8(file[name - 1]);
        return file.mid(name - 4, length + 2);
    };
    const QByteArray parts = part(1) + part(2) + part(3);
    ASSERT_TRUE(file.contains(parts));
    const auto replaced = [&](const QByteArray& by) { return QByteArray(file).replace(parts, by); };
    const QByteArray bare = replaced({});
    const qsizetype behindFrame = markerAt(bare, 0xc4);
    const struct {
        const char* name;
        QByteArray file;
        bool isFound;
    } rows[] = {
        {"other order", replaced(part(3) + part(1) + part(2)), true},
        {"one part twice", replaced(parts + part(2)), true},
        {"behind the frame header", QByteArray(bare).insert(behindFrame, parts), true},
        {"a part missing", replaced(part(1) + part(3)), false},
        {"counts that differ", replaced(withByte(part(1), 17, 4) + part(2) + part(3)), false},
        {"a number beyond the count", replaced(withByte(part(1), 16, 9) + part(2) + part(3)), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Decoded decoded = decode(FileType::jpeg, row.file);
        EXPECT_TRUE(decoded.isWhole());
        EXPECT_EQ(decoded.profile, row.isFound ? options.profile : ColorProfile());
    }
}

TEST(JpegDecoder, namesWhatItCannotDecode)
{
    const QByteArray file = colourFile([](auto&) {});
    const qsizetype frame = markerAt(file, 0xc0);
    const PixelSize two{8, 8};
    const struct {
        const char* name;
        QByteArray file;
        CodecError expected;
    } rows[] = {
        {"12 bits", withByte(file, frame + 4, 12), {Reason::unsupported, QStringLiteral("12-bit JPEG")}},
        {"lossless", withByte(file, frame + 1, 0xc3), {Reason::unsupported, QStringLiteral("Lossless JPEG")}},
        {"hierarchical", withByte(file, frame + 1, 0xc5), {Reason::unsupported, QStringLiteral("Hierarchical JPEG")}},
        {"two components",
         libraryFile(two, JCS_UNKNOWN, 2, picture(two, 2), [](auto&) {}),
         {Reason::unsupported, QStringLiteral("2-channel JPEG")}},
        {"no height", withByte(withByte(file, frame + 5, 0), frame + 6, 0), {Reason::malformed, {}}},
        {"no scan", file.left(markerAt(file, 0xda)), {Reason::malformed, {}}},
        {"nothing", QByteArray(), {Reason::malformed, {}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(decode(FileType::jpeg, row.file).error, row.expected);
    }
    const Decoded huge = decode(FileType::jpeg, withByte(withByte(file, frame + 5, 0xff), frame + 6, 0xff));
    EXPECT_EQ(huge.storedSize, (PixelSize{testSize.width, 65'535}));
    EXPECT_EQ(huge.error, (CodecError{Reason::tooLarge, {}}));
}

TEST(JpegDecoder, tellsLostPixelsFromOddFiles)
{
    const QByteArray file = colourFile([](auto& codec) { codec.restart_interval = 7; });
    const Decoded whole = decode(FileType::jpeg, file);
    const qsizetype scan = markerAt(file, 0xda);
    const qsizetype restart = markerAt(file, 0xd1);
    const struct {
        const char* name;
        QByteArray file;
        bool isWhole;
    } rows[] = {
        {"junk between segments", QByteArray(file).insert(2, 16, '\0'), true},
        {"junk behind the end", file + QByteArray(200'000, '\x7f'), true},
        {"no end marker", file.chopped(2), true},
        {"spectral selection of nothing", withByte(file, scan + 12, 0), true},
        {"a restart marker gone", QByteArray(file).remove(restart, 2), false},
        {"a restart marker too many", QByteArray(file).insert(restart, QByteArray("\xff\xd1", 2)), false},
        {"a segment emptied", QByteArray(file).remove(scan + 14, markerAt(file, 0xd0) - scan - 14), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Decoded strict = decode(FileType::jpeg, row.file);
        EXPECT_EQ(strict.error, row.isWhole ? std::nullopt : std::optional(CodecError{Reason::damaged, {}}));
        if (row.isWhole) {
            EXPECT_EQ(strict.pixels, whole.pixels);
        }
    }
}

TEST(JpegDecoder, showsWhatIsThereWhenTolerant)
{
    const DecodeOptions tolerant{0, Tolerance::tolerant};
    const QByteArray file = colourFile([](auto&) {});
    const Pixels whole = libraryPixels(file);
    const Decoded half = decode(FileType::jpeg, file.left(file.size() * 3 / 4), tolerant);
    ASSERT_TRUE(half.isWhole());
    const auto upperThird = std::ptrdiff_t(testSize.width * 3 * (testSize.height / 3));
    EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + upperThird, half.pixels.begin()));
    EXPECT_NE(half.pixels, whole);
    EXPECT_FALSE(decode(FileType::jpeg, file.left(markerAt(file, 0xda) + 14), tolerant).isWhole());

    // Cut amid the tables before the last scan: what the earlier scans gave is still a picture.
    const QByteArray progressive = colourFile(kinds()[4].adjust);
    const qsizetype lastTable = progressive.lastIndexOf(QByteArray("\xff\xc4", 2));
    const QByteArray cut = progressive.left(lastTable + 6);
    EXPECT_FALSE(decode(FileType::jpeg, cut).isWhole());
    const Decoded shown = decode(FileType::jpeg, cut, tolerant);
    EXPECT_TRUE(shown.isWhole());
    EXPECT_LE(worstDifference(shown.pixels, libraryPixels(progressive)), 40);
}

TEST(JpegDecoder, boundsTheNumberOfScans)
{
    const QByteArray once = oneScan();
    const qsizetype scanAt = markerAt(once, 0xda);
    const QByteArray scan = once.mid(scanAt).chopped(2);
    EXPECT_TRUE(decode(FileType::jpeg, QByteArray(once).insert(scanAt, scan.repeated(59))).isWhole());
    EXPECT_EQ(decode(FileType::jpeg, QByteArray(once).insert(scanAt, scan.repeated(600))).error,
              (CodecError{Reason::malformed, {}}));
}

TEST(JpegEncoder, writesTheNamedSegmentsAndSampling)
{
    EncodeOptions options;
    options.size = testSize;
    options.profile = ColorProfile::displayP3();
    options.metadata = someMetadata();
    const Pixels pixels = picture(testSize, 3);
    const struct {
        double quality;
        int sampling;
        int setting;
    } rows[] = {{1, 0x11, 100}, {0.9, 0x11, 90}, {0.899, 0x22, 90}, {0.5, 0x22, 50}, {0, 0x22, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.quality);
        options.quality = row.quality;
        const QByteArray file = encode(OutputType::jpeg, options, pixels);
        std::vector<int> markers;
        for (qsizetype at = 2; markers.empty() || markers.back() != 0xda;
             at += 2 + (quint8(file[at + 2]) << 8 | quint8(file[at + 3])))
            markers.push_back(quint8(file[at + 1]));
        EXPECT_EQ(markers, (std::vector{0xe1, 0xe2, 0xdb, 0xdb, 0xc0, 0xc4, 0xc4, 0xc4, 0xc4, 0xda}));
        EXPECT_EQ(quint8(file[markerAt(file, 0xc0) + 11]), row.sampling);
        const QByteArray reference = colourFile([&](auto& codec) { jpeg_set_quality(&codec, row.setting, TRUE); });
        EXPECT_EQ(file.mid(markerAt(file, 0xdb), 69), reference.mid(markerAt(reference, 0xdb), 69));
        const Decoded decoded = decode(FileType::jpeg, file);
        EXPECT_EQ(decoded.profile, options.profile);
        if (row.quality == 1) {
            EXPECT_LE(worstDifference(decoded.pixels, pixels), 6);
        }
    }
}

TEST(JpegEncoder, reportsWhyWritingFailed)
{
    const int full = ::open("/dev/full", O_RDWR | O_CLOEXEC);
    ByteSink sink(full);
    EncodeOptions options;
    options.size = {600, 600};
    options.quality = 1;
    try {
        const auto encoder = openEncoder(OutputType::jpeg, sink, options);
        encoder->writeRows(600, reinterpret_cast<const std::byte*>(picture(options.size, 3).data()), 1800);
        encoder->finish();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const EncoderError& error) {
        EXPECT_EQ(error.errorNumber, ENOSPC);
    }
    ::close(full);
}

TEST(ExifBlock, isReadBackByAnotherReader)
{
    EncodeOptions options;
    options.size = testSize;
    options.profile = ColorProfile::sRGB();
    options.metadata = someMetadata();
    options.metadata.model = QStringLiteral("Modell\0 7");
    options.metadata.copyright = QString(20'000, QChar(u'é'));
    for (const OutputType type : {OutputType::jpeg, OutputType::png}) {
        SCOPED_TRACE(int(type));
        const QByteArray file = encode(type, options, picture(testSize, 3));
        const auto image =
            Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(file.constData()), long(file.size()));
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        const auto text = [&](const char* key) { return exif[key].toString(); };
        EXPECT_EQ(exif.count(), 17);
        EXPECT_EQ(text("Exif.Image.Make"), "Fabrikat");
        EXPECT_EQ(text("Exif.Image.Model"), "Modell");
        EXPECT_EQ(text("Exif.Image.Artist"), "Jón Þór");
        EXPECT_EQ(text("Exif.Image.Copyright"), QString(6000, QChar(u'é')).toStdString());
        EXPECT_EQ(text("Exif.Image.Orientation"), "1");
        EXPECT_EQ(text("Exif.Photo.DateTimeOriginal"), "2024:07:19 09:14:31");
        EXPECT_EQ(text("Exif.Photo.ColorSpace"), "1");
        EXPECT_EQ(text("Exif.Photo.PixelXDimension"), "101");
        EXPECT_EQ(text("Exif.Photo.PixelYDimension"), "67");
    }
}

} // namespace ferrow
