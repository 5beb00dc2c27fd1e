#include "Tests/Services/CameraHubWeb/Http/RawClient.h"
#include "Tests/Services/CameraHubWeb/Http/ScriptedStream.h"
#include "Tests/Services/CameraHubWeb/Http/ServerFixture.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>
#include <filesystem>
#include <string>

using namespace CameraHubWeb;
using testing::HasSubstr;

namespace {

const std::string get = "GET / HTTP/1.1\r\nHost: x\r\n\r\n";

std::FILE* openFor(const std::filesystem::path& path) { return std::fopen(path.c_str(), "wb"); }

EVP_PKEY* writeKey(const std::filesystem::path& path, const char* password = nullptr) {
    EVP_PKEY* const key = EVP_EC_gen("P-256");
    std::FILE* const file = openFor(path);
    PEM_write_PrivateKey(file, key, password ? EVP_aes_128_cbc() : nullptr, nullptr, 0, nullptr,
                         const_cast<char*>(password));
    std::fclose(file);
    return key;
}

void writeCertificate(const std::filesystem::path& path, EVP_PKEY* key) {
    X509* const certificate = X509_new();
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
    X509_set_pubkey(certificate, key);
    X509_NAME* const name = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("desk"), -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    X509_sign(certificate, key, EVP_sha256());
    std::FILE* const file = openFor(path);
    PEM_write_X509(file, certificate);
    std::fclose(file);
    X509_free(certificate);
}

class TlsServerTest : public ServerFixture {
protected:
    TlsServerTest() {
        EVP_PKEY* const key = writeKey(folder.path() / "key.pem");
        writeCertificate(folder.path() / "certificate.pem", key);
        EVP_PKEY_free(key);
        useFiles("certificate.pem", "key.pem");
    }

    void useFiles(const std::string& certificate, const std::string& key) {
        settings.tls = std::make_shared<TlsFiles>(
            TlsFiles{.certificate = folder.path() / certificate, .key = folder.path() / key});
    }

    std::string reasonAgainst() {
        try {
            serveText();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    TemporaryFolder folder;
};

TEST_F(TlsServerTest, AnswersInTls) {
    serveText();
    RawClient client(port, RawClient::Security::Tls);
    client.send(get + get);
    EXPECT_EQ(client.receiveAnswer().body, "hello");
    const RawAnswer answer = client.receiveAnswer();
    EXPECT_EQ(answer.body, "hello");
    EXPECT_EQ(answer.header("strict-transport-security"), "max-age=31536000");
}

TEST_F(TlsServerTest, LargeBodiesComeWhole) {
    std::string large(20'000'000, 'a');
    for (std::size_t i = 0; i < large.size(); i += 977)
        large[i] = static_cast<char>('a' + i % 26);
    serveText(large);
    RawClient client(port, RawClient::Security::Tls);
    client.send(get);
    EXPECT_TRUE(client.receiveAnswer().body == large);
}

TEST_F(TlsServerTest, TheLastAnswerIsFollowedByATlsEnd) {
    serveText();
    RawClient client(port, RawClient::Security::Tls);
    client.send("GET / HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(client.receiveAnswer().body, "hello");
    EXPECT_EQ(client.receiveAll(), ""); // throws where the connection ends otherwise
}

TEST_F(TlsServerTest, AClientThatSendsFarTooMuchSeesWhy) {
    serveText();
    RawClient client(port, RawClient::Security::Tls);
    client.send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n");
    client.send(std::string(1'000'000, 'a'));
    EXPECT_EQ(client.receiveAnswer().status, 413);
}

TEST_F(TlsServerTest, AClientThatGoesDuringAStreamIsNoticed) {
    const auto stream = std::make_shared<ScriptedStream>();
    serve([&stream](const std::shared_ptr<HttpExchange>& exchange) { exchange->stream({}, stream); });
    RawClient client(port, RawClient::Security::Tls);
    client.send(get);
    stream->say("hello");
    client.receiveUntil("hello");
    client.close();
    EXPECT_TRUE(waitUntil([&stream] { return stream->ends() == 1; }));
}

TEST_F(TlsServerTest, AClientThatDoesNotSpeakTlsIsDropped) {
    serveText();
    RawClient client(port);
    client.send(get);
    EXPECT_THAT(client.receiveAll(), testing::Not(HasSubstr("HTTP")));
}

TEST_F(TlsServerTest, AHandshakeHasItsTime) {
    settings.limits.requestTime = std::chrono::milliseconds(50);
    serveText();
    RawClient client(port);
    EXPECT_EQ(client.receiveAll(), "");
}

TEST_F(TlsServerTest, TheServersEndDuringAHandshakeDoesNoHarm) {
    serveText();
    RawClient client(port);
    client.send("\x16\x03\x01");
    endServer();
}

TEST_F(TlsServerTest, FilesThatCannotBeUsedAreNamed) {
    useFiles("none.pem", "key.pem");
    EXPECT_THAT(reasonAgainst(), HasSubstr("The certificate in " + (folder.path() / "none.pem").string()));
    useFiles("certificate.pem", "none.pem");
    EXPECT_THAT(reasonAgainst(), HasSubstr("The key in " + (folder.path() / "none.pem").string()));
    useFiles("key.pem", "key.pem");
    EXPECT_THAT(reasonAgainst(), HasSubstr("The certificate in "));
    EVP_PKEY_free(writeKey(folder.path() / "other.pem"));
    useFiles("certificate.pem", "other.pem");
    EXPECT_THAT(reasonAgainst(), HasSubstr("other.pem"));
    EVP_PKEY_free(writeKey(folder.path() / "locked.pem", "secret"));
    useFiles("certificate.pem", "locked.pem");
    EXPECT_THAT(reasonAgainst(), HasSubstr("The key in " + (folder.path() / "locked.pem").string()));
}

} // namespace
