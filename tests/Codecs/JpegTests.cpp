// SPDX-License-Identifier: GPL-3.0-or-later
#include "Codecs/JpegFiles.h"

namespace ferrow {

namespace {

using namespace test;

constexpr PixelSize testSize{101, 67};

const auto decode = [](const QByteArray& file, Tolerance tolerance = Tolerance::strict, std::int64_t enough = 0) {
    return decodeAs(FileType::jpeg, file, tolerance, enough);
};

QByteArray colorFile(const Adjust& adjust, PixelSize size = testSize)
{
    return libraryFile(adjust, size, JCS_RGB, 3, picture(size, 3));
}

/// Offset of the first marker of this code.
qsizetype markerAt(const QByteArray& file, int code)
{
    return file.indexOf(QByteArray("\xff", 1) + char(code));
}

} // namespace

TEST(JpegDecoder, equalsAnotherReaderAndGivesNoHalfPictures)
{
    static const jpeg_scan_info apart[] = {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const std::pair<const char*, Adjust> rows[]{
        {"baseline", baseline},
        {"odd sampling", [](auto& c) { c.comp_info[0].h_samp_factor = 1, c.comp_info[0].v_samp_factor = 4; }},
        {"restart markers", [](auto& c) { c.restart_interval = 3; }},
        {"RGB", [](auto& c) { jpeg_set_colorspace(&c, JCS_RGB); }},
        {"progressive", progressive},
        {"progressive arithmetic", [](auto& c) { c.arith_code = TRUE, jpeg_simple_progression(&c); }},
        {"a scan for each component", [](auto& c) { c.scan_info = apart, c.num_scans = 3; }},
    };
    for (const auto& [name, adjust] : rows) {
        SCOPED_TRACE(name);
        const QByteArray file = colorFile(adjust);
        const Decoded decoded = decode(file);
        EXPECT_EQ(decoded.format, rgb8);
        expectWhatQtReads(decoded, file);
        expectNoHalfPictures(FileType::jpeg, file);
    }
    EXPECT_EQ(decode(colorFile(baseline)).heldBytes, 0);
    // 13 x 9 blocks of luma, 7 x 5 of each chroma, 64 coefficients of two bytes.
    EXPECT_EQ(decode(colorFile(progressive)).heldBytes, (13 * 9 + 2 * 7 * 5) * 128);
}

TEST(JpegDecoder, readsGrayAndCountsInkFromNone)
{
    const QByteArray gray = libraryFile(baseline, testSize, JCS_GRAYSCALE, 1, picture(testSize, 1));
    EXPECT_EQ(decode(gray).format, (PixelFormat{ColorModel::gray, 8, Alpha::none}));
    expectWhatQtReads(decode(gray), gray);
    for (const bool adobe : {true, false}) {
        const Adjust adjust = [adobe](auto& codec) { codec.write_Adobe_marker = adobe; };
        const Decoded decoded = decode(libraryFile(adjust, {16, 8}, JCS_CMYK, 4, Pixels(16 * 8 * 4, 200)));
        EXPECT_EQ(decoded.format.model, ColorModel::cmyk);
        EXPECT_LE(worstDifference(decoded.pixels, Pixels(16 * 8 * 4, adobe ? 55 : 200)), 1) << adobe;
    }
}

TEST(JpegDecoder, reducesToTheSmallestSizeThatIsEnough)
{
    constexpr PixelSize size{200, 117};
    const QByteArray file = colorFile(baseline, size);
    const auto sizeFor = [&](int enough) { return decode(file, Tolerance::strict, enough).size; };
    EXPECT_EQ(sizeFor(0), size);
    EXPECT_EQ(sizeFor(101), size);
    EXPECT_EQ(sizeFor(100), (PixelSize{100, 59}));
    EXPECT_EQ(sizeFor(51), (PixelSize{100, 59}));
    EXPECT_EQ(sizeFor(1), (PixelSize{25, 15}));
    EXPECT_EQ(decode(file, Tolerance::strict, 1).storedSize, size);
}

TEST(JpegDecoder, joinsAProfileFromItsSegments)
{
    EncodeOptions options = optionsFor(testSize);
    options.profile = longProfile();
    const QByteArray file = encode(OutputType::jpeg, options, picture(testSize, 3));
    const auto part = [&](int number) {
        const qsizetype name = file.indexOf(QByteArrayLiteral("ICC_PROFILE\0") + char(number));
        return file.mid(name - 4, (quint8(file[name - 2]) << 8 | quint8(file[name - 1])) + 2);
    };
    const QByteArray parts = part(1) + part(2) + part(3);
    const auto expect = [&](const char* name, const QByteArray& by, bool isFound, int before = 0xdb) {
        QByteArray changed = QByteArray(file).replace(parts, {});
        changed.insert(markerAt(changed, before), by);
        EXPECT_EQ(decode(changed).error, std::nullopt) << name;
        EXPECT_EQ(decode(changed).profile, isFound ? options.profile : ColorProfile()) << name;
    };
    expect("other order", part(3) + part(1) + part(2), true);
    expect("one part twice", parts + part(2), true);
    expect("behind the frame header", parts, true, 0xc4);
    expect("a part missing", part(1) + part(3), false);
    expect("a number beyond the count", withByte(part(1), 16, 9) + part(2) + part(3), false);
}

TEST(JpegDecoder, namesWhatItCannotDecode)
{
    const QByteArray file = colorFile(baseline);
    const qsizetype frame = markerAt(file, 0xc0);
    const auto withHeight = [&](int high, int low) {
        return withByte(withByte(file, frame + 5, high), frame + 6, low);
    };
    EXPECT_EQ(decode(withByte(file, frame + 4, 12)).error, unsupported("12-bit JPEG"));
    EXPECT_EQ(decode(withByte(file, frame + 1, 0xc3)).error, unsupported("Lossless JPEG"));
    EXPECT_EQ(decode(libraryFile(baseline, {8, 8}, JCS_UNKNOWN, 2, Pixels(128))).error, unsupported("2-channel JPEG"));
    EXPECT_EQ(decode(withHeight(0, 0)).error, malformed);
    EXPECT_EQ(decode(file.left(markerAt(file, 0xda))).error, malformed);
    EXPECT_EQ(decode({}).error, malformed);
    const Decoded huge = decode(withHeight(0xff, 0xff));
    EXPECT_EQ(huge.storedSize, (PixelSize{testSize.width, 65'535}));
    EXPECT_EQ(huge.error, tooLarge);
}

TEST(JpegDecoder, tellsLostPixelsFromOddFiles)
{
    const QByteArray file = colorFile([](auto& codec) { codec.restart_interval = 7; });
    const Pixels whole = decode(file).pixels;
    const qsizetype scan = markerAt(file, 0xda);
    const qsizetype restart = markerAt(file, 0xd1);
    const auto expectWhole = [&](const char* name, const QByteArray& changed) {
        EXPECT_EQ(decode(changed).error, std::nullopt) << name;
        EXPECT_EQ(decode(changed).pixels, whole) << name;
    };
    expectWhole("junk between segments", QByteArray(file).insert(2, 16, '\0'));
    expectWhole("junk behind the end", file + QByteArray(200'000, '\x7f'));
    expectWhole("no end marker", file.chopped(2));
    expectWhole("spectral selection of nothing", withByte(file, scan + 12, 0));
    // A restart marker gone, one too many, and a segment emptied.
    EXPECT_EQ(decode(QByteArray(file).remove(restart, 2)).error, damaged);
    EXPECT_EQ(decode(QByteArray(file).insert(restart, QByteArray("\xff\xd1", 2))).error, damaged);
    EXPECT_EQ(decode(QByteArray(file).remove(scan + 14, markerAt(file, 0xd0) - scan - 14)).error, damaged);
}

TEST(JpegDecoder, findsDamageThatTheLibraryPassesOver)
{
    const QByteArray file = colorFile(baseline, {200, 117});
    const qsizetype coded = markerAt(file, 0xda) + 14;
    // Sixteen ones in a row are no code; near the start much of the file is at hand, near the end little.
    for (qsizetype at = coded; at < file.size() - 16; at += 97)
        EXPECT_EQ(decode(QByteArray(file).replace(at, 6, QByteArray("\xff\0\xff\0\xff\0", 6))).error, damaged) << at;
    // Each of these leaves codes that no row has used.
    const QByteArray restarting = colorFile([](auto& codec) { codec.restart_interval = 7; });
    const std::pair<const char*, QByteArray> rows[]{
        {"some coded twice", QByteArray(file).insert(coded + 1000, file.mid(coded + 1000, 512))},
        {"an interval coded twice",
         QByteArray(restarting).insert(markerAt(restarting, 0xd1), QByteArray(restarting).mid(coded, 40))},
        {"an interval too many", QByteArray(restarting).insert(restarting.size() - 2, QByteArray("\xff\xd4\x12", 3))},
    };
    for (const auto& [name, changed] : rows) {
        EXPECT_EQ(decode(changed).error, damaged) << name;
        EXPECT_EQ(decode(changed, Tolerance::tolerant).error, std::nullopt) << name;
    }
    EXPECT_EQ(decode(QByteArray(file).insert(file.size() - 2, QByteArray("\0\xff\0\xff\xff", 5))).error, std::nullopt);
}

TEST(JpegDecoder, showsWhatIsThereWhenTolerant)
{
    const QByteArray file = colorFile(baseline);
    const Pixels whole = decode(file).pixels;
    const Decoded half = decode(file.left(file.size() * 3 / 4), Tolerance::tolerant);
    EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + testSize.width * 3 * 22, half.pixels.begin()));
    EXPECT_NE(half.pixels, whole);
    EXPECT_NE(decode(file.left(markerAt(file, 0xda) + 14), Tolerance::tolerant).error, std::nullopt);

    // Cut amid the tables before the last scan: what the earlier scans gave is still a picture.
    const QByteArray scans = colorFile(progressive);
    const QByteArray cut = scans.left(scans.lastIndexOf(QByteArray("\xff\xc4", 2)) + 6);
    EXPECT_NE(decode(cut).error, std::nullopt);
    EXPECT_LE(worstDifference(decode(cut, Tolerance::tolerant).pixels, decode(scans).pixels), 40);
}

TEST(JpegDecoder, boundsTheNumberOfScans)
{
    // A gray picture with a single scan, that of the mean values, over and over.
    static const jpeg_scan_info means[] = {{1, {0}, 0, 0, 0, 0}};
    const Adjust adjust = [](auto& codec) { codec.scan_info = means, codec.num_scans = 1; };
    const QByteArray once = libraryFile(adjust, {16, 16}, JCS_GRAYSCALE, 1, picture({16, 16}, 1));
    const qsizetype scanAt = markerAt(once, 0xda);
    const QByteArray scan = once.mid(scanAt).chopped(2);
    EXPECT_EQ(decode(QByteArray(once).insert(scanAt, scan.repeated(59))).error, std::nullopt);
    EXPECT_EQ(decode(QByteArray(once).insert(scanAt, scan.repeated(600))).error, malformed);
}

TEST(JpegEncoder, keepsChromaWholeFromNineTenthsOn)
{
    for (const auto& [quality, sampling] : {std::pair(1.0, 0x11), {0.9, 0x11}, {0.899, 0x22}, {0.0, 0x22}}) {
        EncodeOptions options = optionsFor(testSize);
        options.quality = quality;
        const QByteArray file = encode(OutputType::jpeg, options, picture(testSize, 3));
        EXPECT_EQ(quint8(file[markerAt(file, 0xc0) + 11]), sampling) << quality;
    }
}

} // namespace ferrow
