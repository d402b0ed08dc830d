#!/usr/bin/env python3
"""Quoted delimited files in `show` and `scan`: random ones must give what another reader of such files makes of them."""
import csv
import io
import random

import host

# Heading -> (property, part of its value or label).
COLUMNS = {"First Name": ("name", "first"), "Middle Name": ("name", "middle"), "Last Name": ("name", "last"),
           "Nickname": ("nickname", None), "Notes": ("note", None), "Company": ("company", None),
           "Job Title": ("jobTitle", None), "Mobile Phone": ("phone", "mobile"), "Home Phone": ("phone", "home")}
CELLS = ["Ann", "van Lee", "a, b", "a;b", "a\tb", 'say "so"', "one\ntwo", "", "", "Größe", "日本", "x", "'tis", "=1+1"]
SEPARATORS = [",", ";", "\t"]
LINE_ENDS = ["\n", "\r\n", "\r"]


def random_file(dice):
    headings = dice.sample(sorted(COLUMNS), dice.randint(2, len(COLUMNS)))
    rows = []
    for _ in range(dice.randint(1, 5)):
        cells = [dice.choice(CELLS) for _ in headings]
        # Short rows lack cells.
        rows.append(cells[:dice.randint(1, len(cells))] if dice.random() < 0.2 else cells)
    text = io.StringIO()
    quoting = dice.choice((csv.QUOTE_MINIMAL, csv.QUOTE_ALL))
    writer = csv.writer(text, delimiter=dice.choice(SEPARATORS), lineterminator=dice.choice(LINE_ENDS), quoting=quoting)
    writer.writerow(headings)
    writer.writerows(rows)
    return text.getvalue(), writer.dialect.delimiter


def wanted(text, separator):
    rows = list(csv.reader(io.StringIO(text, newline=""), delimiter=separator))
    persons = []
    for row in rows[1:]:
        if not any(cell.strip() for cell in row):
            continue
        person = {}
        for heading, cell in zip(rows[0], row):
            name, part = COLUMNS[heading]
            if not cell:
                continue
            if name == "name":
                person.setdefault(name, {"first": None, "middle": None, "last": None})[part] = cell
            elif name == "phone":
                person.setdefault(name, []).append((part, cell))
            else:
                person[name] = cell
        persons.append(person)
    return persons


def plain(values):
    person = {}
    for name, value in values.items():
        if isinstance(value, list):
            person[name] = [(entry["label"], entry["value"]) for entry in value]
        else:
            person[name] = value["value"]
    return person


class Agreement(host.HostTest):
    def test_random_files(self):
        persons = 0
        for seed in range(300):
            text, separator = random_file(random.Random(seed))
            path = self.write("random.csv", text.encode())
            shown = self.run_host("show", "--json", path, "--dialect", "rfc4180").json()["persons"]
            expected = wanted(text, separator)
            self.assertEqual(expected, [plain(person["values"]) for person in shown], f"seed {seed}: {text!r}")
            persons += len(shown)
        self.assertGreater(persons, 500)


class Options(host.HostTest):
    def test_without_a_dialect_the_strict_one_reads(self):
        path = self.write("a.csv", 'First,Last\nAnn,"Lee, Jr"\n')
        plainly = self.run_host("show", "--json", path).json()["persons"]
        self.assertEqual(plainly, self.run_host("show", "--json", path, "--dialect", "strict").json()["persons"])
        self.assertEqual({"first": "Ann", "middle": "Lee", "last": None}, plainly[0]["values"]["name"]["value"])
        named = self.run_host("show", "--json", path, "--dialect", "rfc4180").json()["persons"][0]["values"]["name"]
        self.assertEqual({"first": "Ann", "middle": None, "last": "Lee, Jr"}, named["value"])

    def test_a_mapping_can_be_changed(self):
        path = self.write("a.csv", "First,Shoe,Tel A\nAnn,41,030\n")
        values = self.run_host("show", "--json", path, "--map", "Shoe=nickname", "--map", "tel a=phone:work"
                               ).json()["persons"][0]["values"]
        self.assertEqual("41", values["nickname"]["value"])
        self.assertEqual([{"label": "work", "type": 6, "value": "030"}], values["phone"])

    def test_scan_takes_a_dialect_too(self):
        path = self.write("a.csv", 'First,Notes\n" Ann","a\nb"\n')
        found = self.run_host("scan", "--json", path, "--dialect", "rfc4180").json()
        self.assertEqual(1, found["addressBook"]["personCount"])
        issues = {context["issue"] for context in found["contexts"] if context["findings"]}
        self.assertIn("KRIssueSpacingInTheFirstName", issues)

    def test_what_does_not_fit_is_told(self):
        path = self.write("a.csv", "First,Shoe\nAnn,41\n")
        for words, said in ((("--map", "Shoe=foot"), "known are: ignore, name, firstName"),
                            (("--map", "Boot=note"), "the columns are: First, Shoe"),
                            (("--map", "Shoe"), "HEADING=PROPERTY"),
                            (("--use-map", "mine"), "none is saved"),
                            (("--dialect", "strict", "--map", "Shoe=note"), "rfc4180"),
                            (("--dialect", "other"), "strict")):
            result = self.run_host("show", path, *words, code=2)
            self.assertEqual("", result.out)
            self.assertIn(said, result.err)
        card = self.write("a.vcf", host.card("N:;Ann;;;"))
        self.assertIn(".csv", self.run_host("show", card, "--dialect", "strict", code=2).err)
        self.assertIn("missing.csv", self.run_host("show", "missing.csv", "--dialect", "rfc4180", code=2).err)


if __name__ == "__main__":
    host.main()
