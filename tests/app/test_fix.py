#!/usr/bin/env python3
"""Fixes of whole issues: what they change, what a dry run tells of it, what is refused, and what becomes of a book and a
trash that cannot be written."""
import json
import resource
import shutil
import subprocess

import host
import schema

SCHEMA = json.loads((host.ROOT / "docs/fix.schema.json").read_text(encoding="utf-8"))
EXAMPLE = host.ROOT / "examples/address-book.vcf"

TWIN = host.card("N:Finch;Oliver;;;", "FN:Oliver Finch", "TEL:1", "X-KEPT:yes")
SAME_A = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL;TYPE=CELL:2", "UID:ann")
SAME_B = host.card("N:Barrow;Ann;;;", "FN:Ann Barrow", "TEL;TYPE=HOME:2", "TEL;TYPE=HOME:3", "NOTE: rings late", "UID:ann2")
SPACE = host.card("N:Bell;Mary Jane;;;", "FN:Mary Jane Bell", "UID:bell")
TITLE = host.card("N:Weiss;Anja;;Dipl.-Ing.;", "FN:Anja Weiss", "UID:weiss")
HALF = host.card("N:;Priya;;;", "FN:Priya", "UID:priya")


class Fix(host.HostTest):
    def book(self, *cards, name="book.vcf"):
        return self.write(name, "".join(cards))

    def fix(self, book, *choices, **more):
        words = [word for choice in choices for word in (("--apply", choice) if "=" in choice else (choice,))]
        return self.run_host("fix", book, *words, **more)

    def document(self, book, *choices):
        document = self.fix(book, *choices, "--json").json()
        schema.check(document, SCHEMA, SCHEMA)
        return document

    def shown(self, book):
        return self.run_host("show", "--json", book).json()["persons"]

    def names(self, book):
        return [person["showName"] for person in self.shown(book)]

    def trash(self):
        return [person["showName"] for person in self.run_host("trash", "list", "--json").json()["persons"]]

    def test_a_contact_that_is_deleted_is_gone_from_the_file_and_in_the_trash(self):
        book = self.book(TWIN, SAME_A, TWIN)
        out = self.fix(book, "exact-duplicates=delete-duplicates").out
        self.assertIn("1 finding fixed; 1 contact moved to the trash", out)
        self.assertEqual((TWIN + SAME_A).encode(), book.read_bytes())
        self.assertEqual(["Oliver Finch"], self.trash())
        self.assertEqual([], self.run_host("scan", "--json", book, "--issues", "exact-duplicates").json()["contexts"])

    def test_a_book_of_the_list_is_called_by_its_id_or_name_or_is_the_default_one(self):
        self.run_host("books", "add", "--new", "Family")
        for words in (("Family",), ()):
            self.run_host("import", self.book(TWIN, TWIN), "--into", "Family", "--existing", "both")
            self.run_host("fix", *words, "--apply", "exact-duplicates=delete-duplicates")
            self.assertEqual(["Oliver Finch"], self.names("Family"))

    def test_settings_that_cannot_be_written_matter_only_to_fixes_that_change_them(self):
        # No folder can be made below a file, whoever runs this.
        (self.home / "config").write_text("no folder")
        out = self.fix(self.book(SPACE), "first-name-spacing=remove-space")
        self.assertIn("1 finding fixed", out.out)
        self.assertNotIn("settings", out.out + out.err)
        err = self.fix(self.book(TITLE), "unusual-title=add-support", code=2).err
        self.assertIn("the contacts are saved, but not the settings", err)

    def test_a_heading_without_findings_names_the_fix_as_others_do(self):
        out = self.fix(self.book(HALF), "exact-duplicates=delete-duplicates", "unusual-title=add-support").out
        for fix in ("Delete duplicate contacts", "Add to Allowed Prefixes List"):
            self.assertIn(f" · {fix} (0)\n", out)

    def test_a_folder_is_fixed_file_by_file(self):
        self.book(TWIN, name="folder/a.vcf")
        self.book(TWIN, name="folder/b.vcf")
        self.book(SAME_A, name="folder/c.vcf")
        self.fix(self.folder / "folder", "exact-duplicates=delete-duplicates")
        self.assertEqual(["a.vcf", "c.vcf"], sorted(path.name for path in (self.folder / "folder").glob("*.vcf")))
        self.assertEqual(["Oliver Finch"], self.trash())

    def test_contacts_of_the_same_name_are_merged_into_a_new_one(self):
        book = self.book(SAME_A, SAME_B, SPACE)
        self.fix(book, "duplicate-names=merge")
        self.assertEqual(["Mary Jane Bell", "Ann Barrow"], self.names(book))
        values = self.shown(book)[1]["values"]
        self.assertEqual([("mobile", "2"), ("home", "3")], [(each["label"], each["value"]) for each in values["phone"]])
        self.assertEqual(["Ann Barrow", "Ann Barrow"], self.trash())

    def test_several_issues_are_fixed_in_the_order_given_and_accounted_for(self):
        book = self.book(TWIN, TWIN, SPACE, HALF)
        document = self.document(book, "first-name-spacing=RemoveSpace", "Duplicate Info=KRHandleNameDeleteDuplicatePerson",
                                 "incomplete-name=use-default-string", "blank-name=ignore")
        figures = [[fix[name] for name in ("findings", "changed", "made", "trashed")] for fix in document["fixes"]]
        self.assertEqual([[1, 1, 0, 0], [1, 0, 0, 1], [1, 1, 0, 0], [0, 0, 0, 0]], figures)
        self.assertEqual(["Oliver Finch", "MaryJane Bell", "Priya ???"], self.names(book))
        self.assertEqual(3, document["addressBook"]["personCount"])

    def test_an_allowed_prefix_is_kept_in_the_settings_alone(self):
        book = self.book(TITLE)
        document = self.document(book, "unusual-title=add-to-list")
        self.assertEqual(["Dipl.-Ing."], document["fixes"][0]["allowed"])
        self.assertEqual(TITLE.encode(), book.read_bytes())
        self.assertIn("Dipl.-Ing.", self.run_host("settings", "show", "prefixes").out)
        self.assertEqual([], self.trash())

    def test_the_choice_of_issues_stays_as_it_is(self):
        self.run_host("issues", "drop", "exact-duplicates", "unusual-title")
        before = self.run_host("issues", "--json").out
        self.fix(self.book(TWIN, TWIN, TITLE), "exact-duplicates=delete-duplicates", "unusual-title=add-to-list")
        self.assertEqual(["Oliver Finch"], self.trash())
        self.assertEqual(before, self.run_host("issues", "--json").out)

    def test_findings_are_narrowed_to_contacts(self):
        other = TWIN.replace("Oliver", "Olivia")
        book = self.book(TWIN, TWIN, other, other)
        self.fix(book, "exact-duplicates=delete-duplicates", "--where", "olivia")
        self.assertEqual(["Oliver Finch", "Oliver Finch", "Olivia Finch"], self.names(book))
        ID = self.shown(book)[0]["id"]
        self.fix(book, "exact-duplicates=delete-duplicates", "--id", ID)
        self.assertEqual(["Oliver Finch", "Olivia Finch"], self.names(book))
        self.assertIn("nobody", self.run_host("fix", book, "--apply", "blank-name=ignore", "--id", "nobody", code=2).err)

    def test_a_dry_run_tells_what_changes_line_by_line_and_writes_nothing(self):
        book = self.book(TWIN, TWIN, SAME_A, SAME_B, SPACE, TITLE)
        choices = ("exact-duplicates=delete-duplicates", "duplicate-names=merge", "first-name-spacing=remove-space",
                   "unusual-title=add-to-list")
        self.run_host("issues")  # the first run keeps what is chosen at first
        before = (book.read_bytes(), self.stored_files())
        out = self.fix(book, *choices, "--dry-run", COLUMNS="80").out
        for line in ("- First Name                Mary Jane", "+ First Name                MaryJane",
                     "- to the trash: Oliver Finch", "+ Phone           home      3", "+ counts as usual: Dipl.-Ing.",
                     "Nothing is written"):
            self.assertIn(line, out)
        # The blank before a note's text is seen.
        self.assertIn('+ Note                      " rings late"', out)
        self.assertEqual([], [line for line in out.splitlines() if len(line) > 80 or line.endswith(" ")])
        self.assertEqual(before, (book.read_bytes(), self.stored_files()))

    def test_a_dry_run_is_a_document_too_and_counts_as_the_fixes_do(self):
        book = self.book(TWIN, TWIN, SAME_A, SAME_B, SPACE, TITLE)
        choices = ("exact-duplicates=delete-duplicates", "duplicate-names=merge", "first-name-spacing=remove-space",
                   "unusual-title=add-to-list")
        before = book.read_bytes()
        dry = self.document(book, *choices, "--dry-run")
        self.assertEqual(before, book.read_bytes())
        effects = [fix.pop("effects") for fix in dry["fixes"]]
        self.assertEqual([1, 1, 1, 1], [len(each) for each in effects])
        self.assertEqual([{"change": "removed", "property": "First Name", "label": "", "text": "Mary Jane"},
                          {"change": "added", "property": "First Name", "label": "", "text": "MaryJane"}],
                         effects[2][0]["lines"])
        self.assertEqual(["ann", "ann2"], effects[1][0]["trashed"])
        self.assertTrue(effects[1][0]["isMerged"])
        self.assertEqual("Dipl.-Ing.", effects[3][0]["allowed"])
        self.assertEqual(dry["fixes"], self.document(book, *choices)["fixes"])

    def test_what_cannot_be_done_is_refused_in_one_line_and_changes_nothing(self):
        book = self.book(TWIN, TWIN)
        (self.folder / "notes.txt").write_text("no book")
        self.book("N,O\n", name="sheet.csv")
        for words, told in (
                ((book,), "--apply"),
                ((book, "--apply", "blank-name"), "ISSUE=HANDLE"),
                ((book, "--apply", "nonsense=ignore"), "nonsense"),
                ((book, "--apply", "blank-name=nonsense"), "nonsense"),
                ((book, "--apply", "blank-name,empty-note=ignore"), "ISSUE=HANDLE"),
                ((book, "--apply", "=ignore"), "no issue"),
                ((book, "--apply", "exact-duplicates=merge"), "it offers: delete-duplicates, ignore"),
                ((book, "--apply", "duplicate-names=remove-space"), "it offers: edit, merge, ignore"),
                ((book, "--apply", "shared-phone=delete-contact"), "it offers: edit, merge, ignore"),
                ((book, "--apply", "incomplete-name=delete-contact"), "it offers: edit, use-default-string, ignore"),
                ((book, "--apply", "blank-name=use-default-string"), "a blank name has nothing that this fix could fill"),
                ((book, "--apply", "blank-name=ignore", "--apply", "blank-name=edit"), "twice"),
                (("nowhere", "--apply", "blank-name=ignore"), "nowhere"),
                (("-", "--apply", "blank-name=ignore"), "standard input"),
                (("notes.txt", "--apply", "blank-name=ignore"), "extension"),
                (("sheet.csv", "--apply", "blank-name=ignore"), "import"),
                (("Trash", "--apply", "blank-name=ignore"), "read, not written")):
            with self.subTest(words=words):
                result = self.run_host("fix", *words, code=2)
                self.assertIn(told, result.err)
                self.assertEqual(("", 1), (result.out, result.err.count("\n")), result.err)
        self.assertEqual((TWIN + TWIN).encode(), book.read_bytes())

    def test_a_book_that_cannot_be_written_leaves_book_trash_and_settings_whole(self):
        padding = "".join(host.card(f"N:Other;Nr{number};;;", "NOTE:" + "long " * 200) for number in range(100))
        book = self.book(TWIN, TWIN, TITLE, padding)
        self.fix(self.book(SAME_A, SAME_A, name="other.vcf"), "exact-duplicates=delete-duplicates")
        before = (book.read_bytes(), self.trash(), self.run_host("settings", "show", "prefixes").out)
        done = subprocess.run(
            [host.PROGRAM, "fix", book, "--apply", "exact-duplicates=delete-duplicates", "--apply",
             "unusual-title=add-to-list"], capture_output=True, env=self.environment(), timeout=host.TIMEOUT,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (50000, 50000)))
        self.assertEqual((2, b""), (done.returncode, done.stdout), done.stderr)
        self.assertIn(b"nothing is fixed: ", done.stderr)
        self.assertEqual(1, done.stderr.count(b"\n"))
        self.assertEqual(before, (book.read_bytes(), self.trash(), self.run_host("settings", "show", "prefixes").out))
        self.fix(book, "exact-duplicates=delete-duplicates")
        self.assertEqual(["Ann Barrow", "Oliver Finch"], self.trash())

    def test_a_damaged_trash_is_told_before_anything_is_done(self):
        book = self.book(TWIN, TWIN)
        self.fix(book, "exact-duplicates=delete-duplicates")
        next(self.home.rglob("trashFile.data")).write_bytes(b"bplist00 damaged")
        book.write_bytes((TWIN + TWIN).encode())
        self.assertIn("damaged", self.fix(book, "exact-duplicates=delete-duplicates", code=2).err)
        self.assertEqual((TWIN + TWIN).encode(), book.read_bytes())

    def test_a_book_without_findings_is_not_written(self):
        book = self.book(SAME_A)
        stamp = book.stat()
        self.assertIn("nothing to fix", self.fix(book, "blank-name=delete-contact").out)
        self.assertEqual((stamp.st_mtime_ns, stamp.st_ino), (book.stat().st_mtime_ns, book.stat().st_ino))
        self.assertFalse(list(self.home.rglob("trashFile.data")))

    def test_every_fix_of_the_example_can_be_tried(self):
        book = self.folder / "example.vcf"
        shutil.copy(EXAMPLE, book)
        rows = self.run_host("issues", "--json").json()["issues"]
        for row in rows:
            for handle in row["handles"]:
                with self.subTest(issue=row["shortName"], handle=handle["shortName"]):
                    document = self.document(book, f"{row['shortName']}={handle['shortName']}", "--dry-run")
                    self.assertLess(0, document["fixes"][0]["findings"])
        self.assertEqual(EXAMPLE.read_bytes(), book.read_bytes())


if __name__ == "__main__":
    host.main()
