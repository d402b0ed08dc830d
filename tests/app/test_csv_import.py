#!/usr/bin/env python3
"""Delimited files through `import`: the preview, what is put into a book, and what is told of the rest."""
import json

import host

PAIRS = ('First Name,Last Name,Phone 1 - Label,Phone 1 - Value,Notes,Shoe\r\n'
         'Ann,Lee,Mobile,+49 171 1,"a, ""b""\r\nc",41\r\nBo,Ng,Work,030,,42\r\n')


FIELDS = ("poBox", "extended", "street", "city", "region", "postalCode", "country")


def text_of(values):
    """A line for each value, as the table of exporters has them."""
    def shown(text):
        return "-" if text is None else f"'{text}'"

    def entry(name, each):
        value = each["value"]
        if name == "address":
            return "-" + "".join(shown(value["fields"].get(field)) for field in FIELDS) + shown(value["countryCode"])
        if name == "instantMessage":
            return shown(value["userName"]) + (f" at {shown(value['server'])}" if value["server"] else "")
        return shown(value)

    lines = []
    for name, value in values.items():
        if isinstance(value, list):
            lines += [f"{name} {shown(each['label'])}: {entry(name, each)}" for each in value]
        elif name == "name":
            parts = value["value"]
            lines.append(f"name: {shown(parts['first'])}{shown(parts['middle'])}{shown(parts['last'])}")
        elif name == "tags":
            lines += [f"tags -: {shown(tag)}" for tag in value["value"]]
        else:
            lines.append(f"{name}: {shown(value['value'])}")
    return lines


class Import(host.HostTest):
    def setUp(self):
        super().setUp()
        self.run_host("books", "add", "--new", "Family")

    def put(self, path, *words, code=0):
        return self.run_host("import", path, "--into", "Family", *words, code=code)

    def persons(self, book="Family"):
        return self.run_host("show", book, "--json").json()["persons"]

    def test_the_preview_shows_the_mapping_and_the_first_contacts_and_puts_nothing_in(self):
        rows = "".join(f"Name{i},Last{i},,0{i},,\r\n" for i in range(7))
        path = self.write("a.csv", PAIRS + rows)
        shown = self.run_host("import", path, "--preview", "--dialect", "rfc4180").out
        for line in (("1", "First Name", "Ann | Bo | Name0", "firstName", "heading"),
                     ("3", "Phone 1 - Label", "Mobile | Work", "phone.label", "heading"),
                     ("6", "Shoe", "41 | 42", "other", "Shoe", "not known")):
            self.assertTrue(any(all(part in each for part in line) for each in shown.splitlines()), (line, shown))
        self.assertIn("Name2 Last2", shown)
        self.assertNotIn("Name3", shown.split("why")[1])
        document = self.put(path, "--preview", "--map", "Shoe=nickname", "--json").json()["files"][0]
        self.assertEqual(("rfc4180", 9, 5), (document["dialect"], document["contacts"], len(document["persons"])))
        self.assertEqual({"heading": "Shoe", "firstValues": ["41", "42"], "property": "nickname", "label": None,
                          "why": "chosen"}, document["columns"][5])
        self.assertEqual([], self.persons())

    def test_the_preview_of_many_columns_with_long_names_keeps_to_the_screen(self):
        headings = [f"Address {i} - Postal Code" if i % 2 else f"A heading of several words, number {i}" for i in range(110)]
        path = self.write("a.csv", "First Name,Instant Message 1 - Service," + ",".join(f'"{each}"' for each in headings) +
                          "\nAnn,Chat," + ",".join(f"a longer value {i}" for i in range(110)) + "\n")
        for width in (80, 100, 140):
            shown = self.run_on_terminal("import", path, "--preview", "--dialect", "rfc4180", "--no-progress", width=width)
            table = host.ESCAPE.sub("", shown.out)
            self.assertEqual([], [line for line in table.splitlines() if len(line) > width])
            self.assertIn("address.postalCode", table)
            self.assertIn("A heading of", table)

    def test_the_preview_of_the_strict_dialect_tells_what_it_drops(self):
        path = self.write("a.csv", "Last,Other Thing,Z,Y\nLee,one,a@b.c,x\nshort\nNg,two,,\n")
        document = self.run_host("import", path, "--preview", "--json").json()["files"][0]
        self.assertEqual([("name", "Middle", "heading"), ("other", "Other Thing", "not known, kept as it is"),
                          ("email", "Z", "first value"), ("other", "Y", "not known, kept as it is")],
                         [(each["property"], each["label"], each["why"]) for each in document["columns"]])
        self.assertEqual([3], document["dropped"])
        self.assertIn("1 row cannot be read; on line 3", self.run_host("import", path, "--preview").out)
        self.assertIn(".csv", self.run_host("import", self.write("a.vcf", ""), "--preview", code=2).err)

    def test_contacts_get_identifiers_of_their_own_and_come_once(self):
        for dialect in ("rfc4180", "strict"):
            path = self.write("a.csv", PAIRS)
            self.run_host("books", "add", "--new", dialect)
            for kind in ("added", "equal"):
                counts = self.run_host("import", path, "--into", dialect, "--dialect", dialect, "--json").json()
                self.assertEqual(2, counts[kind], (dialect, kind, counts))
            ids = [person["id"] for person in self.persons(dialect)]
            self.assertEqual(len(ids), len(set(ids)))
            self.assertNotIn("123", ids)
        expected = self.run_host("show", "--json", path, "--dialect", "rfc4180").json()["persons"]
        self.assertEqual([person["values"] for person in expected],
                         [person["values"] for person in self.persons("rfc4180")])
        both = self.run_host("import", path, "--into", "rfc4180", "--dialect", "rfc4180", "--existing", "both", "--json")
        self.assertEqual(2, both.json()["added"])

    def test_rows_that_are_dropped_are_counted_with_their_lines(self):
        path = self.write("a.csv", "First,Phone\nAnn,1\nalone\nBo,2\nmore\n")
        result = self.put(path, "--rejects", "rejected.csv")
        self.assertIn("a.csv:3: ", result.out)
        self.assertIn("a.csv:5: ", result.out)
        self.assertRegex(result.out, r"rejected +2\n")
        self.assertEqual("alone\r\nmore\r\n", (self.folder / "rejected.csv").read_bytes().decode())
        document = self.put(path, "--json").json()
        self.assertEqual((2, [3, 5]), (document["lost"], [each["line"] for each in document["rejects"]]))

    def test_what_is_not_known_is_told_and_nothing_is_put_in(self):
        path = self.write("a.csv", PAIRS)
        self.assertIn("known are: ignore", self.put(path, "--map", "Shoe=foot", code=2).err)
        self.assertIn("the columns are: First Name, ", self.put(path, "--map", "Boot=note", code=2).err)
        self.put("missing.csv", "--dialect", "rfc4180", code=2)
        self.assertIn("--into", self.run_host("import", path, code=2).err)
        self.assertEqual([], self.persons())

    def test_who_names_no_dialect_is_told_that_there_is_another(self):
        path = self.write("a.csv", PAIRS)
        self.assertIn("--dialect rfc4180", self.put(path, "--dry-run").err)
        self.assertNotIn("--dialect", self.put(path, "--dry-run", "--dialect", "strict").err)

    def test_a_mapping_is_saved_and_used_again(self):
        first = self.write("a.csv", PAIRS)
        self.put(first, "--map", "Shoe=nickname", "--save-map", "mine", "--dry-run")
        self.assertIn("none is saved", self.put(first, "--use-map", "mine", code=2).err)
        self.put(first, "--map", "Shoe=nickname", "--save-map", "mine")
        self.put(self.write("b.csv", "Shoe,First Name\n43,Cy\n"), "--use-map", "mine")
        self.assertEqual([("Ann", "41"), ("Bo", "42"), ("Cy", "43")],
                         [(each["values"]["name"]["value"]["first"], each["values"]["nickname"]["value"])
                          for each in self.persons()])
        self.assertIn("saved are: mine", self.put(first, "--use-map", "other", code=2).err)

    def test_kept_mappings_are_listed_and_removed(self):
        self.assertIn("--save-map", self.run_host("mappings").out)
        for name in ("shop", "club"):
            self.put(self.write("a.csv", "First Name,Shoe\r\nAnn,41\r\n"), "--map", "Shoe=note", "--save-map", name)
        self.assertEqual("club · 2 columns\n  First Name = firstName\n  Shoe = note\n\n"
                         "shop · 2 columns\n  First Name = firstName\n  Shoe = note\n", self.run_host("mappings").out)
        first = self.run_host("mappings", "list", "--json").json()["mappings"][0]
        self.assertEqual({"name": "club", "columns": [{"heading": "First Name", "property": "firstName", "label": None},
                                                      {"heading": "Shoe", "property": "note", "label": None}]}, first)
        self.assertIn('no mapping "x"', self.run_host("mappings", "remove", "shop", "x", code=2).err)
        self.assertEqual("Removed the mapping shop\n", self.run_host("mappings", "remove", "shop").out)
        self.assertEqual(["club"], [each["name"] for each in self.run_host("mappings", "--json").json()["mappings"]])
        self.run_host("undo")
        self.assertEqual(2, len(self.run_host("mappings", "--json").json()["mappings"]))

    def test_separator_and_order_of_dates_may_be_said(self):
        path = self.write("a.csv", "First Name|Birthday\r\nAnn, the first|3/2/1990\r\n")
        for order, date in (("day-first", "1990-02-03"), ("month-first", "1990-03-02")):
            words = (path, "--separator", "pipe", "--day-order", order)
            values = self.run_host("show", "--json", *words).json()["persons"][0]["values"]
            self.assertEqual(("Ann, the first", date), (values["name"]["value"]["first"], values["birthday"]["value"]))
            lines = self.run_host("load", *words).out.splitlines()
            self.assertEqual(values, json.loads(lines[2])["person"]["values"])
        for words in (("--separator", "ab"), ("--separator", "é"), ("--separator", '"'), ("--day-order", "year"),
                      ("--separator", "tab", "--dialect", "strict")):
            self.assertEqual(1, self.run_host("show", path, *words, code=2).err.count("\n"), words)
        self.assertIn(".csv", self.run_host("load", self.write("a.vcf", ""), "--separator", "tab", code=2).err)

    def test_cards_and_rows_come_together(self):
        card = self.write("a.vcf", host.card("N:;Cy;;;", "UID:cy"))
        counts = self.run_host("import", card, self.write("a.csv", PAIRS), "--into", "Family", "--dialect", "rfc4180",
                               "--json").json()
        self.assertEqual((3, 3), (counts["records"], counts["added"]))


class Exporters(host.HostTest):
    def test_every_cell_of_common_programs_finds_its_place(self):
        programs = json.loads((host.ROOT / "tests" / "data" / "exporters.json").read_text())
        self.assertGreaterEqual(len(programs), 6)
        all_cells = all_placed = 0
        for number, program in enumerate(programs):
            headings, cells, _ = zip(*program["columns"])
            quoted = [f'"{cell}"' for cell in cells]
            path = self.write("a.csv", program["separator"].join(headings) + "\r\n" + program["separator"].join(quoted) + "\r\n")
            self.run_host("books", "add", "--new", f"Book {number}")
            self.run_host("import", path, "--into", f"Book {number}", "--dialect", "rfc4180")
            person, = self.run_host("show", f"Book {number}", "--json").json()["persons"]
            lines = text_of(person["values"])
            wanted = [line for _, cell, line in program["columns"] if cell and line]
            missing = [line for line in wanted + program["lines"] if line not in lines]
            self.assertEqual([], missing, (program["name"], lines))
            placed = sum(line in lines for line in wanted)
            print(f"{program['name']:22} {placed} of {len(wanted)} cells in their place")
            all_cells += len(wanted)
            all_placed += placed
        print(f"{'all':22} {all_placed} of {all_cells} ({100 * all_placed / all_cells:.1f} %)")


if __name__ == "__main__":
    host.main()
