// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/PdfPage.h"

#include "Support/Pictures.h"

namespace ferrow {

namespace {

using namespace test;

QByteArray stream(const QByteArray& dictionary, const QByteArray& content)
{
    const QByteArray length = QByteArray::number(content.size());
    return "<<" + dictionary + " /Length " + length + ">>\nstream\n" + content + "\nendstream";
}

const QByteArray redHalf = "1 0 0 rg 0 0 100 100 re f";
const QByteArray wide = "/MediaBox [0 0 200 100]";

/// One page with a stamp, whose appearance lies over all of it.
QByteArray makePdf(const QByteArray& boxes, const QByteArray& content = redHalf, const QByteArray& stamp = {})
{
    const QByteArray state = "/Resources << /ExtGState << /Half << /ca 0.5 >> >> >>";
    QByteArray file = "%PDF-1.4\n";
    QByteArray table;
    int number = 0;
    for (const QByteArray& object :
         {QByteArray("<< /Type /Catalog /Pages 2 0 R >>"), QByteArray("<< /Type /Pages /Kids [3 0 R] /Count 1 >>"),
          "<< /Type /Page /Parent 2 0 R /Annots [5 0 R] /Contents 4 0 R " + boxes + state + " >>", stream({}, content),
          QByteArray("<< /Type /Annot /Subtype /Stamp /Rect [0 0 200 100] /F 4 /AP << /N 6 0 R >> >>"),
          stream("/Type /XObject /Subtype /Form /BBox [0 0 200 100]", stamp)}) {
        table += QByteArray::number(file.size()).rightJustified(10, '0') + " 00000 n \n";
        file += QByteArray::number(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    return file + "xref\n0 7\n0000000000 65535 f \n" + table + "trailer << /Size 7 /Root 1 0 R >>\nstartxref\n" +
           QByteArray::number(file.lastIndexOf("\nendobj\n") + 8) + "\n%%EOF\n";
}

Bitmap rasterize(const QByteArray& bytes, std::int64_t dimension)
{
    const MemoryFile file(bytes);
    return rasterizePdf(ByteSource(file.descriptor(), file.size()), dimension);
}

/// Red, green, blue and alpha as hexadecimal digits.
QByteArray colorAt(const Bitmap& bitmap, std::int64_t x, std::int64_t y)
{
    return QByteArray(reinterpret_cast<const char*>(bitmap.row(y) + x * 4), 4).toHex();
}

} // namespace

TEST(PdfPage, drawsOnNothingWithPremultipliedAlphaAndNoAnnotations)
{
    const QByteArray stamp = "0 0 1 rg 0 0 200 100 re f";
    const Bitmap bitmap = rasterize(makePdf(wide, redHalf + " /Half gs 0 0 1 rg 100 50 100 50 re f", stamp), 400);
    EXPECT_EQ(bitmap.format(), rgba8Premultiplied);
    EXPECT_EQ(colorAt(bitmap, 50, 150), "ff0000ff");
    EXPECT_EQ(colorAt(bitmap, 300, 150), "00000000");
    EXPECT_EQ(component(bitmap, 300, 50, 0), 0);
    EXPECT_EQ(component(bitmap, 300, 50, 2), component(bitmap, 300, 50, 3));
    EXPECT_NEAR(component(bitmap, 300, 50, 3), 128, 1);
}

TEST(PdfPage, fillsTheAskedSizeExactly)
{
    const auto sizeOf = [](const QByteArray& boxes, int dimension) {
        return rasterize(makePdf(boxes), dimension).size();
    };
    EXPECT_EQ(sizeOf("/MediaBox [0 0 200 300]", 100), (PixelSize{67, 100}));
    EXPECT_EQ(sizeOf("/MediaBox [0 0 10 10]", 4000), (PixelSize{4000, 4000}));
    EXPECT_EQ(sizeOf("/MediaBox [0 0 10000 1]", 50), (PixelSize{50, 1}));
    EXPECT_EQ(sizeOf("/MediaBox [0 0 1000000000 500000000]", 100), (PixelSize{100, 50}));

    // The left half of the crop box is red, its right half blue; a clockwise quarter turn puts red on top.
    const QByteArray boxes = "/MediaBox [0 0 400 400] /CropBox [100 100 300 200] /Rotate 90";
    const Bitmap bitmap = rasterize(makePdf(boxes, "1 0 0 rg 0 0 200 400 re f 0 0 1 rg 200 0 200 400 re f"), 200);
    ASSERT_EQ(bitmap.size(), (PixelSize{100, 200}));
    EXPECT_EQ(colorAt(bitmap, 0, 0), "ff0000ff");
    EXPECT_EQ(colorAt(bitmap, 99, 199), "0000ffff");
}

TEST(PdfPage, refusesWhatHasNoPage)
{
    const QByteArray good = makePdf(wide);
    const QByteArray kids = "/Kids [3 0 R] /Count 1";
    const auto isRefused = [](const QByteArray& bytes) {
        try {
            EXPECT_EQ(rasterize(bytes, 20).size().longestSide(), 20);
            return false;
        } catch (const CodecError& error) {
            return error.reason == CodecError::Reason::malformed;
        }
    };
    EXPECT_TRUE(isRefused("%PDF-1.4\n"));
    EXPECT_TRUE(isRefused(QByteArray(good).replace(kids, "/Kids []      /Count 0")));
    EXPECT_TRUE(isRefused(QByteArray(good).replace(kids, "/Kids [2 0 R] /Count 1")));
}

} // namespace ferrow
