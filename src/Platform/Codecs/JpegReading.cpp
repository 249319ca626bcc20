// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/JpegReading.h"

#include <algorithm>
#include <cstring>

#include <jerror.h>

namespace ferrow {

namespace {

using Reason = CodecError::Reason;

/// Rows handed to the library in one call.
constexpr std::int64_t rowsAtOnce = 16;

/// The library holds the coefficients of a progressive picture: six bytes a pixel at 200 megapixels without chroma
/// subsampling, eight for CMYK. It has no temporary files in this build; past the ceiling it gives up.
constexpr long memoryCeiling = 2'000'000'000;

/// A few hundred bytes can ask for thousands of scans over a large picture. Real files have up to some tens.
constexpr int maximumScans = 500;
/// All scans together may visit each block of the picture this often; small pictures may do more.
constexpr std::int64_t maximumVisits = 100;
constexpr std::int64_t visitsAlwaysAllowed = 20'000'000;

/// With this much of the file at hand for each 8 x 8 block the library decodes on a path that takes codes which no
/// table has for zeros and does not warn. (BUFSIZE in its jdhuff.c.)
constexpr std::size_t unwarnedBytesPerBlock = std::size_t(DCTSIZE2) * 8;

/// Coded bytes that no block has used tell of damage before them: rows were read from too few bytes. A few files have
/// up to three, damage seldom leaves fewer than some tens (docs/damage.md).
constexpr std::int64_t unusedBytesAllowed = 4;

constexpr std::size_t maximumIccBytes = 16 * 1024 * 1024;
constexpr JOCTET iccSignature[] = {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0};

/// Whether pixels are lost where the library only warns. Stray bytes before a header's marker, odd parameters of a
/// baseline scan, unknown Adobe transforms and bad profile segments cost none.
bool meansLostPixels(const jpeg_decompress_struct& codec)
{
    switch (codec.err->msg_code) {
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC:
    case JWRN_ARITH_BAD_CODE:
        return true;
    case JWRN_EXTRANEOUS_DATA: // Within the picture: at a restart, or between scans.
        return codec.input_scan_number > 0 && codec.err->msg_parm.i[0] > unusedBytesAllowed;
    case JWRN_BOGUS_PROGRESSION:
        // Said of coefficient 0 in a scan that does not carry it, this is about the order of scans alone.
        return codec.err->msg_parm.i[1] > 0 || codec.Ss == 0;
    default:
        return false;
    }
}

/// The kinds that the library knows by name but cannot decode.
QString processName(int marker)
{
    switch (marker) {
    case 0xc3:
    case 0xcb:
        return QStringLiteral("Lossless JPEG");
    case 0xf7:
        return QStringLiteral("JPEG-LS");
    default:
        return QStringLiteral("Hierarchical JPEG");
    }
}

void clear(JBLOCKROW blocks, JDIMENSION count)
{
    std::memset(blocks, 0, std::size_t(count) * sizeof(JBLOCK));
}

} // namespace

JOCTET* IccParts::place(j_common_ptr codec, int number, int count, std::size_t length)
{
    const bool fits = number >= 1 && number <= count && (announced_ == 0 || announced_ == count) &&
                      total_ + length <= maximumIccBytes;
    broken_ = broken_ || !fits;
    if (broken_ || parts_[std::size_t(number)].bytes)
        return nullptr;
    announced_ = count;
    total_ += length;
    auto* bytes = static_cast<JOCTET*>(codec->mem->alloc_large(codec, JPOOL_IMAGE, length + 1));
    parts_[std::size_t(number)] = {bytes, length};
    return bytes;
}

QByteArray IccParts::joined() const
{
    if (broken_)
        return {};
    QByteArray icc;
    icc.reserve(qsizetype(total_));
    for (int number = 1; number <= announced_; ++number) {
        const Part& part = parts_[std::size_t(number)];
        if (!part.bytes)
            return {};
        icc.append(reinterpret_cast<const char*>(part.bytes), qsizetype(part.length));
    }
    return icc;
}

JpegReading::JpegReading(const ByteSource& source, Tolerance tolerance, std::int64_t end)
    : reader_(source, end), tolerance_(tolerance)
{
    codec.err = jpeg_std_error(&errors_);
    codec.client_data = this;
    errors_.error_exit = [](j_common_ptr common) { of(common).trap_.spring(); };
    errors_.emit_message = [](j_common_ptr common, int level) { of(common).weigh(level); };
    errors_.output_message = [](j_common_ptr) {};
    bytes_.init_source = [](j_decompress_ptr) {};
    bytes_.fill_input_buffer = [](j_decompress_ptr reading) { return of(reading).fill(); };
    bytes_.skip_input_data = [](j_decompress_ptr reading, long count) { of(reading).skip(count); };
    bytes_.resync_to_restart = jpeg_resync_to_restart;
    bytes_.term_source = [](j_decompress_ptr) {};
    progress_.progress_monitor = [](j_common_ptr common) { of(common).watchScans(); };
}

bool JpegReading::readHeader()
{
    const bool whole = trap_.run([this] {
        jpeg_create_decompress(&codec);
        codec.mem->max_memory_to_use = memoryCeiling;
        codec.src = &bytes_;
        jpeg_set_marker_processor(&codec, JPEG_APP0 + 2,
                                  [](j_decompress_ptr reading) { return of(reading).collectIcc(); });
        jpeg_read_header(&codec, TRUE);
    });
    if (!whole && errors_.msg_code == JERR_IMAGE_TOO_BIG)
        return false;
    if (!whole)
        throw failure(Reason::malformed);
    return true;
}

void JpegReading::start()
{
    if (jpeg_has_multiple_scans(&codec))
        codec.progress = &progress_;
    if (!trap_.run([this] { jpeg_start_decompress(&codec); }))
        throw failure(Reason::damaged);
    codec.progress = nullptr;
    if (tolerance_ == Tolerance::strict && jpeg_has_multiple_scans(&codec) && isIncomplete())
        throw CodecError{Reason::damaged, {}};
}

void JpegReading::readRows(std::int64_t count, std::byte* out, std::size_t stride)
{
    const bool whole = trap_.run([=, this] {
        std::array<JSAMPROW, rowsAtOnce> rows;
        std::int64_t done = 0;
        while (done < count) {
            const std::int64_t some = std::min(rowsAtOnce, count - done);
            for (std::int64_t i = 0; i < some; ++i)
                rows[std::size_t(i)] = reinterpret_cast<JSAMPROW>(out + std::size_t(done + i) * stride);
            done += jpeg_read_scanlines(&codec, rows.data(), JDIMENSION(some));
        }
    });
    if (!whole || endedEarly())
        throw failure(Reason::damaged);
}

/// Where arithmetic coding ends early the library reads on in zeros without a word.
bool JpegReading::endedEarly() const
{
    return codec.arith_code && endSupplied_ && tolerance_ == Tolerance::strict;
}

void JpegReading::startBlocks(Keep keep)
{
    const bool isInScans = jpeg_has_multiple_scans(&codec);
    keep_ = isInScans ? Keep::allRows : keep;
    codec.mem->request_virt_barray = [](j_common_ptr common, int, boolean, JDIMENSION width, JDIMENSION height,
                                        JDIMENSION) { return of(common).addPlane(width, height); };
    codec.mem->access_virt_barray = [](j_common_ptr common, jvirt_barray_ptr plane, JDIMENSION first, JDIMENSION count,
                                       boolean willBeWritten) {
        return of(common).planeRows(*reinterpret_cast<const Plane*>(plane), first, count, willBeWritten);
    };
    const bool whole = trap_.run([&, this] {
        codec.buffered_image = TRUE; // The library then reads when it is told to, and computes no pixels.
        jpeg_start_decompress(&codec);
        while (isInScans) {
            watchScans();
            if (jpeg_consume_input(&codec) == JPEG_REACHED_EOI)
                break;
        }
    });
    if (!whole || (isInScans && tolerance_ == Tolerance::strict && isIncomplete()))
        throw failure(Reason::damaged);
    if (isInScans)
        readMcuRows_ = codec.total_iMCU_rows;
}

JBLOCKROW JpegReading::blockRow(int component, std::int64_t row)
{
    const int rowsOfMcu = codec.comp_info[component].v_samp_factor;
    while (readMcuRows_ <= row / rowsOfMcu)
        readMcuRow();
    return planes_[std::size_t(component)].rows[keep_ == Keep::allRows ? row : row % rowsOfMcu];
}

void JpegReading::finishBlocks()
{
    while (readMcuRows_ < codec.total_iMCU_rows)
        readMcuRow();
    if (!jpeg_has_multiple_scans(&codec) && leavesBytesUnused())
        throw CodecError{Reason::damaged, {}};
}

void JpegReading::readMcuRow()
{
    ++readMcuRows_;
    if (!trap_.run([this] { jpeg_consume_input(&codec); }) || endedEarly())
        throw failure(Reason::damaged);
}

/// The library asks for its components' arrays in their order.
jvirt_barray_ptr JpegReading::addPlane(JDIMENSION width, JDIMENSION height)
{
    auto* common = reinterpret_cast<j_common_ptr>(&codec);
    const auto rowsOfMcu = JDIMENSION(codec.comp_info[planeCount_].v_samp_factor);
    Plane& plane = planes_[planeCount_++];
    plane.width = width;
    plane.rows = codec.mem->alloc_barray(common, JPOOL_IMAGE, width, keep_ == Keep::allRows ? height : rowsOfMcu);
    for (JDIMENSION row = 0; keep_ == Keep::allRows && row < height; ++row)
        clear(plane.rows[row], width);
    return reinterpret_cast<jvirt_barray_ptr>(&plane);
}

/// Blocks are decoded into zeros.
JBLOCKARRAY JpegReading::planeRows(const Plane& plane, JDIMENSION first, JDIMENSION count, bool willBeWritten)
{
    if (keep_ == Keep::allRows)
        return plane.rows + first;
    for (JDIMENSION row = 0; willBeWritten && row < count; ++row)
        clear(plane.rows[row], plane.width);
    return plane.rows;
}

bool JpegReading::leavesBytesUnused()
{
    std::int64_t unused = 0;
    int marker = codec.unread_marker;
    const bool whole = trap_.run([&] {
        while (marker == 0) {
            std::size_t byte = nextByte();
            if (byte == 0xff) {
                while (byte == 0xff)
                    byte = nextByte();
                marker = int(byte); // 0 stands for a coded 255.
            }
            unused += marker == 0 ? 1 : 0;
        }
    });
    if (!whole)
        throw failure(Reason::damaged);
    const bool isRestart = marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7;
    // Some cameras forget the end marker, and then nothing tells junk from rows.
    return isRestart || (unused > unusedBytesAllowed && !endSupplied_);
}

std::int64_t JpegReading::blocks() const
{
    std::int64_t sum = 0;
    for (int i = 0; i < codec.num_components; ++i) {
        const jpeg_component_info& component = codec.comp_info[i];
        sum += std::int64_t(component.width_in_blocks) * component.height_in_blocks;
    }
    return sum;
}

void JpegReading::stop(Stop why)
{
    stop_ = why;
    trap_.spring();
}

/// What ended the last call; `otherwise` where the library's code has no better word for it.
CodecError JpegReading::failure(Reason otherwise) const
{
    if (reader_.refused())
        return {Reason::unreadable, {}};
    if (stop_ != Stop::byLibrary)
        return {stop_ == Stop::lostPixels ? Reason::damaged : Reason::malformed, {}};
    switch (errors_.msg_code) {
    case JERR_BAD_PRECISION:
        return {Reason::unsupported, QStringLiteral("%1-bit JPEG").arg(codec.data_precision)};
    case JERR_SOF_UNSUPPORTED:
        return {Reason::unsupported, processName(errors_.msg_parm.i[0])};
    case JERR_UNKNOWN_MARKER:
        if (errors_.msg_parm.i[0] == 0xf7)
            return {Reason::unsupported, processName(0xf7)};
        return {otherwise, {}};
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE:
    case JERR_WIDTH_OVERFLOW:
        return {Reason::tooLarge, {}};
    default:
        return {otherwise, {}};
    }
}

/// The bit reader looks ahead, so that asking for bytes behind the end loses nothing yet: an end marker is made up,
/// and the library warns once it lacks bits for a pixel.
boolean JpegReading::fill()
{
    static constexpr JOCTET endMarker[] = {0xff, JPEG_EOI};
    if (ahead_.empty())
        ahead_ = reader_.next();
    const bool isWarned = tolerance_ == Tolerance::tolerant || codec.progressive_mode || codec.arith_code;
    const std::size_t unwarned = unwarnedBytesPerBlock * std::size_t(std::max(codec.blocks_in_MCU, 1));
    const auto some = ahead_.first(isWarned ? ahead_.size() : std::min(ahead_.size(), unwarned - 1));
    ahead_ = ahead_.subspan(some.size());
    if (reader_.refused())
        trap_.spring();
    endSupplied_ = endSupplied_ || some.empty();
    bytes_.next_input_byte = some.empty() ? endMarker : reinterpret_cast<const JOCTET*>(some.data());
    bytes_.bytes_in_buffer = some.empty() ? sizeof endMarker : some.size();
    return TRUE;
}

void JpegReading::skip(long count)
{
    const auto wanted = std::size_t(std::max(count, 0L));
    const std::size_t here = std::min(wanted, bytes_.bytes_in_buffer);
    bytes_.next_input_byte += here;
    bytes_.bytes_in_buffer -= here;
    const std::size_t then = std::min(wanted - here, ahead_.size());
    ahead_ = ahead_.subspan(then);
    reader_.skip(std::int64_t(wanted - here - then));
}

std::size_t JpegReading::nextByte()
{
    if (bytes_.bytes_in_buffer == 0)
        fill();
    --bytes_.bytes_in_buffer;
    return *bytes_.next_input_byte++;
}

void JpegReading::nextBytes(JOCTET* to, std::size_t count)
{
    while (count > 0) {
        if (bytes_.bytes_in_buffer == 0)
            fill();
        const std::size_t some = std::min(count, bytes_.bytes_in_buffer);
        std::memcpy(to, bytes_.next_input_byte, some);
        bytes_.next_input_byte += some;
        bytes_.bytes_in_buffer -= some;
        to += some;
        count -= some;
    }
}

boolean JpegReading::collectIcc()
{
    std::size_t length = nextByte() << 8;
    length += nextByte();
    length = length < 2 ? 0 : length - 2;
    JOCTET head[sizeof iccSignature + 2];
    if (length < sizeof head) {
        skip(long(length));
        return TRUE;
    }
    nextBytes(head, sizeof head);
    length -= sizeof head;
    JOCTET* place = nullptr;
    if (std::memcmp(head, iccSignature, sizeof iccSignature) == 0)
        place = icc_.place(reinterpret_cast<j_common_ptr>(&codec), head[sizeof iccSignature],
                           head[sizeof iccSignature + 1], length);
    if (place)
        nextBytes(place, length);
    else
        skip(long(length));
    return TRUE;
}

void JpegReading::weigh(int level)
{
    if (level >= 0 || !meansLostPixels(codec))
        return;
    // With nothing but the beginning lost there is no picture to be tolerant of.
    const bool nothingYet = errors_.msg_code != JWRN_EXTRANEOUS_DATA && codec.input_scan_number <= 1 &&
                            codec.input_iMCU_row == 0 && codec.total_iMCU_rows > 1;
    if (tolerance_ == Tolerance::strict || nothingYet)
        stop(Stop::lostPixels);
}

/// Called before each row of blocks and each run of markers of a picture in several scans.
void JpegReading::watchScans()
{
    for (int i = 0; i < codec.comps_in_scan; ++i) {
        const jpeg_component_info& component = *codec.cur_comp_info[i];
        scanned_.set(std::size_t(component.component_index));
        visits_ += std::int64_t(component.width_in_blocks) * component.v_samp_factor;
    }
    if (codec.input_scan_number > maximumScans || visits_ > std::max(visitsAlwaysAllowed, maximumVisits * blocks()))
        stop(Stop::tooMuchWork);
    // A marker that the bit reader ran into is read already, yet not followed.
    const std::int64_t marker = codec.unread_marker != 0 ? 2 : 0;
    followedUpTo_ = reader_.position() - std::int64_t(ahead_.size() + bytes_.bytes_in_buffer) - marker;
}

bool JpegReading::isIncomplete() const
{
    for (int i = 0; i < codec.num_components; ++i) {
        if (!scanned_.test(std::size_t(i)))
            return true;
        if (!codec.progressive_mode)
            continue;
        const int* bits = codec.coef_bits[i];
        if (bits[0] < 0)
            return true;
        // Between two scans nothing but the missing end tells that more was to come.
        if (endSupplied_ && std::any_of(bits, bits + DCTSIZE2, [](int missing) { return missing != 0; }))
            return true;
    }
    return false;
}

} // namespace ferrow
