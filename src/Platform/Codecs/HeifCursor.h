// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Codecs/ImageDecoder.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <span>

/// For the walk over HEIF boxes alone.
namespace ferrow::heif {

constexpr std::uint32_t fourCharacters(const char (&name)[5])
{
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(name[i]);
    return code;
}

[[noreturn]] inline void refuse()
{
    throw CodecError{CodecError::Reason::malformed, {}};
}

[[noreturn]] inline void refuseKind(const QString& kind)
{
    throw CodecError{CodecError::Reason::unsupported, kind};
}

/// Big-endian values from the front of a byte range; refuses to read past its end.
class Cursor {
public:
    explicit Cursor(std::span<const std::byte> bytes) : rest_(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

    std::span<const std::byte> take(std::uint64_t count)
    {
        if (count > rest_.size())
            refuse();
        const auto taken = rest_.first(std::size_t(count));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    /// `width` in bytes, 0…8; 0 gives 0.
    std::uint64_t number(std::uint64_t width)
    {
        std::uint64_t value = 0;
        for (const std::byte byte : take(width))
            value = value << 8 | std::to_integer<std::uint64_t>(byte);
        return value;
    }
    std::uint32_t number32(std::uint64_t width) { return std::uint32_t(number(width)); }

    struct VersionAndFlags {
        int version = 0;
        std::uint32_t flags = 0;
    };
    VersionAndFlags versionAndFlags()
    {
        const std::uint32_t both = number32(4);
        return {int(both >> 24), both & 0xffffff};
    }

    struct Box;
    Box box();

private:
    std::span<const std::byte> rest_;
};

struct Cursor::Box {
    std::uint32_t type = 0;
    Cursor content;
};

inline Cursor::Box Cursor::box()
{
    std::uint64_t size = number(4);
    const std::uint32_t type = number32(4);
    std::uint64_t headerSize = 8;
    if (size == 1) {
        size = number(8);
        headerSize = 16;
    } else if (size == 0) {
        size = headerSize + rest_.size();
    }
    if (size < headerSize)
        refuse();
    return {type, Cursor(take(size - headerSize))};
}

} // namespace ferrow::heif
