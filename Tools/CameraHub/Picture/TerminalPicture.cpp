#include "Tools/CameraHub/Picture/TerminalPicture.h"

#include <chafa.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace CommandLine {
namespace {

template <auto function> struct Release {
    template <typename T> void operator()(T* object) const { function(object); }
};
template <typename T, auto function> using Owned = std::unique_ptr<T, Release<function>>;

using Config = Owned<ChafaCanvasConfig, chafa_canvas_config_unref>;
using Canvas = Owned<ChafaCanvas, chafa_canvas_unref>;
using Symbols = Owned<ChafaSymbolMap, chafa_symbol_map_unref>;
using TermInfo = Owned<ChafaTermInfo, chafa_term_info_unref>;
using Environment = Owned<gchar*, g_strfreev>;

std::string_view orEmpty(const char* text) { return text ? text : std::string_view(); }

constexpr float heightOfCharacter = 0.5F; // its width in parts of its height, of common fonts

ChafaCanvasMode modeFor(TerminalColours colours) {
    switch (colours) {
    case TerminalColours::None:
        return CHAFA_CANVAS_MODE_FGBG;
    case TerminalColours::Eight:
        return CHAFA_CANVAS_MODE_INDEXED_8;
    case TerminalColours::Sixteen:
        return CHAFA_CANVAS_MODE_INDEXED_16;
    case TerminalColours::TwoHundredFiftySix:
        return CHAFA_CANVAS_MODE_INDEXED_240;
    case TerminalColours::True:
        return CHAFA_CANVAS_MODE_TRUECOLOR;
    }
    return CHAFA_CANVAS_MODE_FGBG;
}

Config configFor(const RgbPicture& picture, TerminalSize size, TerminalColours colours) {
    Config config(chafa_canvas_config_new());
    int columns = std::max(size.columns, 1);
    int rows = std::max(size.rows, 1);
    chafa_calc_canvas_geometry(picture.width, picture.height, &columns, &rows, heightOfCharacter, TRUE, FALSE);
    chafa_canvas_config_set_geometry(config.get(), columns, rows);
    chafa_canvas_config_set_canvas_mode(config.get(), modeFor(colours));
    chafa_canvas_config_set_pixel_mode(config.get(), CHAFA_PIXEL_MODE_SYMBOLS);
    const Symbols symbols(chafa_symbol_map_new());
    for (const ChafaSymbolTags tag : {CHAFA_SYMBOL_TAG_SPACE, CHAFA_SYMBOL_TAG_BLOCK})
        chafa_symbol_map_add_by_tags(symbols.get(), tag);
    chafa_canvas_config_set_symbol_map(config.get(), symbols.get());
    return config;
}

} // namespace

TerminalColours coloursOfTerminal() {
    const Environment environment(g_get_environ());
    const std::string_view name = orEmpty(g_environ_getenv(environment.get(), "TERM"));
    if (name.empty() || name == "dumb")
        return TerminalColours::None;
    const TermInfo terminal(chafa_term_db_detect(chafa_term_db_get_default(), environment.get()));
    const auto has = [&](ChafaTermSeq sequence) { return chafa_term_info_have_seq(terminal.get(), sequence) != FALSE; };
    if (has(CHAFA_TERM_SEQ_SET_COLOR_FGBG_DIRECT))
        return TerminalColours::True;
    if (has(CHAFA_TERM_SEQ_SET_COLOR_FGBG_256))
        return TerminalColours::TwoHundredFiftySix;
    if (has(CHAFA_TERM_SEQ_SET_COLOR_FGBG_16))
        return TerminalColours::Sixteen;
    return has(CHAFA_TERM_SEQ_SET_COLOR_FGBG_8) ? TerminalColours::Eight : TerminalColours::None;
}

std::string drawInTerminal(const RgbPicture& picture, TerminalSize size, TerminalColours colours) {
    chafa_set_n_threads(1); // a terminal has few characters, and the thread sanitizer cannot see the library's locks
    const Canvas canvas(chafa_canvas_new(configFor(picture, size, colours).get()));
    chafa_canvas_draw_all_pixels(canvas.get(), CHAFA_PIXEL_RGB8, picture.samples.data(), picture.width, picture.height,
                                 picture.width * 3);
    // With the sequences that nearly all terminals have: the mode says which of them are used.
    const TermInfo terminal(colours == TerminalColours::None
                                ? chafa_term_info_new()
                                : chafa_term_db_get_fallback_info(chafa_term_db_get_default()));
    GString* const drawn = chafa_canvas_print(canvas.get(), terminal.get());
    std::string text(drawn->str, drawn->len);
    g_string_free(drawn, TRUE);
    return text + "\n";
}

} // namespace CommandLine
