#include "Framework/CXX/Diagnostics/VariableSubstitution.h"

#include <log4cxx/helpers/loglog.h>
#include <log4cxx/helpers/optionconverter.h>

#include <string_view>

namespace Halden {

namespace {

constexpr std::string_view opening = "${";
constexpr char closing = '}';
constexpr std::size_t workOfLookup = 64; // in characters to copy, about

class UnclosedBrace : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The library's own substitution follows a circle until the stack is used up, and takes the names of folders, which the
// environment has, for texts with variables in them.
class Substitution {
public:
    explicit Substitution(const LoggingSettings& settings) : _settings(settings) {}

    std::string valueOf(const std::string& name, const std::string& value) {
        try {
            return replaced(value, 0);
        } catch (const UnclosedBrace&) {
            log4cxx::helpers::LogLog::error("Bad option value [" + value + "], its brace is not closed.");
            return value;
        } catch (const EndlessValue& error) {
            throw EndlessValue(name + ": " + error.what());
        }
    }

private:
    std::string replaced(const std::string& value, int depth) {
        constexpr int deepest = 100; // links of a chain
        if (depth > deepest)
            throw EndlessValue("its variables lead in a circle, or too far");
        std::string text;
        std::size_t end = 0;
        for (std::size_t begin = 0; (begin = value.find(opening, end)) != std::string::npos;) {
            text.append(value, end, begin - end);
            begin += opening.size();
            end = value.find(closing, begin);
            if (end == std::string::npos)
                throw UnclosedBrace(value);
            text += variable(value.substr(begin, end - begin), depth);
            ++end;
        }
        return text.append(value, end);
    }

    std::string variable(const std::string& name, int depth) {
        std::string text = log4cxx::helpers::OptionConverter::getSystemProperty(name, {});
        const auto setting = _settings.find(name);
        if (text.empty() && setting != _settings.end())
            text = replaced(setting->second, depth + 1);
        const std::size_t work = text.size() + workOfLookup;
        if (work > _workLeft)
            throw EndlessValue("its variables make it too long");
        _workLeft -= work;
        return text;
    }

    const LoggingSettings& _settings;
    std::size_t _workLeft = 4UL * 1024 * 1024; // for all settings; a sane file needs a thousandth
};

} // namespace

LoggingSettings withVariablesReplaced(const LoggingSettings& settings) {
    Substitution substitution(settings);
    LoggingSettings replaced;
    for (const auto& [name, value] : settings)
        replaced.emplace(name, substitution.valueOf(name, value));
    return replaced;
}

std::string asLiteralValue(const std::string& text) {
    std::string literal;
    std::size_t end = 0;
    for (std::size_t begin = 0; (begin = text.find(opening, end)) != std::string::npos; end = begin + 1)
        literal.append(text, end, begin - end).append("${").append(literalDollar).append("}");
    return literal.append(text, end);
}

} // namespace Halden
