// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Codecs/CodecSupport.h"
#include "Platform/Codecs/ImageDecoder.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>

#include <jpeglib.h>

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

/// A profile too long for one segment comes in numbered parts. They lie in the library's memory, so that collecting
/// them never throws through it.
struct IccParts {
    struct Part {
        const JOCTET* bytes = nullptr;
        std::size_t length = 0;
    };

    std::array<Part, 256> parts{}; ///< By number, from 1.
    int announced = 0;
    std::size_t total = 0;
    bool broken = false;

    /// Where the part's bytes go; null for one that is of no use. Of a part that comes twice the first counts.
    JOCTET* place(j_common_ptr codec, int number, int count, std::size_t length)
    {
        const bool fits = number >= 1 && number <= count && (announced == 0 || announced == count) &&
                          total + length <= maximumIccBytes;
        broken = broken || !fits;
        if (broken || parts[std::size_t(number)].bytes)
            return nullptr;
        announced = count;
        total += length;
        auto* bytes = static_cast<JOCTET*>(codec->mem->alloc_large(codec, JPOOL_IMAGE, length + 1));
        parts[std::size_t(number)] = {bytes, length};
        return bytes;
    }

    /// Empty when a part is missing.
    [[nodiscard]] QByteArray joined() const
    {
        if (broken)
            return {};
        QByteArray icc;
        icc.reserve(qsizetype(total));
        for (int number = 1; number <= announced; ++number) {
            const Part& part = parts[std::size_t(number)];
            if (!part.bytes)
                return {};
            icc.append(reinterpret_cast<const char*>(part.bytes), qsizetype(part.length));
        }
        return icc;
    }
};

ColorModel modelOf(int components)
{
    return components == 1 ? ColorModel::gray : components == 4 ? ColorModel::cmyk : ColorModel::rgb;
}

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

/// One pass over a file with the library: its handle and callbacks, and how it ended.
class JpegReading {
public:
    JpegReading(const ByteSource& source, Tolerance tolerance, std::int64_t end)
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
    JpegReading(const JpegReading&) = delete;
    JpegReading& operator=(const JpegReading&) = delete;
    ~JpegReading() { jpeg_destroy_decompress(&codec); }

    /// False when the picture's sides are beyond the library, which still knows them.
    bool readHeader()
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

    void start()
    {
        if (jpeg_has_multiple_scans(&codec))
            codec.progress = &progress_;
        if (!trap_.run([this] { jpeg_start_decompress(&codec); }))
            throw failure(Reason::damaged);
        codec.progress = nullptr;
        if (tolerance_ == Tolerance::strict && jpeg_has_multiple_scans(&codec) && isIncomplete())
            throw CodecError{Reason::damaged, {}};
    }

    void readRows(std::int64_t count, std::byte* out, std::size_t stride)
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
        // Where arithmetic coding ends early the library reads on in zeros without a word.
        const bool endedEarly = codec.arith_code && endSupplied_ && tolerance_ == Tolerance::strict;
        if (!whole || endedEarly)
            throw failure(Reason::damaged);
    }

    /// After the last row of a picture in one scan: whether coded bytes are left that should have been rows.
    [[nodiscard]] bool leavesBytesUnused()
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

    /// Offset up to which a picture of several scans could be followed.
    [[nodiscard]] std::int64_t followedUpTo() const { return followedUpTo_; }
    [[nodiscard]] QByteArray icc() const { return icc_.joined(); }
    /// 8 x 8 blocks of the picture, all components.
    [[nodiscard]] std::int64_t blocks() const
    {
        std::int64_t sum = 0;
        for (int i = 0; i < codec.num_components; ++i) {
            const jpeg_component_info& component = codec.comp_info[i];
            sum += std::int64_t(component.width_in_blocks) * component.height_in_blocks;
        }
        return sum;
    }

    jpeg_decompress_struct codec{};

private:
    enum class Stop { byLibrary, lostPixels, tooMuchWork };

    template <typename Handle>
    static JpegReading& of(Handle* handle)
    {
        return *static_cast<JpegReading*>(handle->client_data);
    }

    [[noreturn]] void stop(Stop why)
    {
        stop_ = why;
        trap_.spring();
    }

    /// What ended the last call; `otherwise` where the library's code has no better word for it.
    [[nodiscard]] CodecError failure(Reason otherwise) const
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
    boolean fill()
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

    void skip(long count)
    {
        const auto wanted = std::size_t(std::max(count, 0L));
        const std::size_t here = std::min(wanted, bytes_.bytes_in_buffer);
        bytes_.next_input_byte += here;
        bytes_.bytes_in_buffer -= here;
        const std::size_t then = std::min(wanted - here, ahead_.size());
        ahead_ = ahead_.subspan(then);
        reader_.skip(std::int64_t(wanted - here - then));
    }

    std::size_t nextByte()
    {
        if (bytes_.bytes_in_buffer == 0)
            fill();
        --bytes_.bytes_in_buffer;
        return *bytes_.next_input_byte++;
    }

    void nextBytes(JOCTET* to, std::size_t count)
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

    boolean collectIcc()
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

    void weigh(int level)
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
    void watchScans()
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

    [[nodiscard]] bool isIncomplete() const
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
};

class JpegDecoder final : public ImageDecoder {
public:
    JpegDecoder(const ByteSource& source, const DecodeOptions& options) : source_(source), options_(options)
    {
        open(source.size());
    }

    [[nodiscard]] PixelSize storedSize() const override { return {codec().image_width, codec().image_height}; }
    [[nodiscard]] PixelSize size() const override
    {
        return beyondLibrary_ ? storedSize() : PixelSize{codec().output_width, codec().output_height};
    }
    [[nodiscard]] PixelFormat format() const override { return {modelOf(codec().num_components), 8, Alpha::none}; }
    [[nodiscard]] ColorProfile profile() const override { return profile_; }
    [[nodiscard]] std::int64_t heldBytes() const override
    {
        const bool holds =
            !beyondLibrary_ && (codec().progressive_mode || codec().comps_in_scan < codec().num_components);
        return holds ? reading_->blocks() * DCTSIZE2 * std::int64_t(sizeof(JCOEF)) : 0;
    }

    void readRows(std::int64_t count, std::byte* out, std::size_t stride) override
    {
        if (beyondLibrary_)
            throw CodecError{Reason::tooLarge, {}};
        if (!started_)
            start();
        const std::int64_t before = codec().output_scanline;
        if (!broken_)
            readSome(count, out, stride);
        const std::int64_t delivered = broken_ ? codec().output_scanline - before : count;
        const std::size_t rowBytes = std::size_t(size().width) * std::size_t(format().bytesPerPixel());
        for (std::int64_t y = 0; y < count; ++y) {
            auto* row = reinterpret_cast<std::uint8_t*>(out + std::size_t(y) * stride);
            if (y >= delivered)
                fillGray(row, rowBytes);
            else if (inkInverted_)
                std::transform(row, row + rowBytes, row, [](std::uint8_t ink) { return std::uint8_t(255 - ink); });
        }
    }

    /// Half of every ink would be nearly black: gray is half of the black one alone.
    void fillGray(std::uint8_t* row, std::size_t bytes) const
    {
        std::memset(row, 0x80, bytes);
        if (format().model != ColorModel::cmyk)
            return;
        for (std::size_t i = 0; i < bytes; ++i)
            row[i] = i % 4 == 3 ? 0x80 : 0;
    }

    /// Behind the end marker lie junk and further pictures: none of it is ours.
    void finish() override
    {
        // Of several scans all was read before the first row.
        const bool isOneScan = !jpeg_has_multiple_scans(&reading_->codec);
        if (options_.tolerance == Tolerance::strict && isOneScan && reading_->leavesBytesUnused())
            throw CodecError{Reason::damaged, {}};
    }

private:
    [[nodiscard]] const jpeg_decompress_struct& codec() const { return reading_->codec; }

    void open(std::int64_t end)
    {
        reading_ = std::make_unique<JpegReading>(source_, options_.tolerance, end);
        beyondLibrary_ = !reading_->readHeader();
        const int components = codec().num_components;
        if (components != 1 && components != 3 && components != 4)
            throw CodecError{Reason::unsupported, QStringLiteral("%1-channel JPEG").arg(components)};
        if (beyondLibrary_)
            return;
        profile_ = ColorProfile::fromIcc(reading_->icc(), modelOf(components)).value_or(ColorProfile());
        // Adobe's programs, which set the custom, write inks inverted.
        inkInverted_ = components == 4 && codec().saw_Adobe_marker;
        reading_->codec.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
        chooseReduction();
    }

    void chooseReduction()
    {
        jpeg_decompress_struct& handle = reading_->codec;
        handle.scale_num = 1;
        for (handle.scale_denom = options_.enoughDimension > 0 ? options_.mostReduction : 1;; handle.scale_denom /= 2) {
            jpeg_calc_output_dimensions(&handle);
            if (handle.scale_denom == 1 || size().longestSide() >= options_.enoughDimension)
                return;
        }
    }

    void start()
    {
        started_ = true;
        try {
            reading_->start();
        } catch (const CodecError& error) {
            const std::int64_t end = reading_->followedUpTo();
            if (error.reason != Reason::damaged || options_.tolerance == Tolerance::strict || end == 0)
                throw;
            // A file cut amid the tables between two scans: what came before them is a picture.
            open(end);
            reading_->start();
        }
    }

    void readSome(std::int64_t count, std::byte* out, std::size_t stride)
    {
        try {
            reading_->readRows(count, out, stride);
        } catch (const CodecError& error) {
            const bool someRows = codec().output_scanline > 0;
            if (error.reason != Reason::damaged || options_.tolerance == Tolerance::strict || !someRows)
                throw;
            broken_ = true;
        }
    }

    const ByteSource& source_;
    DecodeOptions options_;
    std::unique_ptr<JpegReading> reading_;
    ColorProfile profile_;
    bool beyondLibrary_ = false;
    bool inkInverted_ = false;
    bool started_ = false;
    bool broken_ = false;
};

} // namespace

std::unique_ptr<ImageDecoder> openJpegDecoder(const ByteSource& source, const DecodeOptions& options)
{
    return std::make_unique<JpegDecoder>(source, options);
}

} // namespace ferrow
