"""Another reader and writer of property lists, for the tests that hold ours against it.

    plist_peer.py copy FOLDER           reads every NAME.plist there; writes the text of what it reads to NAME.text, and
                                        the list, written anew, to NAME.copy
    plist_peer.py make FOLDER SEED N    makes N random lists 0.plist, 1.plist ... with their texts
    plist_peer.py archive FILE          checks that FILE is a keyed archive through and through; prints its text

The text is that of tests/support/KRPlistTrees.h.
"""
import datetime
import pathlib
import plistlib
import random
import struct
import sys

BEGINNING = datetime.datetime(2001, 1, 1)


def bits(number):
    return struct.pack(">d", number).hex()


def text_of(value):
    if value is None:
        return "n"
    if isinstance(value, bool):
        return "t" if value else "f"
    if isinstance(value, int):
        return f"i{value}"
    if isinstance(value, float):
        return "r" + bits(value)
    if isinstance(value, datetime.datetime):
        return "d" + bits((value - BEGINNING).total_seconds())
    if isinstance(value, bytes):
        return "x" + value.hex()
    if isinstance(value, str):
        return "s" + value.encode().hex()
    if isinstance(value, plistlib.UID):
        return f"u{value.data}"
    if isinstance(value, list):
        return "[" + "".join(text_of(each) + "," for each in value) + "]"
    return "{" + "".join(sorted(f"{text_of(key)}:{text_of(each)}," for key, each in value.items())) + "}"


def copy(folder):
    for path in sorted(pathlib.Path(folder).glob("*.plist")):
        value = plistlib.loads(path.read_bytes())
        path.with_suffix(".text").write_text(text_of(value), encoding="ascii")
        path.with_suffix(".copy").write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False))


def random_text(chance):
    pieces = ["a", "Z", "\n", "é", "李", "\uffff", "😀", "\0"]
    return "".join(chance.choice(pieces[: chance.choice([3, 8])]) for _ in range(chance.choice([0, 1, 14, 15, 16, 300])))


def random_value(chance, depth):
    kind = chance.randrange(12 if depth > 0 else 8)
    if kind == 0:
        return chance.choice([True, False])
    if kind == 1:
        return chance.getrandbits(chance.randrange(1, 65))
    if kind == 2:
        return -1 - chance.getrandbits(chance.randrange(1, 64))
    if kind == 3:
        return chance.choice([0.0, -1.5, 1e300, 5e-324, float("inf"), chance.random()])
    if kind == 4:
        return BEGINNING + datetime.timedelta(seconds=chance.randrange(-10**9, 10**9))
    if kind == 5:
        return chance.randbytes(chance.choice([0, 1, 14, 15, 300]))
    if kind == 6:
        return plistlib.UID(chance.getrandbits(chance.randrange(1, 64)))
    if kind == 7:
        return random_text(chance)
    count = chance.choice([0, 1, 3, 4, 15])
    if kind < 10:
        return [random_value(chance, depth - 1) for _ in range(count)]
    return {random_text(chance) + str(i): random_value(chance, depth - 1) for i in range(count)}


def make(folder, seed, count):
    chance = random.Random(int(seed))
    for i in range(int(count)):
        value = {f"key {i}": random_value(chance, 3) for i in range(chance.randrange(1, 8))}
        path = pathlib.Path(folder) / f"{i}.plist"
        path.write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_BINARY))
        path.with_suffix(".text").write_text(text_of(value), encoding="ascii")


class Archive:
    """Writes out what the root of an archive leads to; a second meeting is written as the place of the first."""

    def __init__(self, top):
        assert set(top) == {"$archiver", "$version", "$top", "$objects"}, sorted(top)
        assert top["$archiver"] == "NSKeyedArchiver" and top["$version"] == 100000
        assert list(top["$top"]) == ["root"]
        self.objects = top["$objects"]
        assert self.objects[0] == "$null"
        self.known = set()
        self.used = {0}
        self.root = self.text(top["$top"]["root"])
        assert self.used == set(range(len(self.objects))), "objects that nothing leads to"

    def class_name(self, uid):
        self.used.add(uid.data)
        record = self.objects[uid.data]
        assert set(record) == {"$classname", "$classes"}, sorted(record)
        assert record["$classes"][0] == record["$classname"] and record["$classes"][-1] == "NSObject"
        return ">".join(record["$classes"])

    def text(self, value):
        if not isinstance(value, plistlib.UID):
            assert not isinstance(value, (dict, list)), "containers stand in records of their own"
            return text_of(value)
        place = value.data
        self.used.add(place)
        if place == 0:
            return "null"
        record = self.objects[place]
        if not isinstance(record, dict):
            return text_of(record)
        if place in self.known:
            return f"#{place}"
        self.known.add(place)
        fields = []
        for key in sorted(record):
            if key == "$class":
                continue
            field = record[key]
            if key in ("NS.objects", "NS.keys"):
                assert all(isinstance(each, plistlib.UID) for each in field)
                fields.append(key + "=(" + " ".join(self.text(each) for each in field) + ")")
            else:
                fields.append(key + "=" + self.text(field))
        return self.class_name(record["$class"]) + "{" + " ".join(fields) + "}"


def archive(path):
    print(Archive(plistlib.loads(pathlib.Path(path).read_bytes())).root)


if __name__ == "__main__":
    {"copy": copy, "make": make, "archive": archive}[sys.argv[1]](*sys.argv[2:])
