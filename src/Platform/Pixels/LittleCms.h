// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/Releaser.h"

#include <QByteArray>

#include <lcms2.h>

#include <cstddef>
#include <memory>
#include <type_traits>

/// The color library's handles with their deleters, for the .cpp files of this folder alone.
namespace ferrow::LittleCms {

using Profile = std::unique_ptr<void, Releaser<cmsCloseProfile>>;
using Transform = std::unique_ptr<void, Releaser<cmsDeleteTransform>>;
using Curve = std::unique_ptr<cmsToneCurve, Releaser<cmsFreeToneCurve>>;

/// The library's state for some profiles and transforms. It prints nothing, and hands out memory
/// in proportion to the profiles' size, since one of a few hundred bytes may claim tables of half a gigabyte. Must
/// outlive what is made in it.
class Context {
public:
    /// `profileBytes` is the size of the profiles from outside that will be opened in it.
    explicit Context(qsizetype profileBytes = 0);
    [[nodiscard]] cmsContext get() const { return context_.get(); }

private:
    std::unique_ptr<std::size_t> bytesLeft_;
    std::unique_ptr<std::remove_pointer_t<cmsContext>, Releaser<cmsDeleteContext>> context_;
};

/// Null when the bytes are no profile.
[[nodiscard]] Profile openProfile(const Context& context, const QByteArray& icc);

/// A profile's bytes, the same on every run.
[[nodiscard]] QByteArray bytesOf(cmsHPROFILE profile);

/// Null when the library is out of memory.
[[nodiscard]] Curve sRGBCurve(const Context& context);

} // namespace ferrow::LittleCms
