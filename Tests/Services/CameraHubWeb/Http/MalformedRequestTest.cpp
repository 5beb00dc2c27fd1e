#include "Tests/Services/CameraHubWeb/Http/EchoFixture.h"

#include <gtest/gtest.h>

namespace {

class MalformedRequestTest : public EchoFixture, public testing::WithParamInterface<const char*> {};

TEST_P(MalformedRequestTest, IsAnInvalidRequest) {
    serveEcho();
    expectProblem(GetParam(), 400, "invalid-request");
}

INSTANTIATE_TEST_SUITE_P(Lines, MalformedRequestTest,
                         testing::Values("GET /\r\n\r\n", "GET  / HTTP/1.1\r\nHost: x\r\n\r\n",
                                         "GET / HTTP/1.1 \r\nHost: x\r\n\r\n", "GET / HTTP/2.0\r\nHost: x\r\n\r\n",
                                         "GET / HTTP/1.2\r\nHost: x\r\n\r\n", "GET / HTTP/0.9\r\nHost: x\r\n\r\n",
                                         "GET / http/1.1\r\nHost: x\r\n\r\n", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
                                         "G(T / HTTP/1.1\r\nHost: x\r\n\r\n", " GET / HTTP/1.1\r\nHost: x\r\n\r\n",
                                         "\x16\x03\x01\x02", "GET / HTTP/1.1\nHost: x\n\n",
                                         "GET / HTTP/1.1\r\nHost: x\n\r\n", "GET / HTTP/1.1\r\nHost: x\rA: b\r\n\r\n"));

INSTANTIATE_TEST_SUITE_P(
    Targets, MalformedRequestTest,
    testing::Values("GET http://x/ HTTP/1.1\r\nHost: x\r\n\r\n", "CONNECT x:80 HTTP/1.1\r\nHost: x\r\n\r\n",
                    "OPTIONS * HTTP/1.1\r\nHost: x\r\n\r\n", "GET a HTTP/1.1\r\nHost: x\r\n\r\n",
                    "GET /a#b HTTP/1.1\r\nHost: x\r\n\r\n", "GET /%zz HTTP/1.1\r\nHost: x\r\n\r\n",
                    "GET /%ff HTTP/1.1\r\nHost: x\r\n\r\n", "GET /a%00 HTTP/1.1\r\nHost: x\r\n\r\n",
                    "GET /\xc3\xbc HTTP/1.1\r\nHost: x\r\n\r\n", "GET /?a=1&a=1 HTTP/1.1\r\nHost: x\r\n\r\n"));

INSTANTIATE_TEST_SUITE_P(
    Headers, MalformedRequestTest,
    testing::Values("GET / HTTP/1.1\r\n\r\n", "GET / HTTP/1.1\r\nHost: x\r\nHost: x\r\n\r\n",
                    "GET / HTTP/1.0\r\nHost: x\r\nhost: y\r\n\r\n", "GET / HTTP/1.1\r\nHost: x\r\nA : b\r\n\r\n",
                    "GET / HTTP/1.1\r\nHost: x\r\n: b\r\n\r\n", "GET / HTTP/1.1\r\nHost: x\r\nA\r\n\r\n",
                    "GET / HTTP/1.1\r\nHost: x\r\nA: b\r\n c\r\n\r\n", "GET / HTTP/1.1\r\n Host: x\r\n\r\n",
                    "GET / HTTP/1.1\r\nHost: x\r\nA: b\x01\r\n\r\n", "GET / HTTP/1.1\r\nHost: x\r\nA(: b\r\n\r\n"));

INSTANTIATE_TEST_SUITE_P(
    BodyLengths, MalformedRequestTest,
    testing::Values("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\nContent-Length: 5\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\nContent-Length: 1\r\n\r\na",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1, 1\r\n\r\na",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: +1\r\n\r\na",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: -1\r\n\r\na",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 0x1\r\n\r\na",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length:\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 99999999999999999999999\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: gzip\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked, gzip\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: xchunked\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n",
                    "POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n-1\r\n",
                    "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nabc\r\n0\r\n\r\n"));

} // namespace
