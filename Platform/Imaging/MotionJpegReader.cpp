#include "Platform/Imaging/MotionJpegReader.h"

#include "Platform/Imaging/ImagingError.h"

#include <jerror.h>
#include <jpeglib.h>

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

namespace Platform::Imaging {
namespace {

/// More than any camera's padding, less than what a picture loses by damage that can be seen.
constexpr int maxStrayBytes = 64;

constexpr int endMark = 0xD9;

/// The library's error handling, with the place to go on at after an error. Its functions are called from C
/// and must not throw.
struct ErrorHandler {
    jpeg_error_mgr manager{};
    jpeg_progress_mgr progress{};
    std::jmp_buf place{};
    std::array<char, JMSG_LENGTH_MAX> text{};

    static ErrorHandler& of(j_common_ptr jpeg) { return *static_cast<ErrorHandler*>(jpeg->client_data); }

    [[noreturn]] static void fail(j_common_ptr jpeg) {
        ErrorHandler& handler = of(jpeg);
        handler.manager.format_message(jpeg, handler.text.data());
        std::longjmp(handler.place, 1);
    }

    /// A warning (below 0) means pixels that are missing or wrong, but for those of a camera's habits.
    static void judge(j_common_ptr jpeg, int level) {
        if (level >= 0)
            return;
        const ErrorHandler& handler = of(jpeg);
        const auto& parameters = handler.manager.msg_parm.i;
        const bool strayBytes = handler.manager.msg_code == JWRN_EXTRANEOUS_DATA && parameters[1] == endMark &&
                                parameters[0] <= maxStrayBytes;
        // Where the data, too, ends early, another warning follows.
        const bool noEndMark = handler.manager.msg_code == JWRN_JPEG_EOF;
        if (!strayBytes && !noEndMark)
            fail(jpeg);
    }

    /// Each scan is a pass over the whole picture, for which a few bytes are enough; a component needs one of its own
    /// at most.
    static void limitScans(j_common_ptr jpeg) {
        const auto* const decompressor = reinterpret_cast<j_decompress_ptr>(jpeg);
        if (decompressor->input_scan_number <= decompressor->num_components)
            return;
        ErrorHandler& handler = of(jpeg);
        constexpr char text[] = "more scans than the picture has components";
        static_assert(sizeof text <= std::tuple_size_v<decltype(handler.text)>);
        std::memcpy(handler.text.data(), text, sizeof text);
        std::longjmp(handler.place, 1);
    }
};

/// Frees what the library holds, however the reading ends.
class Decompressor {
public:
    explicit Decompressor(ErrorHandler& handler) {
        _jpeg.err = jpeg_std_error(&handler.manager);
        _jpeg.client_data = &handler;
        handler.manager.error_exit = ErrorHandler::fail;
        handler.manager.emit_message = ErrorHandler::judge;
        handler.progress.progress_monitor = ErrorHandler::limitScans;
    }
    ~Decompressor() { jpeg_destroy_decompress(&_jpeg); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    // Between setjmp and the end of either function nothing may need a destructor: an error jumps over it.
    bool readHead(ErrorHandler& handler, std::span<const std::uint8_t> bytes) {
        if (setjmp(handler.place) != 0)
            return false;
        void* const client = _jpeg.client_data; // the creation clears all but the error manager
        jpeg_create_decompress(&_jpeg);
        _jpeg.client_data = client;
        _jpeg.progress = &handler.progress;
        jpeg_mem_src(&_jpeg, bytes.data(), bytes.size());
        jpeg_read_header(&_jpeg, TRUE);
        return true;
    }

    /// The next row; the first one also begins the data, the last one also ends them.
    bool readRow(ErrorHandler& handler, std::uint8_t* row) {
        if (setjmp(handler.place) != 0)
            return false;
        if (_jpeg.output_scanline == 0) {
            _jpeg.out_color_space = JCS_RGB;
            jpeg_start_decompress(&_jpeg);
        }
        jpeg_read_scanlines(&_jpeg, &row, 1);
        if (_jpeg.output_scanline == _jpeg.output_height)
            jpeg_finish_decompress(&_jpeg);
        return true;
    }

    ImageSize size() const { return {_jpeg.image_width, _jpeg.image_height}; }
    bool isProgressive() const { return _jpeg.progressive_mode != FALSE; }

private:
    jpeg_decompress_struct _jpeg{};
};

[[noreturn]] void raiseError(const ErrorHandler& handler) {
    raise(winrt::result::fail, "Motion JPEG: " + std::string(handler.text.data()));
}

} // namespace

struct MotionJpegReader::State {
    ErrorHandler handler;
    Decompressor decompressor{handler};
};

std::unique_ptr<MotionJpegReader::State> MotionJpegReader::readHead(std::span<const std::uint8_t> bytes) {
    auto state = std::make_unique<State>();
    auto& [handler, decompressor] = *state;
    if (!decompressor.readHead(handler, bytes))
        raiseError(handler);
    requireSizeWithinLimits(decompressor.size().width, decompressor.size().height, "Motion JPEG");
    // No camera sends those; a small one can ask for hours of decoding.
    if (decompressor.isProgressive())
        raise(winrt::result::fail, "Motion JPEG: progressive pictures are not supported");
    return state;
}

MotionJpegReader::MotionJpegReader(std::unique_ptr<State> state)
    : PictureRows(state->decompressor.size()), _state(std::move(state)) {}

MotionJpegReader::MotionJpegReader(std::span<const std::uint8_t> bytes) : MotionJpegReader(readHead(bytes)) {}

MotionJpegReader::~MotionJpegReader() = default;

void MotionJpegReader::read(std::uint8_t* row) {
    if (!_state->decompressor.readRow(_state->handler, row))
        raiseError(_state->handler);
}

} // namespace Platform::Imaging
