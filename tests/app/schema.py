"""Holds a document against a JSON schema, as far as the schemas of this project go. A keyword that is not known here is
an error, so that no rule is passed over in silence."""
ANNOTATIONS = {"$schema", "$id", "title", "description", "$defs", "$comment", "examples", "default"}


class Mismatch(Exception):
    pass


def _is(kind, value):
    if kind == "null":
        return value is None
    if kind == "boolean":
        return isinstance(value, bool)
    if kind == "integer":
        return isinstance(value, int) and not isinstance(value, bool)
    if kind == "number":
        return isinstance(value, (int, float)) and not isinstance(value, bool)
    return isinstance(value, {"string": str, "array": list, "object": dict}[kind])


def _matches(value, rule, root, where):
    try:
        check(value, rule, root, where)
    except Mismatch:
        return False
    return True


def _check_members(value, rule, root, where):
    missing = [name for name in rule.get("required", []) if name not in value]
    if missing:
        raise Mismatch(f"{where}: lacks {missing}")
    known = rule.get("properties", {})
    for name, member in value.items():
        if name in known:
            check(member, known[name], root, f"{where}/{name}")
        elif rule.get("additionalProperties", True) is False:
            raise Mismatch(f"{where}: {name} is unknown")
        elif isinstance(rule.get("additionalProperties"), dict):
            check(member, rule["additionalProperties"], root, f"{where}/{name}")
    if "minProperties" in rule and len(value) < rule["minProperties"]:
        raise Mismatch(f"{where}: too few members")


def _check_items(value, rule, root, where):
    if len(value) < rule.get("minItems", 0) or len(value) > rule.get("maxItems", len(value)):
        raise Mismatch(f"{where}: {len(value)} items")
    if rule.get("uniqueItems") and len({repr(each) for each in value}) != len(value):
        raise Mismatch(f"{where}: an item stands there twice")
    for place, item in enumerate(value if "items" in rule else []):
        check(item, rule["items"], root, f"{where}/{place}")


def check(value, rule, root, where=""):
    """Raises `Mismatch` when the value does not follow the rule; `root` is the whole schema."""
    unknown = set(rule) - ANNOTATIONS - {
        "$ref", "type", "enum", "const", "oneOf", "anyOf", "required", "properties", "additionalProperties",
        "minProperties", "items", "minItems", "maxItems", "uniqueItems", "minimum", "minLength"}
    if unknown:
        raise AssertionError(f"{where}: this reader does not know {sorted(unknown)}")
    if "$ref" in rule:
        target = root
        for step in rule["$ref"].removeprefix("#/").split("/"):
            target = target[step]
        check(value, target, root, where)
    if "type" in rule:
        kinds = rule["type"] if isinstance(rule["type"], list) else [rule["type"]]
        if not any(_is(kind, value) for kind in kinds):
            raise Mismatch(f"{where}: {value!r} is not {kinds}")
    if "enum" in rule and value not in rule["enum"] or "const" in rule and value != rule["const"]:
        raise Mismatch(f"{where}: {value!r} is not one of the values allowed")
    if "oneOf" in rule and sum(_matches(value, each, root, where) for each in rule["oneOf"]) != 1:
        raise Mismatch(f"{where}: {value!r} is not exactly one of the forms")
    if "anyOf" in rule and not any(_matches(value, each, root, where) for each in rule["anyOf"]):
        raise Mismatch(f"{where}: {value!r} is none of the forms")
    if isinstance(value, dict):
        _check_members(value, rule, root, where)
    if isinstance(value, list):
        _check_items(value, rule, root, where)
    if isinstance(value, str) and len(value) < rule.get("minLength", 0):
        raise Mismatch(f"{where}: too short")
    if "minimum" in rule and _is("number", value) and value < rule["minimum"]:
        raise Mismatch(f"{where}: {value} is too small")
