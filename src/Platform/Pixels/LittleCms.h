// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <lcms2.h>

#include <cstddef>
#include <memory>
#include <type_traits>

/// The colour library's handles with their deleters, for the .cpp files of this folder alone.
namespace ferrow::LittleCms {

struct ProfileDeleter {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
struct TransformDeleter {
    void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
struct CurveDeleter {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

using Profile = std::unique_ptr<void, ProfileDeleter>;
using Transform = std::unique_ptr<void, TransformDeleter>;
using Curve = std::unique_ptr<cmsToneCurve, CurveDeleter>;

/// The library's state for some profiles and transforms. It prints nothing, and hands out memory
/// in proportion to the profiles' size, since one of a few hundred bytes may claim tables of half a gigabyte. Must
/// outlive what is made in it.
class Context {
public:
    /// `profileBytes` is the size of the profiles from outside that will be opened in it.
    explicit Context(qsizetype profileBytes = 0);
    [[nodiscard]] cmsContext get() const { return context_.get(); }

private:
    struct Deleter {
        void operator()(cmsContext context) const { cmsDeleteContext(context); }
    };

    std::unique_ptr<std::size_t> bytesLeft_;
    std::unique_ptr<std::remove_pointer_t<cmsContext>, Deleter> context_;
};

/// Null when the bytes are no profile.
[[nodiscard]] Profile openProfile(const Context& context, const QByteArray& icc);

/// A profile's bytes, the same on every run.
[[nodiscard]] QByteArray bytesOf(cmsHPROFILE profile);

/// Null when the library is out of memory.
[[nodiscard]] Curve sRGBCurve(const Context& context);

} // namespace ferrow::LittleCms
