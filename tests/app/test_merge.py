#!/usr/bin/env python3
"""The merge of chosen contacts: what becomes of every value, what a dry run leaves alone, and what is refused."""
import json

import host
import schema

SCHEMA = json.loads((host.ROOT / "docs/merge.schema.json").read_text(encoding="utf-8"))

ANN = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL;TYPE=HOME:1", "NOTE:first", "NOTE:second", "CATEGORIES:a,b",
                "X-SKILL:chess", "UID:ann")
ANNE = host.card("N:Barrow;Anne;;;", "FN:Anne Barrow", "TEL;TYPE=WORK:1", "TEL;TYPE=CELL:2", "EMAIL:a@b.example",
                 "NOTE:other", "CATEGORIES:b,c", "X-SKILL:chess", "X-SKILL:go", "ADR:;;Way 1;Town;;123;Norway", "UID:anne")
BOB = host.card("N:;Bob;;;", "FN:Bob", "TEL:3", "UID:bob")
GROUP = host.card("N:Friends;;;;", "FN:Friends", "X-ADDRESSBOOKSERVER-KIND:group",
                  "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:anne", "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:bob", "UID:friends")


class Merge(host.HostTest):
    def setUp(self):
        super().setUp()
        self.book = self.write("book.vcf", ANN + BOB + ANNE + GROUP)

    def merged(self, *words, book=None):
        document = self.run_host("merge", book or self.book, *words, "--json").json()
        schema.check(document, SCHEMA, SCHEMA)
        return document

    def told(self, document, place):
        return {(value["property"] or value["group"] or "-", json.dumps(value["value"])): value["fate"]
                for value in document["persons"][place]["values"]}

    def shown(self, book=None):
        return self.run_host("show", "--json", book or self.book).json()["persons"]

    def trash(self):
        return [person["id"] for person in self.run_host("trash", "list", "--json").json()["persons"]]

    def test_one_new_contact_stands_for_all_and_they_are_in_the_trash(self):
        document = self.merged("ann", "anne")
        persons = self.shown()
        self.assertEqual(["Bob", "Ann Barrow"], [person["showName"] for person in persons])
        self.assertEqual(document["merged"], persons[1])
        self.assertNotIn(persons[1]["id"], ("ann", "anne"))
        self.assertEqual(["ann", "anne"], self.trash())
        self.assertEqual((False, 2), (document["dryRun"], document["addressBook"]["personCount"]))
        self.assertIn(BOB, self.book.read_bytes().decode())

    def test_every_value_is_accounted_for(self):
        document = self.merged("ann", "anne")
        ann, anne = self.told(document, 0), self.told(document, 1)
        self.assertEqual({"kept"}, set(ann.values()))
        self.assertEqual(7, len(document["persons"][0]["values"]))
        self.assertIn(("-", '"note:second"'), ann)
        self.assertEqual({"-": "kept", "friends": "kept"},
                         {name: fate for (name, text), fate in anne.items() if text in ('"x-skill:go"', '"Friends"')})
        self.assertEqual("equal", anne["-", '"x-skill:chess"'])
        self.assertEqual("equal", anne["phone", '"1"'])
        self.assertEqual("kept", anne["phone", '"2"'])
        left = [name for (name, _), fate in anne.items() if fate == "trash"]
        self.assertEqual(["name", "note"], left)
        (phone,) = [value for value in document["persons"][1]["values"] if value["fate"] == "equal" and value["label"]]
        self.assertNotEqual(phone["label"], phone["keptLabel"])
        fates = [value["fate"] for person in document["persons"] for value in person["values"]]
        self.assertEqual(document["counts"], {fate: fates.count(fate) for fate in ("kept", "equal", "trash")})

    def test_lines_that_are_not_shown_and_groups_are_kept_in_the_file(self):
        self.merged("ann", "anne")
        text = self.book.read_bytes().decode()
        for line in ("X-SKILL:chess", "X-SKILL:go", "NOTE:first", "NOTE:second", "a@b.example"):
            self.assertEqual(1, text.count(line + "\r\n"), text)
        self.assertNotIn("NOTE:other", text)
        self.assertLess(text.index("NOTE:first"), text.index("NOTE:second"))
        new = self.shown()[1]["id"]
        for line in ("FN:Ann Barrow", "UID:" + new):
            self.assertEqual(1, text.count(line + "\r\n"), text)
        self.assertEqual(2, text.count("X-ADDRESSBOOKSERVER-MEMBER"))
        self.assertIn("X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + new, text)

    def test_the_first_id_comes_first(self):
        document = self.merged("anne", "ann")
        self.assertEqual("Anne Barrow", document["merged"]["showName"])
        self.assertEqual("other", document["merged"]["values"]["note"]["value"])
        self.assertEqual("trash", self.told(document, 1)["-", '"note:second"'])

    def test_a_merge_of_other_kinds_of_books(self):
        self.run_host("books", "add", "--new", "Family")
        self.run_host("import", self.book, "--into", "Family")
        folder = self.write("cards/ann.vcf", ANN).parent
        self.write("cards/anne.vcf", ANNE)
        for book in ("Family", folder):
            document = self.merged("ann", "anne", book=book)
            persons = self.shown(book)
            self.assertEqual(document["merged"]["values"], persons[document["merged"]["index"]]["values"])
        groups = self.run_host("books", "show", "Family", "--json").json()["groups"]
        self.assertEqual([("Friends", 2)], [(group["name"], group["personCount"]) for group in groups])

    def test_the_trash_puts_the_originals_back(self):
        self.run_host("books", "add", self.book)
        before = {person["id"]: person["values"] for person in self.shown()}
        self.merged("ann", "anne")
        self.run_host("trash", "restore", "--all")
        after = {person["id"]: person["values"] for person in self.shown()}
        self.assertEqual(before, {ID: values for ID, values in after.items() if ID in before})

    def test_undo_puts_the_book_and_the_trash_back(self):
        before = self.book.read_bytes()
        self.merged("ann", "anne")
        self.run_host("undo")
        self.assertEqual((before, []), (self.book.read_bytes(), self.trash()))

    def test_a_dry_run_tells_the_same_and_changes_nothing(self):
        before, stored = self.book.read_bytes(), self.stored_files()
        preview = self.merged("ann", "anne", "--dry-run")
        self.assertIn("Would merge 2 contacts", self.run_host("merge", self.book, "ann", "anne", "--dry-run").out)
        self.assertEqual(before, self.book.read_bytes())
        self.assertEqual({}, {name: content for name, content in self.stored_files().items()
                              if "trash" in name.lower() or name in stored and stored[name] != content})
        document = self.merged("ann", "anne")
        self.assertEqual((True, False), (preview["dryRun"], document["dryRun"]))
        for part in ("addressBook", "counts", "persons"):
            self.assertEqual(preview[part], document[part])

    def test_what_is_left_in_the_trash_is_listed_by_name(self):
        out = self.run_host("merge", self.book, "ann", "anne", COLUMNS="80").out
        self.assertRegex(" ".join(out.split()), r"18 values: 13 kept, 3 equal to a kept one, 2 left only in the trash: "
                                                r"Name, Note Merged 2 contacts of book")
        self.assertIn("kept as", out)
        self.assertIn("Way 1, Town 123, Norway", out)
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80 or line.endswith(" ")])

    def test_long_and_dangerous_texts_fit_a_terminal(self):
        self.book = self.write("book.vcf", ANN.replace("NOTE:first", "NOTE:" + "word\\n" * 300) +
                               ANNE.replace("NOTE:other", "NOTE:\x1b[2J" + "long" * 300))
        out = self.run_host("merge", self.book, "ann", "anne", COLUMNS="80").out
        self.assertNotIn("\x1b", out)
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80 or line.endswith(" ")])

    def test_what_cannot_be_merged_is_refused_in_one_line(self):
        before = self.book.read_bytes()
        for words, said in ((("ann", "nobody"), '"nobody"'), (("ann",), "two contacts"), (("ann", "ann"), "twice"),
                            (("ann", "anne", "bob", "ann"), "twice")):
            result = self.run_host("merge", self.book, *words, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
            self.assertIn(said, result.err)
        for words in (("nowhere.vcf", "a", "b"), (self.write("a.csv", "Name\nx\n"), "a", "b"), ("-", "a", "b")):
            result = self.run_host("merge", *words, code=2)
            self.assertEqual(("", 1), (result.out, result.err.count("\n")))
        self.assertEqual(before, self.book.read_bytes())
        self.assertEqual([], self.trash())


if __name__ == "__main__":
    host.main()
