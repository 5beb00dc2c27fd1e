#pragma once

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>

namespace Platform::Imaging {

/// What libpng last complained about: the error pointer of its structures. A fixed buffer, since the
/// library leaves the error handler by longjmp.
class PngMessage {
public:
    const char* text() const { return _text.data(); }

    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        auto& message = static_cast<PngMessage*>(png_get_error_ptr(png))->_text;
        std::snprintf(message.data(), message.size(), "%s", text);
        png_longjmp(png, 1);
    }
    /// Warnings tell of data that has no influence on the pixels.
    static void onWarning(png_structp, png_const_charp) {}

private:
    std::array<char, 200> _text{};
};

/// Runs calls of libpng; false when one of them failed. libpng leaves a failed call by longjmp, which may
/// skip no destructor: `calls` must capture references alone and create nothing that has one.
template <typename Calls> bool runGuarded(png_structp png, const Calls& calls) {
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    calls();
    return true;
}

} // namespace Platform::Imaging
