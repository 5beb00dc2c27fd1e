#include "Framework/CXX/System/CrashReporter/ExceptionText.h"

#include "Platform/Interface/HresultError.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

namespace Halden::System {

namespace {

using Text = RawText<3000>;
using DescribeException = CrashReporterInstallRecord::DescribeException;

constexpr int deepestNesting = 8;

/// Unpaired surrogates become U+FFFD: a text that is not well-formed still tells more than none.
void addUtf16(Text& text, std::u16string_view units) noexcept {
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t point = units[i];
        const bool leads = point >= 0xD800 && point <= 0xDBFF;
        if (leads && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            point = 0x10000 + ((point - 0xD800) << 10) + (units[++i] - 0xDC00u);
        } else if (point >= 0xD800 && point <= 0xDFFF) {
            point = 0xFFFD;
        }
        char bytes[4];
        std::size_t count = 0;
        if (point < 0x80) {
            bytes[count++] = static_cast<char>(point);
        } else {
            if (point < 0x800) {
                bytes[count++] = static_cast<char>(0xC0 | (point >> 6));
            } else {
                if (point < 0x10000) {
                    bytes[count++] = static_cast<char>(0xE0 | (point >> 12));
                } else {
                    bytes[count++] = static_cast<char>(0xF0 | (point >> 18));
                    bytes[count++] = static_cast<char>(0x80 | ((point >> 12) & 0x3F));
                }
                bytes[count++] = static_cast<char>(0x80 | ((point >> 6) & 0x3F));
            }
            bytes[count++] = static_cast<char>(0x80 | (point & 0x3F));
        }
        text.text({bytes, count});
    }
}

struct FreeMemory {
    void operator()(char* memory) const noexcept { std::free(memory); }
};

/// Null if it can't be turned back.
std::unique_ptr<char, FreeMemory> demangle(const char* mangled) noexcept {
    int status = 0;
    return std::unique_ptr<char, FreeMemory>(abi::__cxa_demangle(mangled, nullptr, nullptr, &status));
}

void addText(Text& text, DescribeException describe, int depth) noexcept;

/// Exceptions that the given one carries inside itself, outermost first.
void addNested(Text& text, const std::exception& outer, DescribeException describe, int depth) noexcept {
    if (depth == deepestNesting) {
        return;
    }
    try {
        std::rethrow_if_nested(outer);
    } catch (...) {
        text.text("; caused by ");
        if (const std::type_info* type = abi::__cxa_current_exception_type()) {
            const auto name = demangle(type->name());
            text.text(name ? name.get() : type->name()).text(": ");
        }
        addText(text, describe, depth + 1);
    }
}

void addText(Text& text, DescribeException describe, int depth) noexcept {
    try {
        throw;
    } catch (const std::exception& error) {
        text.text(error.what());
        addNested(text, error, describe, depth);
    } catch (const winrt::hresult_error& error) {
        addUtf16(text, error.message());
        text.text(" ").decimal(error.code()).text(" (").hex(static_cast<std::uint32_t>(error.code()), 8).text(")");
    } catch (const std::string& value) {
        text.text(value);
    } catch (const char* value) {
        text.text(value);
    } catch (int value) {
        text.decimal(value);
    } catch (...) {
        try {
            text.text(describe != nullptr ? describe() : std::string());
        } catch (...) { // the describing function itself failed: the type alone must do
        }
    }
}

} // namespace

void describeCurrentException(ExceptionText& result, DescribeException describe) noexcept {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return;
    }
    result.type.text(type->name());
    addText(result.text, describe, 0);
    if (const auto name = demangle(type->name())) {
        result.type.clear();
        result.type.text(name.get());
    }
}

} // namespace Halden::System
