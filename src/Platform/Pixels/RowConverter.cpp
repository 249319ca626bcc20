// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/RowConverter.h"

#include "Platform/Pixels/PixelRows.h"

#include <cstring>

namespace ferrow {

namespace {

class CopiedRows final : public RowConverter {
public:
    explicit CopiedRows(PixelFormat format) : bytesPerPixel_(std::size_t(format.bytesPerPixel())) {}

    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        if (in != out)
            std::memcpy(out, in, pixels * bytesPerPixel_);
    }

private:
    std::size_t bytesPerPixel_;
};

template <typename Source, typename Target>
class RearrangedRows final : public RowConverter {
public:
    void convert(const std::byte* in, std::byte* out, std::size_t pixels) const override
    {
        for (; pixels > 0; --pixels, in += Source::bytes, out += Target::bytes) {
            for (int channel = 0; channel < 3; ++channel)
                Target::setComponent(
                    out, channel,
                    levelAs<typename Target::ComponentType>(Source::component(in, Source::isGray ? 0 : channel)));
            carryAlpha<Source, Target>(in, out);
        }
    }
};

} // namespace

std::unique_ptr<RowConverter> copiedRows(PixelFormat format)
{
    return std::make_unique<CopiedRows>(format);
}

std::unique_ptr<RowConverter> rearrangedRows(PixelFormat source, PixelFormat target)
{
    return withPixelTypes(source, target, []<typename Source, typename Target>() -> std::unique_ptr<RowConverter> {
        return std::make_unique<RearrangedRows<Source, Target>>();
    });
}

} // namespace ferrow
