// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Pixels/LittleCms.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>

namespace ferrow::LittleCms {

namespace {

/// What the library may take for its own tables, and for each byte of a profile: it keeps the profile, unpacks what is
/// in it to twice the size or more, and copies that while it puts a transform together.
constexpr std::size_t ownMemory = std::size_t{24} << 20;
constexpr std::size_t memoryPerByte = 10;

/// Whether `size` more bytes may be had. What is given back doesn't count: the bound is on a profile's whole life, so
/// that neither many tables nor one that is asked for again and again costs much time. The context that the library
/// uses while it sets itself up has no budget yet.
bool spend(cmsContext context, cmsUInt32Number size)
{
    auto* left = static_cast<std::size_t*>(cmsGetContextUserData(context));
    if (!left)
        return true;
    if (size > *left)
        return false;
    *left -= size;
    return true;
}

void* allocate(cmsContext context, cmsUInt32Number size)
{
    return spend(context, size) ? std::malloc(size) : nullptr;
}

void release(cmsContext, void* memory)
{
    std::free(memory);
}

void* reallocate(cmsContext context, void* memory, cmsUInt32Number size)
{
    return spend(context, size) ? std::realloc(memory, size) : nullptr;
}

cmsPluginMemHandler boundedMemory{{cmsPluginMagicNumber, 2000, cmsPluginMemHandlerSig, nullptr},
                                  allocate,
                                  release,
                                  reallocate,
                                  nullptr,
                                  nullptr,
                                  nullptr};

} // namespace

Context::Context(qsizetype profileBytes)
    : bytesLeft_(std::make_unique<std::size_t>(ownMemory + memoryPerByte * std::size_t(profileBytes))),
      context_(cmsCreateContext(&boundedMemory, bytesLeft_.get()))
{
    if (!context_)
        throw std::bad_alloc();
}

Profile openProfile(const Context& context, const QByteArray& icc)
{
    Profile profile(cmsOpenProfileFromMemTHR(context.get(), icc.constData(), static_cast<cmsUInt32Number>(icc.size())));
    if (!profile)
        return nullptr;
    // Chains of processing elements have no bound on the work a pixel costs. A profile that has them must bring tables
    // or a matrix for the same intents as well, which the library takes when they are gone.
    for (const cmsTagSignature tag : {cmsSigDToB0Tag, cmsSigDToB1Tag, cmsSigDToB2Tag, cmsSigDToB3Tag, cmsSigBToD0Tag,
                                      cmsSigBToD1Tag, cmsSigBToD2Tag, cmsSigBToD3Tag})
        if (cmsIsTag(profile.get(), tag))
            cmsWriteTag(profile.get(), tag, nullptr);
    return profile;
}

Curve sRGBCurve(const Context& context)
{
    // Exponent, scale, offset, slope of the straight part and where it ends (IEC 61966-2-1).
    const cmsFloat64Number parameters[]{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(context.get(), 4, parameters));
}

QByteArray bytesOf(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(qsizetype(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    // The library has stamped the time of day into the header.
    constexpr std::array<char, 12> newYear2000{'\x07', '\xd0', 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
    std::copy(newYear2000.begin(), newYear2000.end(), bytes.begin() + 24);
    return bytes;
}

} // namespace ferrow::LittleCms
