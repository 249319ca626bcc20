// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/PdfPage.h"

#include "Support/TestSupport.h"

#include <array>
#include <thread>
#include <vector>

namespace ferrow {
namespace {

using test::MemoryFile;

struct Page {
    QByteArray boxes = "/MediaBox [0 0 200 100]";
    QByteArray content = {};
    QByteArray annotation = {}; ///< The content of its appearance, over the whole page; none where empty.
};

QByteArray stream(const QByteArray& dictionary, const QByteArray& content)
{
    return "<<" + dictionary + " /Length " + QByteArray::number(content.size()) + ">>\nstream\n" + content +
           "\nendstream";
}

QByteArray makePdf(const Page& page)
{
    const QByteArray state = "/Resources << /ExtGState << /Half << /ca 0.5 >> >> >>";
    std::vector<QByteArray> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R " + page.boxes + state + " /Contents 4 0 R" +
            (page.annotation.isEmpty() ? QByteArray() : QByteArray(" /Annots [5 0 R]")) + " >>",
        stream({}, page.content),
    };
    if (!page.annotation.isEmpty()) {
        objects.push_back("<< /Type /Annot /Subtype /Stamp /Rect [0 0 200 100] /F 4 /AP << /N 6 0 R >> >>");
        objects.push_back(stream("/Type /XObject /Subtype /Form /BBox [0 0 200 100]", page.annotation));
    }
    QByteArray file = "%PDF-1.4\n";
    QByteArray table;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        table += QByteArray::number(file.size()).rightJustified(10, '0') + " 00000 n \n";
        file += QByteArray::number(qlonglong(i + 1)) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const QByteArray count = QByteArray::number(qlonglong(objects.size() + 1));
    const QByteArray start = QByteArray::number(file.size());
    return file + "xref\n0 " + count + "\n0000000000 65535 f \n" + table + "trailer << /Size " + count +
           " /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

Bitmap rasterise(const QByteArray& bytes, std::int64_t dimension)
{
    const MemoryFile file(bytes);
    return rasterisePdf(ByteSource(file.descriptor(), file.size()), dimension);
}

using Pixel = std::array<int, 4>;

Pixel pixelAt(const Bitmap& bitmap, std::int64_t x, std::int64_t y)
{
    Pixel pixel{};
    for (std::size_t i = 0; i < 4; ++i)
        pixel[i] = std::to_integer<int>(bitmap.row(y)[std::size_t(x) * 4 + i]);
    return pixel;
}

constexpr Pixel nothing{0, 0, 0, 0};
constexpr Pixel red{255, 0, 0, 255};
constexpr Pixel blue{0, 0, 255, 255};

TEST(PdfPage, drawsOnNothingWithPremultipliedAlpha)
{
    const Bitmap bitmap =
        rasterise(makePdf({.content = "1 0 0 rg 0 0 100 100 re f /Half gs 0 0 1 rg 100 50 100 50 re f"}), 400);
    ASSERT_EQ(bitmap.size(), (PixelSize{400, 200}));
    EXPECT_EQ(bitmap.format(), rgba8Premultiplied);
    EXPECT_EQ(pixelAt(bitmap, 50, 150), red);
    EXPECT_EQ(pixelAt(bitmap, 300, 150), nothing);
    const Pixel half = pixelAt(bitmap, 300, 50);
    EXPECT_EQ(half[0], 0);
    EXPECT_NEAR(half[3], 128, 1);
    EXPECT_EQ(half[2], half[3]);
}

TEST(PdfPage, fillsTheAskedSizeExactly)
{
    const struct {
        const char* name;
        const char* box;
        std::int64_t dimension;
        PixelSize size;
    } rows[] = {
        {"wide", "/MediaBox [0 0 300 200]", 1000, {1000, 667}},
        {"tall", "/MediaBox [0 0 200 300]", 100, {67, 100}},
        {"larger than its points", "/MediaBox [0 0 10 10]", 4000, {4000, 4000}},
        {"a line", "/MediaBox [0 0 10000 1]", 50, {50, 1}},
        {"one pixel", "/MediaBox [0 0 300 200]", 1, {1, 1}},
        {"turned by its own rotation", "/MediaBox [0 0 300 200] /Rotate 90", 900, {600, 900}},
        {"cropped", "/MediaBox [0 0 300 200] /CropBox [100 100 200 150]", 100, {100, 50}},
        {"huge page", "/MediaBox [0 0 1000000000 500000000]", 100, {100, 50}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(rasterise(makePdf({.boxes = row.box}), row.dimension).size(), row.size);
    }
}

TEST(PdfPage, showsTheCropBoxTurnedAsThePageSays)
{
    // The left half of the crop box is red, its right half blue; a clockwise quarter turn puts red on top.
    const QByteArray boxes = "/MediaBox [0 0 400 400] /CropBox [100 100 300 200] /Rotate 90";
    const Bitmap bitmap =
        rasterise(makePdf({.boxes = boxes, .content = "1 0 0 rg 0 0 200 400 re f 0 0 1 rg 200 0 200 400 re f"}), 200);
    ASSERT_EQ(bitmap.size(), (PixelSize{100, 200}));
    EXPECT_EQ(pixelAt(bitmap, 0, 0), red);
    EXPECT_EQ(pixelAt(bitmap, 99, 98), red);
    EXPECT_EQ(pixelAt(bitmap, 0, 101), blue);
    EXPECT_EQ(pixelAt(bitmap, 99, 199), blue);
}

TEST(PdfPage, leavesAnnotationsOut)
{
    const Bitmap bitmap =
        rasterise(makePdf({.content = "1 0 0 rg 0 0 100 100 re f", .annotation = "0 0 1 rg 0 0 200 100 re f"}), 200);
    EXPECT_EQ(pixelAt(bitmap, 50, 50), red);
    EXPECT_EQ(pixelAt(bitmap, 150, 50), nothing);
}

TEST(PdfPage, refusesWhatHasNoPage)
{
    const QByteArray good = makePdf({});
    const struct {
        const char* name;
        QByteArray bytes;
    } rows[] = {
        {"empty", {}},
        {"only a signature", "%PDF-1.4\n"},
        {"another type", "\x89PNG\r\n\x1a\n"},
        {"no pages", QByteArray(good).replace("/Kids [3 0 R] /Count 1", "/Kids []      /Count 0")},
        {"pages in a circle", QByteArray(good).replace("/Kids [3 0 R] /Count 1", "/Kids [2 0 R] /Count 1")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        try {
            rasterise(row.bytes, 100);
            ADD_FAILURE() << "accepted";
        } catch (const CodecError& error) {
            EXPECT_EQ(error.reason, CodecError::Reason::malformed);
        }
    }
}

TEST(PdfPage, survivesEveryCut)
{
    const QByteArray good = makePdf({.content = "1 0 0 rg 0 0 100 100 re f"});
    for (qsizetype length = 0; length < good.size(); length += 7) {
        SCOPED_TRACE(length);
        try {
            EXPECT_EQ(rasterise(good.left(length), 20).size().longestSide(), 20);
        } catch (const CodecError&) {
        }
    }
}

TEST(PdfPage, drawsInSeveralThreadsAtOnce)
{
    const QByteArray good = makePdf({.content = "1 0 0 rg 0 0 100 100 re f"});
    std::array<Pixel, 4> pixels{};
    std::vector<std::thread> threads;
    for (Pixel& pixel : pixels) {
        threads.emplace_back([&good, &pixel] {
            for (int i = 0; i < 10; ++i)
                pixel = pixelAt(rasterise(good, 200), 50, 50);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const Pixel& pixel : pixels)
        EXPECT_EQ(pixel, red);
}

} // namespace
} // namespace ferrow
