"""The messages of port 3141: where they begin and end, and the envelope of a reply."""

import pytest
from harness.hub import COMMUNICATION_LOGGER, DEVICE_LOGGER, LogEntry
from harness.scenario import scenario

PARSE_REPLY = b'{"code":-32700,"jsonrpc":"2.0","message":"Parse Error"}\n\r\n\0'


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario())


@pytest.fixture
def client(hub):
    return hub.rpc()


def version_request(identity):
    return f'{{"jsonrpc":"2.0","id":{identity},"method":"camera:version"}}'


def version_reply(identity):
    return f'{{"id":{identity},"jsonrpc":"2.0","result":"2.9"}}\n\r\n\0'.encode()


def unsupported_reply(method, identity="1"):
    text = f"Method not supported: {method}"
    return f'{{"error":{{"message":"{text}"}},"id":{identity},"jsonrpc":"2.0"}}\n\r\n\0'.encode()


def test_version_is_a_text(client):
    assert client.exchange(version_request(1)) == version_reply(1)


@pytest.mark.parametrize(
    "sent, returned",
    [
        ("1", "1"),
        ("-7", "-7"),
        ("18446744073709551615", "18446744073709551615"),
        ("1.5", "1.50"),
        ("0.1", "0.10"),
        ("1e20", "1.000000000000000e+20"),
        ('"x"', '"x"'),
        ('""', '""'),
        ("null", "null"),
        ("true", "true"),
        ("[1]", "[1]"),
        ("[]", "[]"),
        ("{}", "{}"),
        ('{"b":1,"a":[true,null]}', '{"a":[true,null],"b":1}'),
        ('"a/b"', '"a/b"'),
        (r'"\"\\\b\f\n\r\t"', r'"\"\\\b\f\n\r\t"'),
        (r'"\u0001"', r'"\u0001"'),
        ('"ä€😀"', '"ä€😀"'),
        (r'"\u00e4"', '"ä"'),
    ],
)
def test_an_id_comes_back_unchanged(client, sent, returned):
    assert client.exchange(version_request(sent)) == version_reply(returned)


def test_broken_utf8_in_an_id_passes_through(client):
    assert client.exchange(b'{"id":"\xff\xc3","method":"camera:version"}') == (
        b'{"id":"\xff\xc3","jsonrpc":"2.0","result":"2.9"}\n\r\n\0'
    )


def test_a_missing_id_becomes_null(client):
    assert client.exchange('{"method":"camera:version"}') == version_reply("null")


@pytest.mark.parametrize("member", ["", '"jsonrpc":"1.0",', '"jsonrpc":[],'])
def test_jsonrpc_of_the_request_is_never_read(client, member):
    assert client.exchange(f'{{{member}"id":1,"method":"camera:version"}}') == version_reply(1)


def test_params_of_version_are_not_looked_at(client):
    assert client.exchange('{"id":1,"method":"camera:version","params":[1,"x"]}') == version_reply(1)


def test_a_nul_alone_gets_the_parse_reply(client):
    client.send_bytes(b"\0")
    assert client.receive_bytes() == PARSE_REPLY


def test_two_nuls_get_two_parse_replies(client):
    client.send_bytes(b"\0\0")
    assert client.receive_bytes() + client.receive_bytes() == 2 * PARSE_REPLY


def test_two_requests_in_one_segment_get_two_replies_in_order(client):
    client.send_bytes(f"{version_request(1)}\0{version_request(2)}\0".encode())
    assert client.receive_bytes() == version_reply(1)
    assert client.receive_bytes() == version_reply(2)


def test_a_request_split_byte_by_byte_gets_one_reply_after_its_nul(client):
    for byte in version_request(3).encode():
        client.send_bytes(bytes([byte]))
    assert not client.has_bytes_within(0.2)
    client.send_bytes(b"\0")
    assert client.receive_bytes() == version_reply(3)
    assert not client.has_bytes_within(0.2)


def test_line_ends_are_white_space(client):
    assert client.exchange('\r\n{"id":1,\r\n"method":"camera:version"}\r\n') == version_reply(1)


def test_a_half_message_does_not_hold_up_another_connection(hub, client):
    client.send_bytes(b'{"id":1,"method":')
    assert hub.rpc().exchange(version_request(2)) == version_reply(2)
    client.send_bytes(b'"camera:version"}\0')
    assert client.receive_bytes() == version_reply(1)


def test_a_message_of_a_million_bytes_is_answered(client):
    assert client.exchange(version_request(1) + " " * 1_000_000) == version_reply(1)


def test_text_behind_the_first_value_is_ignored(client):
    assert client.exchange(version_request(1) + ' and {"more"') == version_reply(1)


@pytest.mark.parametrize("comment", ["// one line\n", "/* several\nlines */"])
def test_comments_are_accepted(client, comment):
    assert client.exchange(f'{comment}{{"id":1,{comment}"method":"camera:version"}}{comment}') == version_reply(1)


@pytest.mark.parametrize("text", ["hello", "{", '{"id":1', "[1,", '"', "{'id':1}"])
def test_text_that_is_no_json_gets_the_parse_reply_and_the_connection_stays(client, text):
    assert client.exchange(text) == PARSE_REPLY
    assert client.exchange(version_request(1)) == version_reply(1)


def test_the_log_keeps_the_text_that_is_no_json_with_the_parsers_report(hub, client):
    client.exchange("unparsable")
    hub.wait_for_log("ERROR", COMMUNICATION_LOGGER, "<-- Error parsing [unparsable]:* Line 1, Column 1")


@pytest.mark.parametrize("brackets", ["[" * 100_000, '{"a":' * 100_000])
def test_nesting_too_deep_for_the_parser_gets_the_parse_reply(client, brackets):
    assert client.exchange(brackets) == PARSE_REPLY


@pytest.mark.parametrize("method", ["camera:focus", "CAMERA:VERSION", "camera:version ", "x/y"])
def test_an_unknown_method_is_named_as_it_was_sent(client, method):
    assert client.exchange(f'{{"id":1,"method":"{method}"}}') == unsupported_reply(method)


def test_an_unknown_method_is_logged_as_an_error_of_the_device_logger(hub, client):
    client.exchange('{"id":1,"method":"camera:logged"}')
    hub.wait_for_log("ERROR", DEVICE_LOGGER, "Method not supported: camera:logged")


@pytest.mark.parametrize("member", ["", ',"method":""', ',"method":null'])
def test_a_missing_method_is_the_empty_one(client, member):
    assert client.exchange(f'{{"id":1{member}}}') == unsupported_reply("")


def test_a_boolean_method_becomes_its_word(client):
    assert client.exchange('{"id":1,"method":true}') == unsupported_reply("true")


@pytest.mark.parametrize("root", ["null", "[]", "[1,2]", '[{"id":1,"method":"camera:version"}]'])
def test_an_array_or_null_at_the_root_is_an_unknown_method_without_id(client, root):
    assert client.exchange(root) == unsupported_reply("", "null")


def test_a_method_name_is_cut_at_a_nul_character(client):
    assert client.exchange(r'{"id":1,"method":"a\u0000b"}') == unsupported_reply("a")


def test_the_start_is_logged_before_anything_else(hub):
    assert hub.log()[0] == LogEntry(
        "INFO",
        "LarkspurWindowsCameraHub.Service",
        "Larkspur Windows Camera Hub started.  Waiting for Client connections...",
    )
