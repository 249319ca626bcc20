// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/HevcSequence.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

namespace ferrow {

namespace {

constexpr int sequenceUnit = 33;

/// Bits from the first on. Behind the end come zeros, and wasCut() says so.
class BitReader {
public:
    /// Takes out the bytes that keep the payload from looking like a start code.
    explicit BitReader(std::span<const std::byte> unit)
    {
        int zeros = 0;
        for (const std::byte byte : unit.first(std::min(unit.size(), hevcSequenceReach))) {
            const bool isStuffed = zeros >= 2 && byte == std::byte(3);
            zeros = byte == std::byte(0) ? zeros + 1 : 0;
            if (!isStuffed)
                bytes_.push_back(byte);
        }
    }

    void skip(std::size_t bits) { position_ += bits; }

    std::uint32_t bit()
    {
        const std::size_t at = position_++ / 8;
        return at < bytes_.size() ? std::to_integer<std::uint32_t>(bytes_[at]) >> (7 - (position_ - 1) % 8) & 1 : 0;
    }
    std::uint32_t bits(int count)
    {
        std::uint32_t value = 0;
        for (; count > 0; --count)
            value = value << 1 | bit();
        return value;
    }
    /// Exponential-Golomb code. More than 32 zeros stand for no number.
    std::int64_t number()
    {
        int zeros = 0;
        while (zeros <= 32 && bit() == 0)
            ++zeros;
        if (zeros > 32)
            position_ = std::numeric_limits<std::size_t>::max() / 2;
        return zeros > 32 ? 0 : (std::int64_t(1) << zeros) - 1 + bits(zeros);
    }

    [[nodiscard]] bool wasCut() const { return position_ > bytes_.size() * 8; }

private:
    std::vector<std::byte> bytes_;
    std::size_t position_ = 0;
};

void skipProfilesAndLevels(BitReader& reader, std::uint32_t subLayers)
{
    constexpr std::size_t profileBits = 88;
    constexpr std::size_t levelBits = 8;
    reader.skip(profileBits + levelBits);
    std::size_t inSubLayers = 0;
    for (std::uint32_t i = 0; i < subLayers; ++i) {
        inSubLayers += reader.bit() != 0 ? profileBits : 0;
        inSubLayers += reader.bit() != 0 ? levelBits : 0;
    }
    // Once there is one, the flags of all eight take their place.
    reader.skip(subLayers > 0 ? std::size_t(8 - subLayers) * 2 : 0);
    reader.skip(inSubLayers);
}

} // namespace

std::optional<HevcSequence> readHevcSequence(std::span<const std::byte> unit)
{
    BitReader reader(unit);
    reader.skip(1);
    const std::uint32_t type = reader.bits(6);
    const std::uint32_t layer = reader.bits(6);
    if (type != sequenceUnit || layer != 0)
        return std::nullopt;
    reader.skip(3 + 4); // Temporal layer, parameter set above.
    const std::uint32_t subLayers = reader.bits(3);
    reader.skip(1);
    skipProfilesAndLevels(reader, subLayers);

    reader.number(); // Its own number.
    const std::int64_t chroma = reader.number();
    if (chroma == 3)
        reader.skip(1);
    HevcSequence sequence;
    sequence.coded.width = reader.number();
    sequence.coded.height = reader.number();
    sequence.shown = sequence.coded;
    if (reader.bit() != 0) {
        const int across = chroma == 1 || chroma == 2 ? 2 : 1;
        const int down = chroma == 1 ? 2 : 1;
        sequence.shown.width -= (reader.number() + reader.number()) * across;
        sequence.shown.height -= (reader.number() + reader.number()) * down;
    }
    return reader.wasCut() ? HevcSequence() : sequence;
}

} // namespace ferrow
