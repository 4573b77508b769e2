#!/usr/bin/python3
"""check_schema.py SCHEMA REPORT...: checks that the schema takes the reports, and nothing that differs in one place."""
import json, sys
import jsonschema


def variants(value):
    """Yields the value with one place of the wrong type, with one member removed, and with one member added."""
    yield None
    if type(value) is int:
        yield from (value + 0.5, "12")
    elif isinstance(value, list) and value:
        yield from ([variant] + value[1:] for variant in variants(value[0]))
    elif isinstance(value, dict):
        yield value | {"more": 1}
        for name, member in value.items():
            yield {other: value[other] for other in value if other != name}
            yield from (value | {name: variant} for variant in variants(member))


schema, *reports = (json.load(open(path, encoding="utf-8")) for path in sys.argv[1:])
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
assert {report["kind"] for report in reports} == {"bluray", "dvd"}
for report in reports:
    validator.validate(report)
    other_kind = {"bluray": "dvd", "dvd": "bluray"}[report["kind"]]
    for variant in report | {"kind": other_kind}, report | {"packageSha256": "A" * 64}, *variants(report):
        assert not validator.is_valid(variant), f"taken: {json.dumps(variant)}"
