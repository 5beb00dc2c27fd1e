#include "Framework/CXX/System/CrashReporter/ExceptionText.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <typeinfo>

namespace Halden::System {

namespace {

using Text = RawText<3000>;

constexpr int deepestNesting = 8;

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
    if (depth == deepestNesting)
        return;
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
    if (type == nullptr)
        return;
    result.type.text(type->name());
    addText(result.text, describe, 0);
    if (const auto name = demangle(type->name())) {
        result.type.clear();
        result.type.text(name.get());
    }
}

} // namespace Halden::System
