// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/PreviewLoader.h"

#include "Platform/Base/Cancellation.h"

#include <utility>

namespace ferrow {

namespace {

/// One that was overtaken must not hold up the newest; more would only compete with it.
constexpr int decodesAtOnce = 2;

} // namespace

PreviewLoader::PreviewLoader(Decode decode, QObject* parent)
    : QObject(parent), decode_(std::move(decode)), work_(decodesAtOnce)
{
}

std::stop_source PreviewLoader::load(const std::optional<ImportedPhoto>& photo, Failed failed)
{
    std::stop_source stop;
    if (!photo) {
        clear();
        return stop;
    }
    const std::int64_t token = ++generation_;
    setLoading(true);
    const auto finish = [this, token, stop, failed = std::move(failed)](std::optional<ImportedPhoto> decoded,
                                                                        const std::exception_ptr& error) {
        if (decoded && !stop.stop_requested() && generation_ == token)
            setPhoto(std::move(decoded));
        setLoading(false);
        if (error && !stop.stop_requested() && failed)
            failed(error);
    };
    const auto decode = [url = photo->url, stop, decode = decode_, finish, sender = relay_.sender()] {
        try {
            // Whoever runs through the list asks for many photos and looks at the last.
            throwIfCanceled(stop.get_token());
            sender.post([finish, decoded = decode(url, stop.get_token())] { finish(decoded, nullptr); });
        } catch (...) {
            sender.post([finish, error = std::current_exception()] { finish(std::nullopt, error); });
        }
    };
    try {
        work_.post(decode);
    } catch (...) {
        relay_.sender().post([finish, error = std::current_exception()] { finish(std::nullopt, error); });
    }
    return stop;
}

void PreviewLoader::clear()
{
    ++generation_;
    setPhoto(std::nullopt);
    setLoading(false);
}

void PreviewLoader::setPhoto(std::optional<ImportedPhoto> photo)
{
    if (!photo && !photo_)
        return;
    photo_ = std::move(photo);
    emit photoChanged();
}

void PreviewLoader::setLoading(bool isLoading)
{
    if (std::exchange(isLoading_, isLoading) != isLoading)
        emit isLoadingChanged();
}

} // namespace ferrow
