// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/Gzip.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace ferrow {

namespace {

struct Inflation : z_stream {
    Inflation() : z_stream()
    {
        constexpr int gzipAlone = 16 + MAX_WBITS;
        if (inflateInit2(this, gzipAlone) != Z_OK)
            throw std::bad_alloc();
    }
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;
    ~Inflation() { inflateEnd(this); }
};

} // namespace

bool isGzip(const QByteArray& bytes)
{
    return bytes.startsWith("\x1f\x8b\x08");
}

QByteArray inflatedGzip(const QByteArray& gzip, qsizetype most)
{
    constexpr qsizetype atOnce = 1 << 16;
    Inflation stream;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(gzip.constData()));
    stream.avail_in = uInt(gzip.size());
    QByteArray content;
    for (int state = Z_OK; state == Z_OK && content.size() < most;) {
        const qsizetype before = content.size();
        content.resize(std::min(most, before + atOnce));
        stream.next_out = reinterpret_cast<Bytef*>(content.data() + before);
        stream.avail_out = uInt(content.size() - before);
        state = inflate(&stream, Z_NO_FLUSH);
        content.chop(qsizetype(stream.avail_out));
    }
    return content;
}

} // namespace ferrow
