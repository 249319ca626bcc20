// SPDX-License-Identifier: GPL-3.0-or-later
#include "SamplePhotos.h"

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/ImageEncoder.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <functional>
#include <stdexcept>

namespace ferrow::tools {

namespace {

struct Light {
    QColor top;
    QColor horizon;
    QColor far;
    QColor near;
    QColor sun;
    double sunX; ///< 0…1 of the width.
    double sunY; ///< 0…1 of the height.
    double sunRadius;
};

/// A hill line as a sum of waves, repeatable for its seed.
std::function<double(double)> ridge(quint32 seed, double height, double roughness)
{
    QRandomGenerator random(seed);
    struct Wave {
        double frequency;
        double phase;
        double amplitude;
    };
    std::vector<Wave> waves;
    double amplitude = height;
    for (double frequency = 1.1; frequency < 60; frequency *= 2.1, amplitude *= roughness)
        waves.push_back({frequency, random.generateDouble() * 6.3, amplitude});
    return [waves](double x) {
        double y = 0;
        for (const Wave& wave : waves)
            y += wave.amplitude * std::sin(wave.frequency * x * 3.1 + wave.phase);
        return y;
    };
}

QColor mixed(const QColor& a, const QColor& b, float part)
{
    return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * part, a.greenF() + (b.greenF() - a.greenF()) * part,
                            a.blueF() + (b.blueF() - a.blueF()) * part);
}

void paintRidge(QPainter& painter, QSizeF size, double base, const std::function<double(double)>& line,
                const QColor& color)
{
    QPainterPath path(QPointF(0, size.height()));
    for (double x = 0; x <= size.width() + 2; x += 2)
        path.lineTo(x, (base + line(x / size.width())) * size.height());
    path.lineTo(size.width(), size.height());
    painter.fillPath(path, color);
}

void addGrain(QImage& image, quint32 seed)
{
    QRandomGenerator random(seed);
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int grain = int(random.generate() % 9) - 4;
            row[x] = qRgb(qBound(0, qRed(row[x]) + grain, 255), qBound(0, qGreen(row[x]) + grain, 255),
                          qBound(0, qBlue(row[x]) + grain, 255));
        }
    }
}

QImage landscape(QSize size, const Light& light, quint32 seed, double roughness, bool water)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, size.height() * 0.75);
    sky.setColorAt(0, light.top);
    sky.setColorAt(1, light.horizon);
    painter.fillRect(image.rect(), sky);

    const QPointF sun(light.sunX * size.width(), light.sunY * size.height());
    QRadialGradient glow(sun, size.width() * 0.45);
    QColor glowColor = light.sun;
    glowColor.setAlphaF(0.55F);
    glow.setColorAt(0, glowColor);
    glowColor.setAlphaF(0);
    glow.setColorAt(1, glowColor);
    painter.fillRect(image.rect(), glow);
    painter.setPen(Qt::NoPen);
    painter.setBrush(light.sun);
    painter.drawEllipse(sun, light.sunRadius * size.height(), light.sunRadius * size.height());

    constexpr int layers = 5;
    for (int layer = 0; layer < layers; ++layer) {
        const float part = float(layer) / (layers - 1);
        const double base = 0.52 + 0.1 * layer;
        paintRidge(painter, size, base, ridge(seed + quint32(layer), 0.05 + 0.012 * layer, roughness),
                   mixed(light.far, light.near, part));
    }
    if (water) {
        const QRectF lake(0, size.height() * 0.8, size.width(), size.height() * 0.2);
        QLinearGradient mirror(lake.topLeft(), lake.bottomLeft());
        mirror.setColorAt(0, mixed(light.horizon, light.near, 0.25F));
        mirror.setColorAt(1, mixed(light.top, light.near, 0.45F));
        painter.fillRect(lake, mirror);
        QRandomGenerator random(seed);
        for (int i = 0; i < 160; ++i) {
            const double y = lake.top() + lake.height() * random.generateDouble();
            const double width = size.width() * (0.01 + 0.05 * random.generateDouble());
            painter.fillRect(QRectF(size.width() * random.generateDouble(), y, width, size.height() / 700.0 + 0.6),
                             QColor(255, 255, 255, 26));
        }
    }
    painter.end();
    addGrain(image, seed);
    return image;
}

FileUrl write(const FileUrl& place, const QImage& image, OutputType type, const OutputMetadata& metadata)
{
    const int descriptor = ::open(place.path().constData(), O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC, 0644);
    if (descriptor < 0)
        throw std::runtime_error("cannot write a sample picture");
    const bool alpha = image.hasAlphaChannel();
    const QImage pixels = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    ByteSink sink(descriptor);
    const auto encoder = openEncoder(type, sink,
                                     {.size = {pixels.width(), pixels.height()},
                                      .format = alpha ? rgba8 : rgb8,
                                      .profile = ColorProfile::sRGB(),
                                      .metadata = metadata});
    encoder->writeRows(pixels.height(), reinterpret_cast<const std::byte*>(pixels.constBits()),
                       std::size_t(pixels.bytesPerLine()));
    encoder->finish();
    ::close(descriptor);
    return place;
}

} // namespace

std::vector<FileUrl> writeSamplePhotos(const FileUrl& folder)
{
    struct Scene {
        const char* name;
        QSize size;
        Light light;
        double roughness;
        bool water;
        const char* artist;
    };
    const Light dawn{
        QColor(0x3d5a80), QColor(0xf7c59f), QColor(0xb08ea2), QColor(0x2b3a55), QColor(0xfff1d0), 0.68, 0.5, 0.035};
    const Light noon{
        QColor(0x3f88c5), QColor(0xd7ecf7), QColor(0x9db9a5), QColor(0x2f5d3a), QColor(0xffffff), 0.2, 0.14, 0.03};
    const Light dusk{
        QColor(0x1b1f3b), QColor(0xe07a5f), QColor(0x5d4a66), QColor(0x14142b), QColor(0xf9dcc4), 0.4, 0.52, 0.045};
    const Light mist{
        QColor(0xbcc7ce), QColor(0xe9edef), QColor(0xc3ccd1), QColor(0x55656e), QColor(0xf7f7f2), 0.75, 0.22, 0.028};
    const Light dunes{
        QColor(0x8fb8de), QColor(0xfbe8c8), QColor(0xe3b778), QColor(0x9c5f2c), QColor(0xfffbe6), 0.82, 0.2, 0.03};
    const Scene scenes[] = {
        {"Above the Valley", {2400, 1600}, dawn, 0.42, false, "Ada Lind"},
        {"Blue Hour", {2400, 1600}, dusk, 0.5, true, "Ada Lind"},
        {"Dunes at Four", {2400, 1350}, dunes, 0.2, false, "Ada Lind"},
        {"First Snow", {1600, 2400}, mist, 0.55, false, "Ada Lind"},
        {"Harbor Road", {2400, 1600}, noon, 0.4, true, "Jon Arvid"},
        {"Lake 2", {2000, 2000}, dawn, 0.35, true, "Jon Arvid"},
        {"Lake 10", {2400, 1600}, noon, 0.5, true, "Jon Arvid"},
        {"Long Shadows", {2400, 1000}, dunes, 0.3, false, ""},
        {"Morning Fog", {2400, 1600}, mist, 0.4, true, "Ada Lind"},
        {"Ridge", {1600, 2000}, dusk, 0.6, false, ""},
        {"Summer Field", {2400, 1600}, noon, 0.25, false, "Ada Lind"},
    };
    std::vector<FileUrl> written;
    quint32 seed = 7;
    for (const Scene& scene : scenes) {
        OutputMetadata metadata{.make = QStringLiteral("Lumen"), .model = QStringLiteral("Lumen A1")};
        if (*scene.artist)
            metadata.artist = QString::fromUtf8(scene.artist);
        metadata.copyright = QStringLiteral("© 2026 Ada Lind");
        metadata.dateTimeOriginal = QStringLiteral("2026:06:%1 05:42:00").arg(10 + seed % 18);
        written.push_back(write(folder.appending(QByteArray(scene.name) + ".jpg"),
                                landscape(scene.size, scene.light, seed, scene.roughness, scene.water),
                                OutputType::jpeg, metadata));
        seed += 13;
    }
    return written;
}

void writeManySmallPhotos(const FileUrl& folder, int count)
{
    const Light light{
        QColor(0x3f88c5), QColor(0xd7ecf7), QColor(0x9db9a5), QColor(0x2f5d3a), QColor(0xffffff), 0.2, 0.14, 0.03};
    // Drawing costs more than encoding: a few pictures serve under many names.
    constexpr quint32 pictures = 12;
    std::vector<QImage> drawn;
    for (quint32 i = 0; i < pictures; ++i)
        drawn.push_back(landscape({390, 260}, light, i, 0.45, i % 2 == 0));
    for (int i = 0; i < count; ++i)
        write(folder.appending("Frame " + QByteArray::number(i + 1) + ".jpg"), drawn[std::size_t(i) % pictures],
              OutputType::jpeg, {.model = QStringLiteral("Lumen A1")});
}

FileUrl writeSampleLogo(const FileUrl& folder)
{
    QImage image(600, 240, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x262626), 16));
    painter.drawRoundedRect(QRectF(20, 20, 200, 200), 24, 24);
    painter.setBrush(QColor(0x2a5b8c));
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygonF({{50, 190}, {115, 90}, {150, 140}, {170, 115}, {195, 190}}));
    painter.setPen(QColor(0x262626));
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(130);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.drawText(QRect(250, 0, 350, 240), Qt::AlignVCenter, QStringLiteral("Lind"));
    painter.end();
    return write(folder.appending("Lind.png"), image, OutputType::png, {});
}

} // namespace ferrow::tools
