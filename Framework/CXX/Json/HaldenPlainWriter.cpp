#include "Framework/CXX/Json/HaldenPlainWriter.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string_view>

namespace Json {

namespace {

// The library's own writer escapes UTF-8, replaces broken sequences and writes reals in another form;
// all of that is on the wire, so the text is made here.

constexpr std::string_view hexDigits = "0123456789ABCDEF";

bool isPlain(char character) {
    return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
}

void appendEscaped(std::string& out, char character) {
    switch (character) {
    case '"':
        out += "\\\"";
        break;
    case '\\':
        out += "\\\\";
        break;
    case '\b':
        out += "\\b";
        break;
    case '\f':
        out += "\\f";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00";
        out += hexDigits[static_cast<unsigned char>(character) >> 4];
        out += hexDigits[character & 0xF];
    }
}

void appendString(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        const auto special = std::find_if_not(text.begin(), text.end(), isPlain);
        out.append(text.begin(), special);
        if (special != text.end())
            appendEscaped(out, *special);
        text = {special == text.end() ? special : special + 1, text.end()};
    }
    out += '"';
}

/// Leaves one character behind the last that is no trailing zero, unless the zeros are an exponent's.
void cutTrailingZeros(std::string& number) {
    if (number.back() != '0')
        return;
    const std::size_t lastOther = number.find_last_not_of('0');
    if (lastOther == std::string::npos)
        return;
    const std::size_t stop = number.find_last_not_of("0123456789", lastOther);
    if (stop != std::string::npos && number[stop] == '.')
        number.resize(lastOther + 2);
}

void appendReal(std::string& out, double value) {
    std::ostringstream digits; // "%#.16g" with a point, whatever the process's locale
    digits.imbue(std::locale::classic());
    digits << std::showpoint << std::setprecision(16) << value;
    std::string number = digits.str();
    cutTrailingZeros(number);
    out += number;
}

void appendValue(std::string& out, const Value& value);

void appendArray(std::string& out, const Value& array) {
    out += '[';
    const char* separator = "";
    // By index, since an iterator leaves out what was never set.
    for (ArrayIndex index = 0; index < array.size(); ++index) {
        out += separator;
        appendValue(out, array[index]);
        separator = ",";
    }
    out += ']';
}

void appendObject(std::string& out, const Value& object) {
    out += '{';
    const char* separator = "";
    // The library keeps members in ascending byte order of their names.
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        out += separator;
        appendString(out, entry.name());
        out += ':';
        appendValue(out, *entry);
        separator = ",";
    }
    out += '}';
}

void appendValue(std::string& out, const Value& value) {
    switch (value.type()) {
    case nullValue:
        out += "null";
        break;
    case intValue:
        out += std::to_string(value.asLargestInt());
        break;
    case uintValue:
        out += std::to_string(value.asLargestUInt());
        break;
    case realValue:
        appendReal(out, value.asDouble());
        break;
    case stringValue: {
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        appendString(out, {begin, end});
        break;
    }
    case booleanValue:
        out += value.asBool() ? "true" : "false";
        break;
    case arrayValue:
        appendArray(out, value);
        break;
    case objectValue:
        appendObject(out, value);
        break;
    }
}

} // namespace

std::string HaldenPlainWriter::write(const Value& root) {
    std::string document;
    appendValue(document, root);
    return document;
}

} // namespace Json

namespace Halden {

std::string writeMessage(const Json::Value& root) { return Json::HaldenPlainWriter().write(root) + '\n'; }

} // namespace Halden
