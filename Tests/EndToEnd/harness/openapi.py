"""The document of the HTTP interface, and whether answers are as it says."""

import re
from dataclasses import dataclass

import yaml
from harness.hub import ROOT
from harness.web_connection import JSON
from jsonschema import Draft202012Validator, RefResolver

FILE = ROOT / "Services/CameraHubWeb/openapi.yaml"
DOCUMENT = yaml.safe_load(FILE.read_text(encoding="utf-8"))
METHODS = ("get", "put", "post", "delete", "options", "head", "patch", "trace")
_RESOLVER = RefResolver("", DOCUMENT)

# On every answer, refusals among them.
SECURITY_HEADERS = {
    "Content-Security-Policy": (
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; connect-src 'self'; "
        "manifest-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'"),
    "X-Content-Type-Options": "nosniff",
    "X-Frame-Options": "DENY",
    "Referrer-Policy": "no-referrer",
    "Cross-Origin-Resource-Policy": "same-origin",
    "Cross-Origin-Opener-Policy": "same-origin",
    "Permissions-Policy": "camera=(), microphone=(), geolocation=()",
}


def resolved(node):
    """What stands in the place of a reference."""
    while isinstance(node, dict) and "$ref" in node:
        _, node = _RESOLVER.resolve(node["$ref"])
    return node


def validator(schema):
    return Draft202012Validator(schema, resolver=_RESOLVER)


def check(schema, value):
    validator(schema).validate(value)


def named(name):
    """The schema of that name."""
    return DOCUMENT["components"]["schemas"][name]


@dataclass(frozen=True)
class Operation:
    path: str
    method: str  # in capitals
    value: dict
    parameters: tuple

    @property
    def identity(self):
        return self.value["operationId"]

    def parameter(self, name):
        (found,) = [each for each in self.parameters if each["name"] == name]
        return found

    def those_in(self, place):
        return [each for each in self.parameters if each["in"] == place]

    def response(self, status):
        assert str(status) in self.value["responses"], (self.identity, status)
        return resolved(self.value["responses"][str(status)])


def _operations():
    for path, item in DOCUMENT["paths"].items():
        for method in METHODS:
            if method in item:
                parameters = item.get("parameters", []) + item[method].get("parameters", [])
                yield Operation(path, method.upper(), item[method], tuple(map(resolved, parameters)))


OPERATIONS = tuple(_operations())


def operation(identity):
    (found,) = [each for each in OPERATIONS if each.identity == identity]
    return found


def methods_of(path):
    """Those that are described, and HEAD where GET is and it is not told to be refused."""
    described = {each.method for each in OPERATIONS if each.path == path}
    is_head_taken = "GET" in described and not DOCUMENT["paths"][path]["get"].get("x-head-refused")
    return described | ({"HEAD"} if is_head_taken else set())


def is_file(path):
    """One of the files of the page, or the document: their queries are not looked at."""
    return path in ("/api/openapi.yaml", "/favicon.ico", "/", "/page/{name}")


def typed(schema, text):
    """The value that a parameter's or a header's text stands for; the text itself where it stands for none."""
    kind = resolved(schema).get("type")
    if kind == "integer" and re.fullmatch("-?[0-9]+", text):
        return int(text)
    if kind == "number" and re.fullmatch(r"-?[0-9]+(\.[0-9]+)?", text):
        return float(text)
    return text


def check_headers(headers, answer):
    for name, header in headers.items():
        header, value = resolved(header), answer.header(name)
        assert value is not None or not header.get("required"), (name, answer.headers)
        if value is not None:
            check(header["schema"], typed(header["schema"], value))


def check_response(response, answer, has_body=True):
    """A response of the document, and an answer that is to be one; a body without an end is left out."""
    for name, value in SECURITY_HEADERS.items():
        assert answer.header(name) == value
    assert not re.search("[0-9]", answer.header("Server") or "")
    check_headers(response.get("headers", {}), answer)
    content = response.get("content", {})
    if not content:
        assert answer.body == b""
    elif has_body:
        assert answer.media_type in content, answer.headers
        if answer.media_type in JSON:
            check(content[answer.media_type].get("schema", {}), answer.json())


def check_answer(identity, answer):
    """That the operation may answer so; gives the answer back."""
    asked = operation(identity)
    endless = identity in ("followEvents", "watchCamera") and answer.status == 200
    check_response(asked.response(answer.status), answer, asked.method != "HEAD" and not endless)
    return answer
