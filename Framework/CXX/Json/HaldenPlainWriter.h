#pragma once

#include <json/value.h>
#include <json/writer.h>

#include <string>

namespace Json {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// Compact JSON in one line without a line feed, fit to be embedded in another text. Bytes of texts pass
/// through as they are, well-formed UTF-8 or not; reals have 16 digits less trailing zeros.
class HaldenPlainWriter : public FastWriter {
public:
    ~HaldenPlainWriter() override = default;

    std::string write(const Value& root) override;
};

#pragma GCC diagnostic pop

} // namespace Json

namespace Halden {

/// A reply's text: what HaldenPlainWriter writes, and a line feed.
std::string writeMessage(const Json::Value& root);

} // namespace Halden
