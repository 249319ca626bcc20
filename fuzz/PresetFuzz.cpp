// SPDX-License-Identifier: GPL-3.0-or-later
// Preset files: what was read is written and read again without a change.
#include "FuzzSupport.h"

#include "Persistence/PresetModels.h"

using namespace ferrow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
try {
    const PresetDocument document = PresetDocument::decode(fuzz::bytesOf(data, size));
    for (const PhotoPreset& preset : document.presets)
        static_cast<void>(preset.payload.recipe());
    const QByteArray json = document.encode();
    const PresetDocument again = PresetDocument::decode(json);
    fuzz::require(again.encode() == json, "what was written is read the same");
    fuzz::require(again.presets.size() == document.presets.size(), "no preset is lost");
    for (std::size_t i = 0; i < again.presets.size(); ++i)
        fuzz::require(again.presets[i].payload == document.presets[i].payload, "no value is lost");
    return 0;
} catch (const PresetCodingError&) {
    return 0;
}
