// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/MessageParts.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

namespace ferrow::Worker {

namespace {

constexpr qsizetype maximumText = 64 * 1024;
constexpr std::uint32_t maximumVariables = 32;
constexpr std::uint32_t maximumOverlays = 64;
/// Canvases are checked where frames are laid out; here a size only has to be one.
constexpr std::int64_t largestSide = 1 << 20;
constexpr std::int64_t largestFile = std::int64_t(1) << 50;
constexpr std::int64_t farthest = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t largestProfile = 16 << 20;

template <typename Wanted>
const Engine::Composition* compositionOf(const Wanted& request)
{
    if constexpr (std::is_same_v<Wanted, Engine::FrameRequest> || std::is_same_v<Wanted, Engine::RegionRequest>)
        return &request.composition;
    else
        return nullptr;
}

void write(ByteWriter& writer, const RGBAColor& color)
{
    for (const double component : {color.red, color.green, color.blue, color.alpha})
        writer.number(component);
}

RGBAColor readColor(ByteReader& reader)
{
    RGBAColor color;
    for (double* component : {&color.red, &color.green, &color.blue, &color.alpha})
        *component = reader.number<double>();
    return color;
}

void write(ByteWriter& writer, const ColorProfile& profile)
{
    const bool isKnown = ColorProfile::of(profile.wellKnown()) != ColorProfile();
    writer.enumerator(isKnown ? profile.wellKnown() : WellKnown::none);
    const QByteArray icc = isKnown ? QByteArray() : profile.icc();
    writer.number(std::uint32_t(icc.size()));
    writer.raw(std::as_bytes(std::span(icc.constData(), std::size_t(icc.size()))));
}

ColorProfile readProfile(ByteReader& reader)
{
    const ColorProfile known = ColorProfile::of(readSpace(reader));
    const auto icc = reader.raw(reader.number<std::uint32_t>(0, largestProfile));
    if (icc.empty())
        return known;
    return ColorProfile::fromIcc(QByteArray(reinterpret_cast<const char*>(icc.data()), qsizetype(icc.size())),
                                 ColorModel::rgb)
        .value_or(known);
}

void write(ByteWriter& writer, const Engine::Overlay& overlay, bool isInline)
{
    write(writer, overlay.picture.size());
    write(writer, overlay.picture.profile());
    writer.number(overlay.x);
    writer.number(overlay.y);
    writer.number(overlay.opacity);
    if (isInline)
        writePixels(writer, overlay.picture);
}

/// `memory` and `offset`: where the pixels lie that are not in the message.
Engine::Overlay readOverlay(ByteReader& reader, int memory, std::size_t& offset)
{
    Engine::Overlay overlay;
    const PixelSize size = readSize(reader, 1, largestSide);
    const ColorProfile profile = readProfile(reader);
    overlay.x = reader.number<std::int64_t>(-farthest, farthest);
    overlay.y = reader.number<std::int64_t>(-farthest, farthest);
    overlay.opacity = reader.number<double>(0, 1);
    if (!reader.isSound())
        return overlay;
    overlay.picture = Bitmap(size, rgba8Premultiplied, profile);
    if (memory < 0)
        readPixels(reader, overlay.picture);
    else if (!readPicture(memory, overlay.picture, offset))
        reader.fail();
    offset += byteCount(size, rgba8Premultiplied);
    return overlay;
}

/// Absent or there, and then its numbers.
template <typename T, typename... Member>
void writeOptional(ByteWriter& writer, const std::optional<T>& value, Member T::*... members)
{
    writer.flag(value.has_value());
    if (value)
        (writer.number((*value).*members), ...);
}

void write(ByteWriter& writer, const Engine::RoundedRect& area)
{
    for (const double number : {area.left, area.top, area.right, area.bottom, area.radius})
        writer.number(number);
}

/// Within the canvas but for a rounded number: what is drawn along it is as large as it is.
Engine::RoundedRect readArea(ByteReader& reader, PixelSize canvas)
{
    const double width = double(canvas.width) + 1;
    const double height = double(canvas.height) + 1;
    Engine::RoundedRect area;
    area.left = reader.number<double>(-1, width);
    area.top = reader.number<double>(-1, height);
    area.right = reader.number<double>(area.left, width);
    area.bottom = reader.number<double>(area.top, height);
    area.radius = reader.number<double>(0, double(largestSide));
    return area;
}

/// What is drawn between background and photo, and in place of the background's color.
void writeSurroundings(ByteWriter& writer, const Engine::Composition& composition)
{
    using namespace Engine;
    write(writer, composition.photoArea);
    writeOptional(writer, composition.blurredPhoto, &BlurredPhoto::sigma, &BlurredPhoto::light);
    writeOptional(writer, composition.shadow, &PhotoShadow::sigma, &PhotoShadow::offset, &PhotoShadow::opacity);
    writeOptional(writer, composition.line, &PhotoLine::distance, &PhotoLine::thickness);
    if (composition.line)
        write(writer, composition.line->color);
}

void readSurroundings(ByteReader& reader, Engine::Composition& composition)
{
    constexpr auto most = double(largestSide);
    composition.photoArea = readArea(reader, composition.canvasSize);
    if (reader.flag())
        composition.blurredPhoto = {.sigma = reader.number<double>(0, most), .light = reader.number<double>(0, 1)};
    if (reader.flag())
        composition.shadow = {.sigma = reader.number<double>(0, most),
                              .offset = reader.number<double>(0, most),
                              .opacity = reader.number<double>(0, 1)};
    if (reader.flag())
        composition.line = {.distance = reader.number<double>(0, most),
                            .thickness = reader.number<double>(0, most),
                            .color = readColor(reader)};
}

void write(ByteWriter& writer, const Engine::Composition& composition, bool isInline)
{
    write(writer, composition.canvasSize);
    write(writer, composition.borderColor);
    writer.number(composition.photoX);
    writer.number(composition.photoY);
    write(writer, composition.photoSize);
    writer.enumerator(composition.colorProfile);
    writeSurroundings(writer, composition);
    writer.number(std::uint32_t(composition.overlays.size()));
    for (const Engine::Overlay& overlay : composition.overlays)
        write(writer, overlay, isInline);
}

Engine::Composition readComposition(ByteReader& reader, int overlayMemory)
{
    Engine::Composition composition;
    composition.canvasSize = readSize(reader, 1, largestSide);
    composition.borderColor = readColor(reader);
    composition.photoX = reader.number<std::int64_t>(-farthest, farthest);
    composition.photoY = reader.number<std::int64_t>(-farthest, farthest);
    composition.photoSize = readSize(reader, 0, largestSide);
    composition.colorProfile = reader.enumerator<OutputColorProfile>();
    readSurroundings(reader, composition);
    const auto count = reader.number<std::uint32_t>(0, maximumOverlays);
    std::size_t offset = 0;
    for (std::uint32_t i = 0; i < count && reader.isSound(); ++i)
        composition.overlays.push_back(readOverlay(reader, overlayMemory, offset));
    return composition;
}

void write(ByteWriter& writer, const std::optional<QString>& text)
{
    writer.flag(text.has_value());
    writer.text(text.value_or(QString()), maximumText);
}

std::optional<QString> readOptionalText(ByteReader& reader)
{
    const bool isThere = reader.flag();
    const QString text = reader.text(maximumText);
    return isThere ? std::optional(text) : std::nullopt;
}

template <typename Metadata>
auto fieldsOf(Metadata& metadata)
{
    return std::array{&metadata.make, &metadata.model, &metadata.artist, &metadata.copyright,
                      &metadata.dateTimeOriginal};
}

/// Descriptors travel in this order: source, output, memory for the answer's picture, overlays' memory.
class Descriptors {
public:
    explicit Descriptors(std::span<const int> all) : rest_(all) {}

    int next(ByteReader& reader)
    {
        if (rest_.empty()) {
            reader.fail();
            return -1;
        }
        const int first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }
    [[nodiscard]] bool areUsedUp() const { return rest_.empty(); }

private:
    std::span<const int> rest_;
};

Engine::SourceFile readSource(ByteReader& reader, Descriptors& descriptors)
{
    Engine::SourceFile source;
    source.descriptor = descriptors.next(reader);
    source.size = reader.number<std::int64_t>(0, largestFile);
    return source;
}

void write(ByteWriter& writer, const Setup& setup)
{
    writer.number(std::uint32_t(setup.environment.size()));
    for (const std::string& variable : setup.environment)
        writer.text(QString::fromLatin1(variable.data(), qsizetype(variable.size())), maximumText);
}

Setup readSetup(ByteReader& reader)
{
    Setup setup;
    const auto count = reader.number<std::uint32_t>(0, maximumVariables);
    for (std::uint32_t i = 0; i < count && reader.isSound(); ++i)
        setup.environment.push_back(reader.text(maximumText).toLatin1().toStdString());
    return setup;
}

void write(ByteWriter& writer, const Fork& fork)
{
    writer.number(fork.limits.fileBytes);
    writer.number(fork.limits.processorSeconds);
}

Fork readFork(ByteReader& reader, Descriptors& descriptors)
{
    Fork fork;
    fork.socket = descriptors.next(reader);
    fork.limits.fileBytes = reader.number<std::int64_t>(0, largestFile);
    fork.limits.processorSeconds = reader.number<std::int64_t>(1, farthest);
    return fork;
}

void writeRest(ByteWriter& writer, const Engine::InspectRequest& request, bool)
{
    writer.number(request.maximumDimension);
}

void writeRest(ByteWriter& writer, const Engine::FrameRequest& request, bool isInline)
{
    write(writer, request.expectedSize);
    writer.enumerator(request.format);
    writer.number(request.quality);
    writer.flag(request.summarizes);
    for (const auto* field : fieldsOf(request.metadata))
        write(writer, *field);
    writer.flag(request.keepsPhotoData);
    writer.enumerator(request.depth);
    write(writer, request.composition, isInline);
}

void writeRest(ByteWriter& writer, const Engine::ReadBackRequest& request, bool)
{
    writer.enumerator(request.format);
}

void writeRest(ByteWriter& writer, const Engine::RegionRequest& request, bool isInline)
{
    write(writer, request.expectedSize);
    writer.number(request.x);
    writer.number(request.y);
    write(writer, request.size);
    write(writer, request.composition, isInline);
}

void writeRest(ByteWriter& writer, const Engine::LogoRequest& request, bool)
{
    writer.number(request.maximumDimension);
}

void readRest(ByteReader& reader, Engine::InspectRequest& request, int)
{
    request.maximumDimension = reader.number<std::int64_t>(0, largestSide);
}

void readRest(ByteReader& reader, Engine::FrameRequest& request, int overlayMemory)
{
    request.expectedSize = readSize(reader, 1, largestSide);
    request.format = reader.enumerator<ExportFormat>();
    request.quality = reader.number<double>(0, 1);
    request.summarizes = reader.flag();
    for (auto* field : fieldsOf(request.metadata))
        *field = readOptionalText(reader);
    request.keepsPhotoData = reader.flag();
    request.depth = reader.enumerator<BitDepth>();
    request.composition = readComposition(reader, overlayMemory);
}

void readRest(ByteReader& reader, Engine::ReadBackRequest& request, int)
{
    request.format = reader.enumerator<ExportFormat>();
}

void readRest(ByteReader& reader, Engine::RegionRequest& request, int overlayMemory)
{
    request.expectedSize = readSize(reader, 1, largestSide);
    request.x = reader.number<std::int64_t>(-farthest, farthest);
    request.y = reader.number<std::int64_t>(-farthest, farthest);
    request.size = readSize(reader, 0, largestSide);
    request.composition = readComposition(reader, overlayMemory);
}

void readRest(ByteReader& reader, Engine::LogoRequest& request, int)
{
    request.maximumDimension = reader.number<std::int64_t>(1, largestSide);
}

template <typename Wanted>
constexpr MessageKind kindOf()
{
    if constexpr (std::is_same_v<Wanted, Setup>)
        return MessageKind::setup;
    else if constexpr (std::is_same_v<Wanted, Fork>)
        return MessageKind::fork;
    else if constexpr (std::is_same_v<Wanted, Engine::InspectRequest>)
        return MessageKind::inspect;
    else if constexpr (std::is_same_v<Wanted, Engine::FrameRequest>)
        return MessageKind::frame;
    else if constexpr (std::is_same_v<Wanted, Engine::ReadBackRequest>)
        return MessageKind::readBack;
    else if constexpr (std::is_same_v<Wanted, Engine::RegionRequest>)
        return MessageKind::composeRegion;
    else if constexpr (std::is_same_v<Wanted, Engine::LogoRequest>)
        return MessageKind::rasterizeLogo;
    else if constexpr (std::is_same_v<Wanted, Proceed>)
        return MessageKind::proceed;
    else
        return MessageKind::stop;
}

template <typename Wanted>
Wanted readJob(ByteReader& reader, Descriptors& descriptors, Request& request)
{
    Wanted wanted;
    wanted.source = readSource(reader, descriptors);
    if constexpr (std::is_same_v<Wanted, Engine::FrameRequest>)
        wanted.outputDescriptor = descriptors.next(reader);
    if (reader.flag())
        request.pictureMemory = descriptors.next(reader);
    if (reader.flag())
        request.overlayMemory = descriptors.next(reader);
    readRest(reader, wanted, request.overlayMemory);
    return wanted;
}

} // namespace

std::optional<SharedMemory> overlayMemoryFor(const Request& request)
{
    const Engine::Composition* composition =
        std::visit([](const auto& wanted) { return compositionOf(wanted); }, request.content);
    if (!composition)
        return std::nullopt;
    std::size_t bytes = 0;
    for (const Engine::Overlay& overlay : composition->overlays)
        bytes += byteCount(overlay.picture.size(), overlay.picture.format());
    if (bytes <= inlinePictureBytes)
        return std::nullopt;
    SharedMemory memory(bytes);
    std::size_t offset = 0;
    for (const Engine::Overlay& overlay : composition->overlays) {
        if (!writePicture(memory.descriptor(), overlay.picture, offset))
            throw std::bad_alloc();
        offset += byteCount(overlay.picture.size(), overlay.picture.format());
    }
    static_cast<void>(memory.seal());
    return memory;
}

Message encode(const Request& request)
{
    ByteWriter writer = beginMessage();
    std::vector<int> descriptors;
    const MessageKind kind = std::visit(
        [&]<typename Wanted>(const Wanted& wanted) {
            if constexpr (std::is_same_v<Wanted, Setup>) {
                write(writer, wanted);
            } else if constexpr (std::is_same_v<Wanted, Fork>) {
                descriptors.push_back(wanted.socket);
                write(writer, wanted);
            } else if constexpr (!std::is_empty_v<Wanted>) {
                descriptors.push_back(wanted.source.descriptor);
                writer.number(wanted.source.size);
                if constexpr (std::is_same_v<Wanted, Engine::FrameRequest>)
                    descriptors.push_back(wanted.outputDescriptor);
                for (const int memory : {request.pictureMemory, request.overlayMemory}) {
                    writer.flag(memory >= 0);
                    if (memory >= 0)
                        descriptors.push_back(memory);
                }
                writeRest(writer, wanted, request.overlayMemory < 0);
            }
            return kindOf<Wanted>();
        },
        request.content);
    return sealed(std::move(writer), kind, request.job, std::move(descriptors));
}

std::optional<Request> parseRequest(std::span<const std::byte> message, std::span<const int> given)
{
    if (message.size() < headerLength)
        return std::nullopt;
    const auto header = parseHeader(message.first<headerLength>());
    if (!header || header->bodyLength != message.size() - headerLength || header->descriptorCount != given.size())
        return std::nullopt;
    ByteReader reader(message.subspan(headerLength));
    Descriptors descriptors(given);
    Request request{header->job, {}};
    switch (header->kind) {
    case MessageKind::setup:
        request.content = readSetup(reader);
        break;
    case MessageKind::fork:
        request.content = readFork(reader, descriptors);
        break;
    case MessageKind::inspect:
        request.content = readJob<Engine::InspectRequest>(reader, descriptors, request);
        break;
    case MessageKind::frame:
        request.content = readJob<Engine::FrameRequest>(reader, descriptors, request);
        break;
    case MessageKind::readBack:
        request.content = readJob<Engine::ReadBackRequest>(reader, descriptors, request);
        break;
    case MessageKind::composeRegion:
        request.content = readJob<Engine::RegionRequest>(reader, descriptors, request);
        break;
    case MessageKind::rasterizeLogo:
        request.content = readJob<Engine::LogoRequest>(reader, descriptors, request);
        break;
    case MessageKind::proceed:
        request.content = Proceed{};
        break;
    case MessageKind::stop:
        request.content = Stop{};
        break;
    default:
        return std::nullopt;
    }
    if (!reader.isWhole() || !descriptors.areUsedUp())
        return std::nullopt;
    return request;
}

} // namespace ferrow::Worker
