// SPDX-License-Identifier: GPL-3.0-or-later
#include "Worker/WarmUp.h"

#include "Platform/Codecs/ImageDecoder.h"
#include "Platform/Codecs/ImageEncoder.h"
#include "Platform/Files/MemoryFile.h"
#include "Worker/SharedMemory.h"

#include <ctime>

namespace ferrow::Worker {

namespace {

constexpr std::int64_t side = 16;

/// Color profiles, tables and whatever else an encoder makes at its first use: else each photo's process would, anew.
void writeTinyPicture(OutputType type)
{
    const Descriptor file = openMemoryFile("ferrow-warm-up");
    if (!file.isOpen())
        return;
    ByteSink sink(file.get());
    const std::vector<std::byte> rows(side * side * 3);
    EncodeOptions options;
    options.size = {side, side};
    options.profile = ColorProfile::sRGB();
    try {
        const auto encoder = openEncoder(type, sink, options);
        encoder->writeRows(side, rows.data(), side * 3);
        encoder->finish();
    } catch (const EncoderError&) {
        // Then photos will be refused, each with its reason.
    }
}

} // namespace

void warmUpCodecs()
{
    loadCodecPlugins();
    ::tzset(); // Color profiles that are made get the date.
    writeTinyPicture(OutputType::jpeg);
}

void warmUpHeicEncoder()
{
    writeTinyPicture(OutputType::heif);
}

} // namespace ferrow::Worker
