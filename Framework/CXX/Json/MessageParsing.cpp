#include "Framework/CXX/Json/MessageParsing.h"

#include <json/reader.h>

namespace Halden {

// The reader that the library has declared old is the one whose reactions the protocol was built on.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

bool parseMessage(const std::string& text, Json::Value& root, std::string& formattedErrors) {
    // No reply shows a comment. To collect one, the library goes through all the text since the latest value again.
    constexpr bool collectComments = false;
    Json::Reader reader;
    try {
        if (reader.parse(text.data(), text.data() + text.size(), root, collectComments))
            return true;
        formattedErrors = reader.getFormattedErrorMessages();
    } catch (const Json::Exception& refused) {
        // The library raises what it doesn't want to read at all: depth, and names or texts of gigabytes.
        formattedErrors = std::string("* ") + refused.what() + '\n';
    }
    return false;
}

#pragma GCC diagnostic pop

} // namespace Halden
