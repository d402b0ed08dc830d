#!/usr/bin/env python3
"""Delimited files in `show` and `scan`: what the program makes of random ones must be what an independent reading of the
same rules makes of them, given the properties that the program tells."""
import datetime
import random
import subprocess

import host

TABLE = {**dict.fromkeys(("first", "first name", "first_name"), ("name", "First")),
         **dict.fromkeys(("last", "last name", "last_name"), ("name", "Middle")),
         **dict.fromkeys(("middle", "middle name", "middle_name"), ("name", "Last")), "name": ("name", None)}
PHONES = ("phone", "mobile", "iphone")
LOW_BYTES = set(b"0123456789 ()+-") | {0xA0}

HEADINGS = ["First", "first name", "Last_Name", "MIDDLE", "Name", "Phone", "iPhone", "Mobile", "Telephone", "E-mail", "email 2",
            "Birthday", "Job Title", "company", "My Company", "Note", "Tags", "Address", "Other Date", "Instant Message",
            "Web Page", "Photo", "x", "", "Über", "Nickname", "title", "Suffix", "Other", "Prefix", "Role", "\"Name\""]
CELLS = ["Ann", "Ann Lee", "Ann Marie van Lee", " ", "", "  ", "a@b.c", "+1 (2)-3", "1990/03/02", "02/03/1990", "\"quoted\"",
         "\"open", "close\"", "\"\"", "\"", "a\"\"b", "Skype ann", "Nobody ann Nobody x", "1 Main Road Exeter Devon EX1 1AA UK x",
         "日本", "丰", "\u00a0", "a b", "x;y", "'", "2000/02/30", "0", "a, b", "\"a, b\"", "tab\there"]
SEPARATORS = [",", "\t", "\"\t\""]
LINE_ENDS = ["\n", "\r\n", "\r"]


def unquoted(field):
    if field.startswith('"'):
        field = field[1:]
        if field.endswith('"'):
            field = field[:-1]
    return field.replace("\r", "\n")


def rows_of(text):
    lines = text.split("\n")
    if len(lines) < 2:
        lines = text.split("\r")
    rows = []
    for line in lines:
        pieces = line.split('"\t')
        if len(pieces) < 2:
            pieces = line.split("\t")
        if len(pieces) < 2:
            pieces = line.split(",")
        row = [unquoted(piece) for piece in pieces]
        if not rows:
            if row[-1] == "":
                row.pop()
        else:
            row = row[:len(rows[0])]
            if len(row) < len(rows[0]):
                continue
        if row:
            rows.append(row)
    return rows


def is_phone(text):
    units = text.encode("utf-16-le")
    return all(low in LOW_BYTES for low in units[::2])


class Rules:
    def __init__(self, document):
        properties = document["properties"]
        self.fields = document["addressFields"]
        self.country = document["countryCode"]
        self.properties = {row["name"]: row for row in properties}
        self.candidates = [(row["name"], row["name"].lower(), row["displayName"].lower()) for row in properties
                           if row["name"] not in ("name", "other", "thumbnail")]

    def meaning(self, heading, first):
        low = heading.lower()
        if low in TABLE:
            return TABLE[low]
        if low in PHONES:
            return "phone", heading
        for name, own, shown in self.candidates:
            if low in (own, shown):
                return name, heading
        for name, own, shown in self.candidates:
            if own in low or shown in low:
                return name, heading
        if is_phone(first):
            return "phone", heading
        return ("email" if "@" in first and "." in first else "other"), heading

    def person(self, columns, row):
        values = {}
        for name, items in columns.items():
            kind = self.properties[name]["valueType"]
            cells = [(label, row[index]) for index, label in items]
            label = self.properties[name]["displayName"]
            if name == "name":
                values[name] = {"label": label, "type": 5, "value": whole_name(cells)}
            elif kind != 12:
                value = converted(cells[0][1], kind if kind in (3, 10) else 0, self) if cells[0][1] else None
                if value is not None:
                    values[name] = {"label": label, "type": kind, "value": value}
            else:
                kind = self.properties[name]["subValueType"]
                made = [(each, converted(cell, kind, self)) for each, cell in cells if cell]
                values[name] = [{"label": each, "type": kind, "value": value} for each, value in made if value is not None]
        return values

    def persons(self, text):
        rows = rows_of(text)
        if len(rows) < 2:
            return []
        columns = {}
        for index, heading in enumerate(rows[0]):
            name, label = self.meaning(heading, rows[1][index] if index < len(rows[1]) else "")
            columns.setdefault(name, []).append((index, label))
        return [self.person(columns, row) for row in rows[1:]]


def whole_name(cells):
    parts = {"First": None, "Middle": None, "Last": None}
    for part, cell in cells:
        if not cell:
            continue
        if part is not None:
            parts[part] = cell
            continue
        words = cell.split(" ")
        parts["First"] = words[0] or None
        if len(words) == 2:
            parts["Last"] = words[1] or None
        elif len(words) > 2:
            parts["Middle"] = words[1] or None
            parts["Last"] = "".join(words[2:]) or parts["Last"]
    return {"first": parts["First"], "middle": parts["Middle"], "last": parts["Last"]}


def converted(text, kind, rules):
    if kind == 3:
        pieces = text.split("/")
        if [len(piece) for piece in pieces] != [4, 2, 2] or not all(piece.isascii() and piece.isdigit() for piece in pieces):
            return None
        try:
            return datetime.date(*map(int, pieces)).isoformat()
        except ValueError:
            return None
    if kind == 10:
        return text.split(",")
    if kind == 9:
        fields = {}
        for index, word in enumerate(text.split(" ")):
            fields[rules.fields[min(index, len(rules.fields) - 1)]] = word
        return {"countryCode": rules.country, "fields": {name: word for name, word in fields.items() if word}}
    if kind == 13:
        if " " not in text:
            return None
        service = text.split(" ")[0]
        return {"server": "skype" if service == "Skype" else None, "userName": text.replace(service + " ", "")}
    return text


def random_file(dice):
    separator, end = dice.choice(SEPARATORS), dice.choice(LINE_ENDS)
    width = dice.randint(1, 7)
    lines = [separator.join(dice.choice(HEADINGS) for _ in range(width)) + dice.choice(("", separator))]
    for _ in range(dice.randint(0, 6)):
        count = max(0, width + dice.choice((0, 0, 0, 1, -1)))
        cells = [dice.choice(CELLS) for _ in range(count)]
        lines.append(separator.join(f'"{cell}"' if dice.random() < 0.2 else cell for cell in cells))
        if dice.random() < 0.1:
            lines.append("")
    if dice.random() < 0.2:
        lines.insert(0, "")
    return end.join(lines) + dice.choice(("", end))


class Agreement(host.HostTest):
    def test_random_files(self):
        rules = Rules(self.run_host("properties", "--json").json())
        persons = 0
        for seed in range(500):
            text = random_file(random.Random(seed))
            path = self.write("random.csv", text)
            wanted = rules.persons(text)
            dropped = len(wanted) == 0 and self.is_refused(path)
            shown = [] if dropped else self.run_host("show", "--json", path).json()["persons"]
            self.assertEqual(wanted, [person["values"] for person in shown], f"seed {seed}: {text!r}")
            self.assertTrue(all(person["id"] == "123" for person in shown))
            persons += len(shown)
        self.assertGreater(persons, 500)

    def is_refused(self, path):
        """Whether the program finds rows but no contact."""
        return subprocess.run([host.PROGRAM, "show", "--json", path], capture_output=True, env=self.environment(),
                              timeout=host.TIMEOUT).returncode == 2


class Files(host.HostTest):
    def test_rows_that_are_dropped_are_counted(self):
        path = self.write("a.csv", "First,Last\nAnn,Lee\nalone\nBo,Ng\n")
        result = self.run_host("show", "--json", path)
        self.assertEqual(2, len(result.json()["persons"]))
        self.assertIn("1 row could not be read", result.err)
        self.assertIn("a.csv:3: ", self.run_host("show", "--json", "--verbose", path).err)

    def test_scan_reads_them_too(self):
        path = self.write("a.CSV", "First,Phone\nAnn ,12a\n")
        self.assertEqual(1, self.run_host("scan", "--json", path).json()["addressBook"]["personCount"])

    def test_a_file_without_rows_is_an_empty_book(self):
        for content in ("", "First,Last\n"):
            self.assertEqual([], self.run_host("show", "--json", self.write("a.csv", content)).json()["persons"])

    def test_files_that_cannot_be_used_are_named(self):
        for path in ("missing.csv", self.write("short.csv", "First,Last\nalone\n")):
            result = self.run_host("show", "--json", path, code=2)
            self.assertEqual("", result.out)
            self.assertIn(str(path), result.err)


if __name__ == "__main__":
    host.main()
