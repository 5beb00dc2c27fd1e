"""The document of the HTTP interface by itself: that it is one."""

import re

import pytest
from harness.openapi import DOCUMENT, METHODS, OPERATIONS, RefResolver, check, resolved, validator
from jsonschema import Draft202012Validator

# The members that an object of OpenAPI 3.1 may have, those that it must have marked.
OBJECTS = {
    "document": "openapi! info! servers! tags! security! paths! components!",
    "info": "title! version! description! license!",
    "operation": ("operationId! tags! summary! description parameters requestBody responses! security x-events "
                  "x-head-refused"),
    "parameter": "name! in! description schema! required example examples allowEmptyValue",
    "header": "description required schema! example",
    "response": "description! headers content",
    "media type": "schema example examples",
    "request body": "required! content!",
}


def is_one(kind, value):
    members = OBJECTS[kind].split()
    assert set(value) <= {member.rstrip("!") for member in members}, (kind, value)
    assert {member[:-1] for member in members if member.endswith("!")} <= set(value), (kind, value)


def walk(node, where=""):
    """All objects of the document and where they stand."""
    if isinstance(node, dict):
        yield where, node
        for name, child in node.items():
            yield from walk(child, f"{where}/{name}")
    elif isinstance(node, list):
        for number, child in enumerate(node):
            yield from walk(child, f"{where}/{number}")


def response_objects():
    for operation in OPERATIONS:
        for status, response in operation.value["responses"].items():
            yield operation.identity, status, resolved(response)


def media_types():
    """Those of all bodies."""
    for operation in OPERATIONS:
        if "requestBody" in operation.value:
            yield from operation.value["requestBody"]["content"].items()
    for _, _, response in response_objects():
        yield from response.get("content", {}).items()


def examples_of(value):
    if "example" in value:
        yield value["example"]
    for example in value.get("examples", {}).values():
        yield resolved(example)["value"]


def test_its_objects_have_the_members_that_they_must_and_may_have():
    is_one("document", DOCUMENT)
    assert DOCUMENT["openapi"] == "3.1.0"
    is_one("info", DOCUMENT["info"])
    for operation in OPERATIONS:
        is_one("operation", operation.value)
        for parameter in operation.parameters:
            is_one("parameter", parameter)
            assert parameter["in"] in ("path", "query", "header")
        if "requestBody" in operation.value:
            is_one("request body", operation.value["requestBody"])
    for _, _, response in response_objects():
        is_one("response", response)
        for header in response.get("headers", {}).values():
            is_one("header", resolved(header))
    for _, media_type in media_types():
        is_one("media type", media_type)


def test_every_reference_leads_somewhere_and_every_component_is_used():
    references = {node["$ref"] for _, node in walk(DOCUMENT) if isinstance(node.get("$ref"), str)}
    for reference in references:
        assert reference.startswith("#/components/")
        RefResolver("", DOCUMENT).resolve(reference)
    components = {f"#/components/{kind}/{name}" for kind, parts in DOCUMENT["components"].items() for name in parts
                  if kind != "securitySchemes"}
    # Of methods that are not described there is no description.
    assert components - references == {"#/components/responses/MethodNotAllowed"}


def test_operations_have_names_of_their_own_words_for_people_and_tags_that_are_told():
    names = [operation.identity for operation in OPERATIONS]
    assert sorted(set(names)) == sorted(names)
    tags = {tag["name"] for tag in DOCUMENT["tags"]}
    for operation in OPERATIONS:
        assert operation.value["summary"] and set(operation.value["tags"]) <= tags


def test_the_parameters_of_paths_are_those_of_their_templates():
    for operation in OPERATIONS:
        declared = [parameter["name"] for parameter in operation.those_in("path")]
        assert sorted(declared) == sorted(re.findall("{([^}]*)}", operation.path))
        assert all(parameter["required"] for parameter in operation.those_in("path"))
    for path, item in DOCUMENT["paths"].items():
        assert set(item) <= {"parameters", *METHODS}, path


def test_every_parameter_and_every_problem_is_told_in_words():
    for operation in OPERATIONS:
        assert all(parameter.get("description") or parameter["in"] == "path" for parameter in operation.parameters)
    assert all(response["description"] for _, _, response in response_objects())


def test_every_schema_is_one_of_json_schema():
    schemas = [node["schema"] for _, node in walk(DOCUMENT) if "schema" in node]
    for schema in [*schemas, *DOCUMENT["components"]["schemas"].values()]:
        Draft202012Validator.check_schema(schema)


def test_every_object_of_a_schema_is_closed():
    for where, node in walk(DOCUMENT):
        if node.get("type") == "object":
            assert node.get("additionalProperties") is False, where


def test_every_example_fits_its_schema():
    count = 0
    for operation in OPERATIONS:
        for parameter in operation.parameters:
            for example in examples_of(parameter):
                check(parameter["schema"], example)
                count += 1
    for media, value in media_types():
        for example in examples_of(value):
            check(value["schema"], example)
            count += 1
    assert count > 50


def test_every_problem_names_its_kinds_and_its_status():
    for identity, status, response in response_objects():
        if status[0] in "45":
            (value,) = response["content"].values()
            (example,) = examples_of(value)
            assert list(response["content"]) == ["application/problem+json"], identity
            assert str(example["status"]) == status
            assert not validator(value["schema"]).is_valid(example | {"type": "urn:camera-hub:problem:other"})
            assert not validator(value["schema"]).is_valid(example | {"status": 599})


@pytest.mark.parametrize("status", ["400", "401", "403", "408", "413", "414", "421", "429", "431", "500", "503"])
def test_what_may_happen_to_any_request_is_told_of_all(status):
    for operation in OPERATIONS:
        assert status in operation.value["responses"], operation.identity


def test_security_names_schemes_that_are_told():
    schemes = set(DOCUMENT["components"]["securitySchemes"])
    for requirements in [DOCUMENT["security"], *(each.value.get("security", []) for each in OPERATIONS)]:
        for requirement in requirements:
            assert set(requirement) <= schemes
