#include "Services/CameraHubWeb/Http/TlsContext.h"

#include <openssl/ssl.h>

#include <stdexcept>
#include <string>

namespace ssl = boost::asio::ssl;

namespace CameraHubWeb {
namespace {

void check(const boost::system::error_code& error, const std::string& what, const std::string& file) {
    if (error)
        throw std::runtime_error("The " + what + " in " + file + " cannot be used: " + error.message());
}

} // namespace

ssl::context makeTlsContext(const TlsFiles& files) {
    ssl::context context(ssl::context::tls_server);
    SSL_CTX* const native = context.native_handle();
    SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
    SSL_CTX_set_options(native, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
    SSL_CTX_set_mode(native, SSL_MODE_RELEASE_BUFFERS); // most connections wait most of the time

    boost::system::error_code error;
    // An encrypted key is an error: nobody is there to type its password.
    static_cast<void>(context.set_password_callback(
        [](std::size_t, ssl::context::password_purpose) { return std::string(); }, error));
    check(error, "key", files.key);
    static_cast<void>(context.use_certificate_chain_file(files.certificate, error));
    check(error, "certificate", files.certificate);
    static_cast<void>(context.use_private_key_file(files.key, ssl::context::pem, error));
    check(error, "key", files.key);
    if (SSL_CTX_check_private_key(native) != 1)
        throw std::runtime_error("The key in " + files.key + " is not the one of the certificate in " +
                                 files.certificate);
    return context;
}

} // namespace CameraHubWeb
