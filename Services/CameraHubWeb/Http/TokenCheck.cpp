#include "Services/CameraHubWeb/Http/TokenCheck.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace CameraHubWeb {
namespace {

/// What follows the scheme, if it is this one.
std::optional<std::string_view> credentialsOf(std::string_view authorization, std::string_view scheme) {
    if (authorization.size() <= scheme.size() || authorization[scheme.size()] != ' ')
        return std::nullopt;
    const bool isScheme = std::equal(scheme.begin(), scheme.end(), authorization.begin(), [](char wanted, char given) {
        return wanted == std::tolower(static_cast<unsigned char>(given));
    });
    if (!isScheme)
        return std::nullopt;
    authorization.remove_prefix(scheme.size());
    authorization.remove_prefix(std::min(authorization.find_first_not_of(' '), authorization.size()));
    return authorization;
}

std::optional<std::string> decodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0)
        return std::nullopt;
    std::vector<unsigned char> bytes(text.size() / 4 * 3);
    const int count = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                      static_cast<int>(text.size()));
    const auto padding = std::count(text.end() - 2, text.end(), '=');
    if (count < padding)
        return std::nullopt;
    return std::string(bytes.begin(), bytes.begin() + (count - padding));
}

} // namespace

Digest digestOf(std::string_view text) {
    Digest digest{};
    SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data());
    return digest;
}

bool TokenCheck::matches(std::string_view offered) const {
    const Digest digest = digestOf(offered);
    return CRYPTO_memcmp(digest.data(), _digest.data(), digest.size()) == 0;
}

std::optional<std::string> offeredToken(std::string_view authorization) {
    if (const auto bearer = credentialsOf(authorization, "bearer"))
        return std::string(*bearer);
    const auto basic = credentialsOf(authorization, "basic");
    const auto decoded = basic ? decodeBase64(*basic) : std::nullopt;
    if (!decoded || decoded->find(':') == std::string::npos)
        return std::nullopt;
    return decoded->substr(decoded->find(':') + 1);
}

} // namespace CameraHubWeb
