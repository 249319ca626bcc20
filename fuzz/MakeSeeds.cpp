// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the inputs that fuzzing starts from: MakeSeeds FOLDER, one folder in it for each target.
#include "FuzzSupport.h"

#include "Persistence/PresetModels.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Worker/Messages.h"

#include <QDir>
#include <QFile>

using namespace ferrow;

namespace {

class Seeds {
public:
    explicit Seeds(const QString& folder) : folder_(folder) {}

    void add(const char* target, const QByteArray& bytes)
    {
        const QString place = folder_ + u'/' + QString::fromLatin1(target);
        QFile file(place + QStringLiteral("/seed%1").arg(count_++));
        if (!QDir().mkpath(place) || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            std::abort();
    }

private:
    QString folder_;
    int count_ = 0;
};

/// A gradient, 20 x 14, with all metadata that we write.
QByteArray picture(OutputType type)
{
    const int descriptor = ::memfd_create("seed", MFD_CLOEXEC);
    EncodeOptions options;
    options.size = {20, 14};
    options.format = rgb8;
    options.profile = ColorProfile::sRGB();
    options.quality = 0.8;
    options.metadata = {QStringLiteral("Make"), QStringLiteral("Model"), QStringLiteral("Artist"),
                        QStringLiteral("Copyright"), QStringLiteral("2024:07:19 09:14:31")};
    std::vector<std::byte> pixels(20 * 14 * 3);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = std::byte(i % 256);
    ByteSink sink(descriptor);
    const auto encoder = openEncoder(type, sink, options);
    encoder->writeRows(14, pixels.data(), 60);
    encoder->finish();
    QByteArray bytes(::lseek(descriptor, 0, SEEK_END), Qt::Uninitialized);
    fuzz::require(::pread(descriptor, bytes.data(), std::size_t(bytes.size()), 0) == bytes.size(), "whole");
    ::close(descriptor);
    return bytes;
}

/// A little-endian Exif structure with a directory of a text, a number and a pointer to a directory of rationals.
QByteArray exif()
{
    return QByteArray::fromHex("49492a000800000003000f0102000400000041626300120103000100000006000000"
                               "69870400010000003200000000000000"
                               "02009a82050001000000500000009d8205000100000058000000000000000100000032000000"
                               "1c0000000a000000");
}

QByteArray xmp()
{
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description xmlns:dc='http://purl.org/dc/elements/1.1/' dc:description='d'><dc:title><rdf:Alt>"
           "<rdf:li xml:lang='x-default'>T</rdf:li></rdf:Alt></dc:title></rdf:Description></rdf:RDF></x:xmpmeta>";
}

QByteArray jpegSegment(char marker, const QByteArray& content)
{
    const auto length = content.size() + 2;
    return QByteArray("\xff") + marker + char(length >> 8) + char(length) + content;
}

QByteArray presets()
{
    PhotoPreset preset;
    preset.id = QUuid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11);
    preset.name = QStringLiteral("Plain");
    preset.createdAt = preset.modifiedAt = QDateTime::fromSecsSinceEpoch(1'700'000'000).toUTC();
    preset.payload = PresetPayload::make({}, {}, {});
    PresetDocument document;
    document.presets = {preset, preset};
    document.presets[1].payload.framing.logo = LogoConfiguration::placeholder();
    document.presets[1].payload.framing.border = {.sides = SideLengths{1, 2, 3, 4},
                                                  .blurredBackground = BlurredBackground(),
                                                  .shape = FrameShape(),
                                                  .line = FrameLine(),
                                                  .photoEdge = {{2, BorderUnit::percent}, true}};
    return document.encode();
}

QByteArray answer(const Worker::Answer& value)
{
    const auto message = Worker::encode(value).bytes;
    return {reinterpret_cast<const char*>(message.data()), qsizetype(message.size())};
}

void addAnswers(Seeds& seeds)
{
    Worker::Inspected inspected;
    inspected.answer.storedSize = inspected.answer.uprightSize = {20, 14};
    inspected.answer.colorProfileName = QStringLiteral("sRGB");
    inspected.answer.properties.image = {{PropertyKey::orientation, {6.0}},
                                         {PropertyKey::exif, {PropertyMap{{QStringLiteral("FNumber"), {2.8}}}}}};
    inspected.answer.properties.xmp = {{QStringLiteral("dc:title"), {TextList{QStringLiteral("T")}}}};
    inspected.picture.pixels = Bitmap({4, 3}, rgb8, ColorProfile::sRGB());
    inspected.picture.size = {4, 3};
    inspected.picture.format = rgb8;
    inspected.picture.space = WellKnown::sRGB;
    for (const auto& content : {decltype(Worker::Answer::content)(inspected),
                                {Worker::Hello{}},
                                {Worker::HeaderRead{}},
                                {Worker::Framed{}},
                                {Worker::LogoRasterized{"png", inspected.picture}},
                                {Worker::PhotoRefused{ImagePipelineError::UnreasonableDimensions{1, 2}}},
                                {Worker::LogoRefused{}}})
        seeds.add("AnswerFuzz", answer({7, content}));
}

} // namespace

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    Seeds seeds(QString::fromLocal8Bit(words[1]));
    for (const OutputType type : {OutputType::jpeg, OutputType::png, OutputType::tiff, OutputType::heif}) {
        seeds.add("HeaderFuzz", picture(type));
        seeds.add("PropertyFuzz", picture(type));
    }
    for (const char* choices : {"\0\1\1\0", "\5\x11\x22\1", "\2\2\1\2"})
        seeds.add("JpegFuzz", picture(OutputType::jpeg) + QByteArray(choices, 4));
    const QByteArray iptc("8BIM\4\4\0\0\0\0\0\x09\x1c\2\5\0\4Dune\0", 22);
    seeds.add("HeaderFuzz", exif());
    seeds.add("PropertyFuzz", exif());
    seeds.add("PropertyFuzz", "\xff\xd8" + jpegSegment('\xe1', QByteArray("Exif\0\0", 6) + exif()) +
                                  jpegSegment('\xe1', QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + xmp()) +
                                  jpegSegment('\xed', QByteArray("Photoshop 3.0\0", 14) + iptc) +
                                  jpegSegment('\xda', "123456"));
    seeds.add("XmpFuzz", xmp());
    seeds.add("XmpFuzz", iptc);
    seeds.add("XmpFuzz", iptc.mid(12));
    seeds.add("PresetFuzz", presets());
    seeds.add("CaptionFuzz", "{camera} \xc2\xb7 {lens}\n{title} | {year}{caption}\x1eSand — dune");
    seeds.add("CaptionFuzz", "{captureDate:iso|no \\(date\\)}{lens|by\\nhand\\|}\x1e{x}");
    seeds.add("CaptionFuzz", "EEEE, d. MMMM yyyy 'at' HH:mm\x1e|\\{}\n");
    seeds.add("FilenameFuzz", "{filename}_{index}\nIMG \xff 1.jpg");
    addAnswers(seeds);
    return 0;
}
