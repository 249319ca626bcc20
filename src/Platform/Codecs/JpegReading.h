// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/ByteSource.h"
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <QByteArray>

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

#include <jpeglib.h>

// For the codecs over libjpeg alone.
namespace ferrow {

/// A color profile on its way out of a JPEG. One too long for one segment comes in numbered parts. They lie in the
/// library's memory, so that collecting them never throws through it.
class IccParts {
public:
    /// Where the part's bytes go; null for one that is of no use. Of a part that comes twice the first counts.
    JOCTET* place(j_common_ptr codec, int number, int count, std::size_t length);
    /// Empty when a part is missing.
    [[nodiscard]] QByteArray joined() const;

private:
    struct Part {
        const JOCTET* bytes = nullptr;
        std::size_t length = 0;
    };

    std::array<Part, 256> parts_{}; ///< By number, from 1.
    int announced_ = 0;
    std::size_t total_ = 0;
    bool broken_ = false;
};

/// One pass over a file with the library: its handle and callbacks, and how it ended. Throws CodecError. Delivers
/// either rows of pixels or rows of coefficients, with one idea of what is damage.
class JpegReading {
public:
    JpegReading(const ByteSource& source, Tolerance tolerance, std::int64_t end);
    JpegReading(const JpegReading&) = delete;
    JpegReading& operator=(const JpegReading&) = delete;
    ~JpegReading() { jpeg_destroy_decompress(&codec); }

    /// False when the picture's sides are beyond the library, which still knows them.
    bool readHeader();

    void start();
    void readRows(std::int64_t count, std::byte* out, std::size_t stride);

    enum class Keep { oneRow, allRows };
    /// In place of start(): coefficients instead of pixels. A picture in several scans keeps all rows in any case, and
    /// is read here; another is read as far as block rows are asked for.
    void startBlocks(Keep keep);
    /// Row `row` of a component's 8 × 8 blocks: as many as fill whole MCUs. A reading that keeps one row of MCUs only
    /// goes downward, and the blocks hold until the next one is asked for.
    [[nodiscard]] JBLOCKROW blockRow(int component, std::int64_t row);
    /// After the last row that is asked for: reads what is left of the picture.
    void finishBlocks();

    /// After the last row of a picture in one scan: whether coded bytes are left that should have been rows.
    [[nodiscard]] bool leavesBytesUnused();

    /// Offset up to which a picture of several scans could be followed.
    [[nodiscard]] std::int64_t followedUpTo() const { return followedUpTo_; }
    [[nodiscard]] QByteArray icc() const { return icc_.joined(); }
    /// 8 x 8 blocks of the picture, all components.
    [[nodiscard]] std::int64_t blocks() const;

    jpeg_decompress_struct codec{};

private:
    enum class Stop { byLibrary, lostPixels, tooMuchWork };

    /// A component's coefficients: a row of MCUs, or all of them. It stands in for the library's own array, which
    /// always has all.
    struct Plane {
        JBLOCKARRAY rows = nullptr;
        JDIMENSION width = 0; ///< In blocks.
    };

    template <typename Handle>
    static JpegReading& of(Handle* handle)
    {
        return *static_cast<JpegReading*>(handle->client_data);
    }

    [[noreturn]] void stop(Stop why);
    [[nodiscard]] CodecError failure(CodecError::Reason otherwise) const;
    boolean fill();
    void skip(long count);
    std::size_t nextByte();
    void nextBytes(JOCTET* to, std::size_t count);
    boolean collectIcc();
    void weigh(int level);
    void watchScans();
    [[nodiscard]] bool isIncomplete() const;
    [[nodiscard]] bool endedEarly() const;
    jvirt_barray_ptr addPlane(JDIMENSION width, JDIMENSION height);
    void readMcuRow();
    JBLOCKARRAY planeRows(const Plane& plane, JDIMENSION first, JDIMENSION count, bool willBeWritten);

    ErrorTrap trap_;
    SourceReader reader_;
    std::span<const std::byte> ahead_; ///< Read, but not handed to the library yet.
    Tolerance tolerance_;
    jpeg_error_mgr errors_{};
    jpeg_source_mgr bytes_{};
    jpeg_progress_mgr progress_{};
    Stop stop_ = Stop::byLibrary;
    bool endSupplied_ = false;
    IccParts icc_;
    std::bitset<MAX_COMPONENTS> scanned_;
    std::int64_t visits_ = 0;
    std::int64_t followedUpTo_ = 0;
    Keep keep_ = Keep::allRows;
    std::array<Plane, MAX_COMPONENTS> planes_{}; ///< By component.
    std::size_t planeCount_ = 0;
    std::int64_t readMcuRows_ = 0;
};

} // namespace ferrow
