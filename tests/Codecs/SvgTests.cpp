// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/SvgPicture.h"

#include "Support/Files.h"
#include "Support/Pictures.h"

#include <zlib.h>

namespace ferrow {

namespace {

using namespace test;

QByteArray svg(const QByteArray& content, const QByteArray& size = R"(width="200" height="100")")
{
    return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" )" + size + ">" +
           content + "</svg>";
}

QByteArray gzip(QByteArray bytes)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    QByteArray packed(qsizetype(deflateBound(&stream, uLong(bytes.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = uInt(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

QByteArray read(const QByteArray& bytes)
{
    const MemoryFile file(bytes);
    return readSvg(ByteSource(file.descriptor(), file.size()));
}

QByteArray dataAddress(const char* type, const QByteArray& bytes)
{
    return QByteArray("data:") + type + ";base64," + bytes.toBase64();
}

/// Red, green, blue and alpha as hexadecimal digits.
QByteArray colorAt(const Bitmap& bitmap, std::int64_t x, std::int64_t y)
{
    return QByteArray(reinterpret_cast<const char*>(bitmap.row(y) + x * 4), 4).toHex();
}

std::optional<CodecError::Reason> refusalOf(const std::function<void()>& steps)
{
    const auto error = errorOf<CodecError>([&] { return steps(), 0; });
    return error ? std::optional(error->reason) : std::nullopt;
}

const QByteArray redHalf = R"(<path fill="red" d="M0 0h100v100h-100z"/>)";

} // namespace

TEST(SvgPicture, drawsOnNothingAtTheSizeAskedFor)
{
    const QByteArray half = R"(<path fill="#00f" fill-opacity=".5" d="M100 0h100v100h-100z"/>)";
    const std::tuple<const char*, QByteArray, PixelSize> rows[] = {
        {"size in pixels", R"(width="200" height="100")", {400, 200}},
        {"size in print", R"(width="2in" height="1in" viewBox="0 0 200 100")", {400, 200}},
        {"view box alone", R"(viewBox="0 0 200 100")", {400, 200}},
        {"percents", R"(width="100%" height="100%" viewBox="0 0 200 100")", {400, 200}},
        {"upright", R"(width="100" height="400" viewBox="0 0 200 100" preserveAspectRatio="none")", {100, 400}},
        {"far too large", R"(width="1e9" height="5e8" viewBox="0 0 200 100")", {400, 200}},
        {"a view box elsewhere", R"(width="4" height="2" viewBox="0 0 200 100")", {400, 200}}};
    for (const auto& [name, size, pixels] : rows) {
        SCOPED_TRACE(name);
        for (const QByteArray& file : {svg(redHalf + half, size), gzip(svg(redHalf + half, size))}) {
            const QByteArray text = read(file);
            EXPECT_EQ(obstacleIn(text), SvgObstacle::none);
            const Bitmap bitmap = rasterizeSvg(text, 400);
            ASSERT_EQ(bitmap.size(), pixels);
            EXPECT_EQ(bitmap.format(), rgba8Premultiplied);
            EXPECT_EQ(colorAt(bitmap, pixels.width / 4, pixels.height / 2), "ff0000ff");
            EXPECT_EQ(colorAt(bitmap, pixels.width * 3 / 4, pixels.height / 2), "00008080");
        }
    }
    const Bitmap tiny = rasterizeSvg(svg(redHalf), 4000);
    EXPECT_EQ(colorAt(tiny, 1999, 1000), "ff0000ff") << "sharp however large";
    EXPECT_EQ(colorAt(tiny, 2000, 1000), "00000000");
}

TEST(SvgPicture, namesWhatKeepsItFromBeingDrawnAsMeant)
{
    const QByteArray png = encoded(OutputType::png, flat({2, 2}, rgb8, {255, 0, 0}));
    const QByteArray use = R"(<path id="p" d="M0 0h9v9z"/><use href="#p"/><use xlink:href="#p"/>)";
    const std::tuple<const char*, QByteArray, SvgObstacle> rows[] = {
        {"shapes that use each other", use, SvgObstacle::none},
        {"a link and a title", R"(<title>Text</title><a href="https://example.org"><path d="M0 0h9v9z"/></a>)",
         SvgObstacle::none},
        {"a PNG within", "<image width='9' height='9' href='" + dataAddress("image/png", png) + "'/>",
         SvgObstacle::none},
        {"text", "<g><text x='5' y='9'>Ferrow</text></g>", SvgObstacle::text},
        {"text of another prefix", "<s:text xmlns:s='http://www.w3.org/2000/svg'>F</s:text>", SvgObstacle::text},
        {"text by an entity", "&t;", SvgObstacle::text},
        {"a file", "<image href='/etc/passwd'/>", SvgObstacle::reference},
        {"a file by its address", "<image xlink:href='file:///etc/passwd'/>", SvgObstacle::reference},
        {"the network", "<use href='https://example.org/a.svg#a'/>", SvgObstacle::reference},
        {"an SVG within", "<image href='" + dataAddress("image/svg+xml", svg(redHalf)) + "'/>", SvgObstacle::reference},
        {"a filter's picture", "<filter><feImage href='a.png'/></filter>", SvgObstacle::reference},
        {"100,000 elements", QByteArray("<path/>").repeated(100'000), SvgObstacle::tooComplex},
        {"depth", QByteArray("<g>").repeated(300) + QByteArray("</g>").repeated(300), SvgObstacle::tooComplex}};
    for (const auto& [name, content, obstacle] : rows)
        EXPECT_EQ(obstacleIn("<!DOCTYPE svg [<!ENTITY t '<text>F</text>'>]>" + svg(content)), obstacle) << name;
    // Even without that question nothing outside is opened.
    const TemporaryFolder folder;
    const FileUrl outside = folder.write("outside.png", png);
    const Bitmap drawn = rasterizeSvg(
        svg("<image width='200' height='100' href='file://" + outside.path().toPercentEncoding("/") + "'/>"), 20);
    EXPECT_EQ(colorAt(drawn, 10, 5), "00000000");
}

TEST(SvgPicture, refusesWhatWouldExplodeOrIsNone)
{
    using Reason = CodecError::Reason;
    EXPECT_EQ(refusalOf([] { static_cast<void>(read(gzip(QByteArray(40'000'000, ' ')))); }), Reason::tooLarge);
    EXPECT_EQ(refusalOf([] { static_cast<void>(read(QByteArray(32'000'001, ' '))); }), Reason::tooLarge);
    EXPECT_EQ(read(gzip(svg(redHalf)).chopped(8)), svg(redHalf)) << "without its sum it is still all there";

    QByteArray laughs = "<!DOCTYPE svg [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 12; ++i) {
        const QByteArray before = "&e" + QByteArray::number(i - 1) + ";";
        laughs += "<!ENTITY e" + QByteArray::number(i) + " '" + before.repeated(10) + "'>";
    }
    laughs += "]>" + svg("<desc>&e11;</desc>");
    for (const QByteArray& bytes : {QByteArray(), QByteArray("<svg"), QByteArray("no drawing"), laughs})
        EXPECT_EQ(refusalOf([&] { static_cast<void>(obstacleIn(bytes)); }), Reason::malformed) << bytes.left(20).data();
    for (const QByteArray& bytes : {QByteArray(), svg(redHalf).chopped(9), QByteArray("<html/>"), laughs,
                                    svg(redHalf, R"(width="0" height="5")"), svg(redHalf, R"(viewBox="0 0 0 0")")})
        EXPECT_EQ(refusalOf([&] { static_cast<void>(rasterizeSvg(bytes, 40)); }), Reason::malformed)
            << bytes.left(20).data();
    EXPECT_EQ(refusalOf([] { static_cast<void>(rasterizeSvg(svg(redHalf), 40'000)); }), Reason::tooLarge);
}

} // namespace ferrow
