#!/usr/bin/env python3
"""Delimited files that `export` and `convert` write: the same contacts when they are read, and nothing in them that a
spreadsheet would run."""
import csv
import io
import re

import host
import random_book

FORMULAS = host.card("N:=Lee;+Ann;;;", "FN:+Ann =Lee", "TEL;TYPE=HOME:+44 1", "TEL:-5", "EMAIL:@ann",
                     "NOTE:=HYPERLINK(1)\\nsecond", "NICKNAME:'tis", "ORG:''two", "TITLE:plain", "UID:f")
GROUP = host.card("FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:f", "UID:g")

UNIQUE_ID = re.compile(r"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", re.IGNORECASE)


class Files(host.HostTest):
    def values(self, *words):
        return [person["values"] for person in self.run_host("show", "--json", *words).json()["persons"]]

    def cells(self, name):
        text = (self.folder / name).read_bytes().decode()
        return [cell for row in csv.reader(io.StringIO(text, newline="")) for cell in row]


class Export(Files):
    def setUp(self):
        super().setUp()
        self.run_host("books", "add", "--new", "Family")

    def put(self, text):
        self.run_host("import", self.write("in.vcf", text), "--into", "Family")

    def test_a_book_comes_back_the_same(self):
        self.put(random_book.book(200, 7)[0] + FORMULAS)
        expected = self.values("Family")
        self.assertGreater(len(expected), 150)
        for number, words in enumerate(((), ("--raw-cells",))):
            self.run_host("export", "Family", "--to", f"{number}.csv", *words)
            self.run_host("books", "add", "--new", f"Copy {number}")
            done = self.run_host("import", f"{number}.csv", "--into", f"Copy {number}", "--dialect", "rfc4180",
                                 "--existing", "both", "--json").json()
            self.assertEqual((len(expected), 0), (done["added"], done["lost"]))
            self.assertEqual(expected, self.values(f"Copy {number}"))
            # And what comes back is written as it was.
            self.run_host("export", f"Copy {number}", "--to", f"{number}-again.csv", *words)
            self.assertEqual(*((self.folder / name).read_bytes() for name in (f"{number}.csv", f"{number}-again.csv")))

    def test_no_cell_is_a_formula_unless_asked_for(self):
        self.put(FORMULAS)
        result = self.run_host("export", "Family", "--to", "safe.csv")
        size = (self.folder / "safe.csv").stat().st_size
        self.assertRegex(result.out.replace("\n", " "), f"^Wrote 1 contact of Family .* to safe.csv: {size} bytes $")
        self.assertEqual([], [cell for cell in self.cells("safe.csv") if cell[:1] in tuple("=+-@\t\r")])
        self.assertTrue({"'=Lee", "'+Ann", "'+44 1", "'-5", "'@ann", "''tis", "'''two", "plain"}
                        <= set(self.cells("safe.csv")))
        self.run_host("export", "Family", "--to", "raw.csv", "--raw-cells")
        self.assertTrue({"=Lee", "+Ann", "+44 1", "'tis", "''two"} <= set(self.cells("raw.csv")))
        guarded, = self.values("safe.csv", "--raw-cells")
        self.assertEqual("''tis", guarded["nickname"]["value"])

    def test_some_contacts_and_no_groups(self):
        self.put(FORMULAS + host.card("N:;Bob;;;", "UID:bob") + GROUP)
        result = self.run_host("export", "Family", "--to", "some.csv", "--where", "bob")
        self.assertIn("Wrote 1 contact of", result.out)
        self.assertEqual("Bob", self.values("some.csv", "--dialect", "rfc4180")[0]["name"]["value"]["first"])
        self.run_host("export", "Family", "--to", "dry.csv", "--dry-run")
        self.assertFalse((self.folder / "dry.csv").exists())

    def test_what_does_not_fit_is_told(self):
        self.write("there.csv", "mine")
        for words, said in ((("--to", "there.csv"), "--force"), (("--to", "a.csv", "--version", "4.0"), "--version"),
                            (("--to", "a.vcf", "--raw-cells"), ".csv"), (("--to", "a.txt"), ".csv")):
            self.assertIn(said, self.run_host("export", "Family", *words, code=2).err)
        self.assertEqual("mine", (self.folder / "there.csv").read_text())


class Convert(Files):
    def test_cards_become_rows_and_rows_cards(self):
        source = self.write("a.vcf", random_book.book(50, 9)[0] + FORMULAS + GROUP)
        result = self.run_host("convert", source, "--to", "a.csv")
        self.assertIn("Wrote 51 contacts to a.csv: ", result.out)
        self.assertIn("cannot hold 1 group", result.err)
        self.assertEqual(self.values(source), self.values("a.csv", "--dialect", "rfc4180"))
        for version in (None, "2.1", "4.0"):
            words = ("--version", version) if version else ()
            done = self.run_host("convert", "a.csv", "--dialect", "rfc4180", "--to", "b.vcf", "--force", *words)
            self.assertIn(f"bytes, vCard {version or '3.0'}\n", done.out)
            self.assertEqual(self.values(source), self.values("b.vcf"))
            ids = [person["id"] for person in self.run_host("show", "--json", "b.vcf").json()["persons"]]
            self.assertEqual(51, len(set(ids)))
            self.assertFalse([each for each in ids if not UNIQUE_ID.fullmatch(each)])

    def test_a_contact_of_thousands_of_values_comes_back(self):
        source = self.write("a.vcf", host.card("N:Lee;Ann;;;", *(f"TEL:{number}" for number in range(20000)), "UID:ann"))
        self.run_host("convert", source, "--to", "a.csv")
        self.assertIn("Phone 20000 - Value", (self.folder / "a.csv").read_text())
        self.assertEqual(self.values(source), self.values("a.csv", "--dialect", "rfc4180"))

    def test_what_a_killed_run_left_beside_the_file_goes(self):
        source = self.write("a.vcf", FORMULAS)
        left = self.write(".krcontacts.new-a1B2c3", "half")
        self.run_host("convert", source, "--to", "a.csv")
        self.assertFalse(left.exists())

    def test_what_could_not_be_read_back_is_not_written(self):
        source = self.write("a.vcf", host.card("N:Lee;Ann;;;", *(f"TEL:{number}" for number in range(140000)), "UID:ann"))
        result = self.run_host("convert", source, "--to", "a.csv", code=2)
        self.assertIn("would need 280003 columns, more than can be read back (262144)", result.err)
        self.assertFalse((self.folder / "a.csv").exists())

    def test_rows_of_others_become_our_own(self):
        source = self.write("a.csv", "Given Name;Family Name;Shoe\nAnn;Lee;41\n")
        self.run_host("convert", source, "--map", "Shoe=note", "--to", "b.csv")
        shown, = self.values("b.csv", "--dialect", "rfc4180")
        self.assertEqual({"first": "Ann", "middle": None, "last": "Lee"}, shown["name"]["value"])
        self.assertEqual("41", shown["note"]["value"])

    def test_the_strict_dialect_is_the_one_unless_another_is_named(self):
        source = self.write("a.csv", "First,Last\nAnn,Lee\n")
        self.run_host("convert", source, "--to", "b.vcf")
        self.assertEqual(self.values(source), self.values("b.vcf"))

    def test_what_does_not_fit_is_told(self):
        cards = self.write("a.vcf", FORMULAS)
        for words, said in (((cards, "--to", "a.csv", "--version", "4.0"), "--version"),
                            ((cards, "--to", "a.csv", "--map", "A=note"), ".csv"),
                            ((cards, "--to", "b.vcf", "--raw-cells"), ".csv"),
                            (("missing.csv", "--to", "b.vcf"), "missing.csv")):
            self.assertIn(said, self.run_host("convert", *words, code=2).err)
        self.run_host("convert", cards, "--to", "raw.csv", "--raw-cells")
        self.assertIn("=Lee", self.cells("raw.csv"))


if __name__ == "__main__":
    host.main()
